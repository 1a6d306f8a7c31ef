#pragma once

#include <cstdint>

#include "Platform/AppKit/CALayer.h"
#include "Platform/AppKit/NSLayoutAnchor.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NSArray.h"
#include "Platform/Foundation/NSObject.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

class NSViewController;
class NSWindow;

/// One bit for each margin and each dimension of a view. A margin or dimension whose bit is set
/// changes when the view's superview is resized.
using NSAutoresizingMaskOptions = std::uint64_t;

inline constexpr NSAutoresizingMaskOptions NSViewNotSizable = 0;
inline constexpr NSAutoresizingMaskOptions NSViewMinXMargin = 1;
inline constexpr NSAutoresizingMaskOptions NSViewWidthSizable = 2;
inline constexpr NSAutoresizingMaskOptions NSViewMaxXMargin = 4;
inline constexpr NSAutoresizingMaskOptions NSViewMinYMargin = 8;
inline constexpr NSAutoresizingMaskOptions NSViewHeightSizable = 16;
inline constexpr NSAutoresizingMaskOptions NSViewMaxYMargin = 32;

enum class NSWindowOrderingMode : std::int8_t { Below = -1, Out = 0, Above = 1 };
inline constexpr NSWindowOrderingMode NSWindowAbove = NSWindowOrderingMode::Above;
inline constexpr NSWindowOrderingMode NSWindowBelow = NSWindowOrderingMode::Below;

/// A rectangle in a window, with subviews. A view owns its subviews. A window owns its outermost
/// view, called the content view. Only the main thread may use a view.
class VEL_EXPORT NSView : public Class<NSView, "NSView"> {
 public:
  explicit NSView(CGRect frame = CGRectZero) : frame_(frame) {}

  static Strong<NSView> initWithFrame(CGRect frame) { return make<NSView>(frame); }

  /// The view's rectangle in the superview's coordinates, in points.
  [[nodiscard]] CGRect frame() const { return frame_; }
  /// Moves and resizes the view. If the size changes, autoresizing masks and constraints place the
  /// subviews.
  void setFrame(CGRect frame);
  /// The view's rectangle in the view's own coordinates. The origin of this rectangle is zero.
  [[nodiscard]] CGRect bounds() const { return {{}, frame_.size}; }

  [[nodiscard]] Strong<NSView> superview() const { return superview_.lock(); }
  /// The subviews, from back to front.
  [[nodiscard]] const NSArray<NSView>& subviews() const { return subviews_; }
  /// The window that contains the view, or null.
  [[nodiscard]] Strong<NSWindow> window() const;

  /// Removes `view` from its current superview and adds `view` in front of the other subviews of
  /// this view. If this view is in an open window, calls `viewWillAppear` and `viewDidAppear` of
  /// the controllers of `view` and all its descendants. Skips controllers that are already shown.
  /// Ignores null, this view itself and a view that contains this view.
  void addSubview(const Strong<NSView>& view);
  /// Like `addSubview`, but adds `view` directly behind `other` if the mode is NSWindowBelow, and
  /// directly in front of `other` otherwise. If `other` is not a subview of this view, adds `view`
  /// behind or in front of all subviews.
  void addSubviewPositionedRelativeTo(const Strong<NSView>& view, NSWindowOrderingMode orderingMode,
                                      const Strong<NSView>& other);
  /// Removes the view from its superview, or from its window if it is a content view. If the view
  /// is in an open window, calls `viewWillDisappear` and `viewDidDisappear` of the controllers of
  /// the view and all its descendants. Does nothing if the view has no superview and no window.
  void removeFromSuperview();

  [[nodiscard]] bool wantsLayer() const { return layer_ != nullptr; }
  /// Gives the view a layer if `needsLayer` is true. Otherwise removes the layer.
  void setWantsLayer(bool needsLayer);
  /// The layer, or null.
  [[nodiscard]] Strong<CALayer> layer() const { return layer_; }

  [[nodiscard]] NSAutoresizingMaskOptions autoresizingMask() const { return autoresizingMask_; }
  void setAutoresizingMask(NSAutoresizingMaskOptions mask) { autoresizingMask_ = mask; }
  /// True (the default) if the autoresizing mask places the view. False if only constraints place
  /// the view.
  [[nodiscard]] bool translatesAutoresizingMaskIntoConstraints() const {
    return translatesAutoresizingMask_;
  }
  void setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
    translatesAutoresizingMask_ = translates;
  }

  [[nodiscard]] NSLayoutXAxisAnchor centerXAnchor();
  [[nodiscard]] NSLayoutYAxisAnchor centerYAnchor();
  [[nodiscard]] NSLayoutDimension widthAnchor();
  [[nodiscard]] NSLayoutDimension heightAnchor();
  /// The active constraints that place subviews of this view.
  [[nodiscard]] const NSArray<NSLayoutConstraint>& constraints() const { return constraints_; }

  /// The controller of this view, or null.
  [[nodiscard]] Strong<NSViewController> viewController() const { return viewController_.lock(); }

  /// Makes the view's window draw all its views again.
  void setNeedsDisplay() const;
  /// Adds the contents of the view and all its descendants to `scene`. `origin` is the position of
  /// the view's superview in the window.
  void addToScene(Scene& scene, CGPoint origin) const;

 protected:
  /// A subclass overrides this function to add its own contents to `scene`, in front of the layer's
  /// background and behind the subviews. `rectangle` is the view's frame in the window's
  /// coordinates.
  virtual void addOwnContents(Scene& /*scene*/, CGRect /*rectangle*/) const {}

 private:
  friend class NSLayoutConstraint;
  friend class NSViewController;
  friend class NSWindow;

  [[nodiscard]] bool isDescendantOf(const NSView* other) const;
  // Removes the view from its superview or window. Calls no life-cycle method.
  void detach();
  // Applies the autoresizing masks of the subviews. `oldSize` is the previous size of this view.
  void resizeSubviews(CGSize oldSize);
  // Applies the constraints of the subviews.
  void layOutSubviews();
  // Returns the width and the height that the constraints of one view define.
  static CGSize constrainedSize(const NSArray<NSLayoutConstraint>& constraints);

  CGRect frame_;
  Weak<NSView> superview_;
  Weak<NSWindow> window_;  // null unless this is a content view
  Weak<NSViewController> viewController_;
  NSArray<NSView> subviews_;
  NSArray<NSLayoutConstraint> constraints_;
  Strong<CALayer> layer_;
  NSAutoresizingMaskOptions autoresizingMask_ = NSViewNotSizable;
  bool translatesAutoresizingMask_ = true;
};

}  // namespace vel
