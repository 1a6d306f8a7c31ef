#pragma once

#include <functional>
#include <string>
#include <vector>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {

/// A host application on an X server with a window manager. The application adopts the window of a
/// game and shows launch screens over this window.
class X11HostTest : public X11TestWithManager {
 protected:
  ~X11HostTest() override;
  void SetUp() override;

  /// Requests and presents a launch screen. `duration` is in seconds. `hostMode` is 0 (embedded),
  /// 1 (sheet) or 2 (modal window).
  void present(double duration, std::int32_t hostMode);
  /// Runs the run loop until the condition is true. Returns false after `kTimeout`.
  static bool runUntil(const std::function<bool()>& condition);

  xcb_window_t otherWindow = 0;              // an X window that the application has not adopted
  xcb_window_t game = 0;                     // the X window of the game
  Strong<NSWindow> player;                   // the NSWindow that has adopted `game`
  Strong<LaunchScreenManager> launchScreen;  // the manager from the last call of `present`
  bool hasIndicator = false;                 // makes `present` create an indicator
  std::vector<std::string> events;           // the recorded analytics events
};

}  // namespace vel::test
