#pragma once

#include <functional>
#include <string>
#include <vector>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {

/// A host on the display, in real time: the application, the window of a game of another process,
/// and the launch screens it shows over that. A window manager runs.
class X11HostTest : public X11TestWithManager {
 protected:
  ~X11HostTest() override;
  void SetUp() override;

  /// Requests a launch screen of so many seconds and presents it in one of the host's modes.
  void present(double duration, std::int32_t hostMode);
  /// Runs the loop until the condition holds; false where it does not come to hold.
  static bool runUntil(const std::function<bool()>& condition);

  xcb_window_t other = 0;  // of another program
  xcb_window_t game = 0;
  Strong<NSWindow> player;  // the game's
  Strong<LaunchScreenManager> launchScreen;
  bool indicator = false;  // whether launch screens have one
  std::vector<std::string> events;
};

}  // namespace vel::test
