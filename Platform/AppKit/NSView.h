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

/// How a view follows a change of its superview's size: which of its margins and sides give.
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

/// A rectangle in a window, with subviews. Its superview owns it (a window, where it is the content
/// view). Main thread.
class VEL_EXPORT NSView : public Class<NSView, "NSView"> {
 public:
  explicit NSView(CGRect frame = CGRectZero) : frame_(frame) {}

  static Strong<NSView> initWithFrame(CGRect frame) { return make<NSView>(frame); }

  /// In the superview's coordinates, in points.
  [[nodiscard]] CGRect frame() const { return frame_; }
  /// Moves and resizes the view; subviews follow by their autoresizing masks and constraints.
  void setFrame(CGRect frame);
  /// The view's own coordinates: its size at the origin.
  [[nodiscard]] CGRect bounds() const { return {{}, frame_.size}; }

  [[nodiscard]] Strong<NSView> superview() const { return superview_.lock(); }
  /// Back to front.
  [[nodiscard]] const NSArray<NSView>& subviews() const { return subviews_; }
  /// The window that the view is in; none outside of any.
  [[nodiscard]] Strong<NSWindow> window() const;

  /// Adds `view` in front of the other subviews, taking it from its superview first. Where that
  /// puts it in an open window, its controllers appear. None, the view itself and a view that
  /// contains this one are refused silently.
  void addSubview(const Strong<NSView>& view);
  /// The same, directly above or below `other`. Where that is no subview of this view: in front of
  /// all of them, or behind.
  void addSubviewPositionedRelativeTo(const Strong<NSView>& view, NSWindowOrderingMode place,
                                      const Strong<NSView>& other);
  /// Takes the view from its superview, or from the window whose content view it is; its
  /// controllers disappear. Does nothing outside of both.
  void removeFromSuperview();

  [[nodiscard]] bool wantsLayer() const { return layer_ != nullptr; }
  void setWantsLayer(bool wants);
  /// None for a view without one.
  [[nodiscard]] Strong<CALayer> layer() const { return layer_; }

  [[nodiscard]] NSAutoresizingMaskOptions autoresizingMask() const { return autoresizingMask_; }
  void setAutoresizingMask(NSAutoresizingMaskOptions mask) { autoresizingMask_ = mask; }
  /// Whether the autoresizing mask places the view (yes at first), or constraints alone do.
  [[nodiscard]] bool translatesAutoresizingMaskIntoConstraints() const { return translates_; }
  void setTranslatesAutoresizingMaskIntoConstraints(bool translates) { translates_ = translates; }

  [[nodiscard]] NSLayoutXAxisAnchor centerXAnchor();
  [[nodiscard]] NSLayoutYAxisAnchor centerYAnchor();
  [[nodiscard]] NSLayoutDimension widthAnchor();
  [[nodiscard]] NSLayoutDimension heightAnchor();
  /// The active constraints that place subviews of this view.
  [[nodiscard]] const NSArray<NSLayoutConstraint>& constraints() const { return constraints_; }

  /// The controller whose view this is, or none.
  [[nodiscard]] Strong<NSViewController> viewController() const { return viewController_.lock(); }

  /// Tells the window that what the view shows has changed.
  void setNeedsDisplay() const;
  /// Adds what the view and its subviews show; `origin` is where the view's superview lies in the
  /// window.
  void addToScene(Scene& scene, CGPoint origin) const;

 protected:
  /// What the view itself shows besides its layer's background, in a rectangle of the window.
  virtual void addOwnContents(Scene& /*scene*/, CGRect /*rectangle*/) const {}

 private:
  friend class NSLayoutConstraint;
  friend class NSViewController;
  friend class NSWindow;

  [[nodiscard]] bool isWithin(const NSView* other) const;
  void detach();
  void resizeSubviews(CGSize oldSize);
  void layOutSubviews();
  static CGSize constrainedSize(const NSArray<NSLayoutConstraint>& constraints);

  CGRect frame_;
  Weak<NSView> superview_;
  Weak<NSWindow> window_;  // of a content view
  Weak<NSViewController> viewController_;
  NSArray<NSView> subviews_;
  NSArray<NSLayoutConstraint> constraints_;
  Strong<CALayer> layer_;
  NSAutoresizingMaskOptions autoresizingMask_ = NSViewNotSizable;
  bool translates_ = true;
};

}  // namespace vel
