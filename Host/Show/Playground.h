#pragma once

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSTimer.h"

namespace vel::host {

/// What the player window plays while nothing covers it: a square that goes to and fro on a dark
/// ground. It plays on under a launch screen, as a game does. Main thread.
class Playground final : public Class<Playground, "Playground", NSView> {
 public:
  /// Fills the window's content and starts to play.
  static Strong<Playground> startIn(const Strong<NSWindow>& window);
  /// Stops and leaves the window. A second time does nothing.
  void stop();

 protected:
  void addOwnContents(Scene& scene, CGRect rectangle) const override;

 private:
  void nextPicture();

  Strong<NSTimer> timer_;
};

}  // namespace vel::host
