#pragma once

#include <functional>
#include <string>
#include <vector>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {

/// A host application on an X11 display, in real time and under a window manager. It adopts the
/// window of a game and shows launch screens over this window.
class X11HostTest : public X11TestWithManager {
 protected:
  ~X11HostTest() override;
  void SetUp() override;

  /// Requests a launch screen with a duration in seconds and presents it in a host mode.
  void present(double duration, std::int32_t hostMode);
  /// Runs the run loop until the condition is true. Returns false after `kTimeout`.
  static bool runUntil(const std::function<bool()>& condition);

  xcb_window_t otherWindow = 0;  // a window that `SetUp` does not adopt
  xcb_window_t game = 0;         // the X window of the game
  Strong<NSWindow> player;       // the NSWindow of the adopted `game`
  Strong<LaunchScreenManager> launchScreen;
  bool hasIndicator = false;        // true if the launch screens have an indicator
  std::vector<std::string> events;  // the recorded analytics events
};

}  // namespace vel::test
