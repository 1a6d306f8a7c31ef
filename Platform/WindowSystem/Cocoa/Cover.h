#pragma once

#import <AppKit/AppKit.h>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/WindowSystem.h"

@class VelCoverView;

namespace vel::cocoa {

/// What the platform layer draws over the content of one native window: a view above all other
/// views of the content view. The view exists only while it draws a scene or shields the window. It
/// takes all pointer events. The rest of the owner's view tree is not changed. The window must
/// outlive the cover.
class Cover final : public NonCopyable {
 public:
  explicit Cover(NSWindow* window) : window_(window) {}
  ~Cover() { remove(); }

  /// Replaces the scene, and displays it before it returns. `size` is the size of the window's
  /// content, for which the scene was made.
  void show(const Scene& scene, CGSize size);
  [[nodiscard]] bool hasScene() const { return !scene_.empty(); }
  /// A shield takes the pointer events of the window even while the scene is empty.
  void setShielded(bool isShielded);
  void setMovableByBackground(bool isMovable) { isMovableByBackground_ = isMovable; }
  [[nodiscard]] bool isMovableByBackground() const { return isMovableByBackground_; }
  /// Removes the view.
  void remove();
  /// Puts the view in front again after the owner has replaced the content view, resized it or
  /// added views. If the content view does not keep the view, the next call tries again.
  void repair();

  /// The time of the next frame of a spinner; `kNever` if no spinner turns.
  [[nodiscard]] Nanoseconds deadline() const;
  /// Draws the next frame of the spinners if its time has come.
  void advance(Nanoseconds now);

  /// The view calls this function to draw the scene.
  void draw(NSRect bounds) const;

 private:
  [[nodiscard]] bool isAnimated() const;
  // True if the scene hides the whole content.
  [[nodiscard]] bool isOpaque() const;
  [[nodiscard]] bool isNeeded() const { return !scene_.empty() || isShielded_; }
  // Adds, redraws or removes the view, as the scene and the shield require.
  void update();
  void attach(NSView* content);
  void fitToSuperview();

  NSWindow* window_;
  VelCoverView* view_ = nil;
  Scene scene_;
  CGSize contentSize_;  // the size of the content for which `scene_` was made
  bool isShielded_ = false;
  bool isMovableByBackground_ = false;
  unsigned position_ = 0;  // the darkest spoke of the spinners
  Nanoseconds nextFrameTime_ = 0;
};

}  // namespace vel::cocoa
