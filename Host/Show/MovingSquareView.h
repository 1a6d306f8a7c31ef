#pragma once

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSTimer.h"

namespace vel::host {

/// A view of a square that moves from side to side on a dark background. `launchscreen show` puts
/// this view into the window that it opens. The square keeps moving while a launch screen covers
/// the window. Use this class only on the main thread.
class MovingSquareView final : public Class<MovingSquareView, "MovingSquareView", NSView> {
 public:
  /// Creates a view that fills the window, and starts the animation.
  static Strong<MovingSquareView> startIn(const Strong<NSWindow>& window);
  /// Stops the animation and removes the view from the window. A second call does nothing.
  void stop();

 protected:
  void addOwnContents(Scene& scene, CGRect rectangle) const override;

 private:
  void drawNextFrame();

  Strong<NSTimer> timer_;
};

}  // namespace vel::host
