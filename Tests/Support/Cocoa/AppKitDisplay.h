#pragma once

#import <AppKit/AppKit.h>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/Cocoa/AppKitEnvironment.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {

/// An X server with a window manager. The AppKit of this process connects to the server. AppKit
/// connects to only one server while a process runs, so all tests of a process share this object.
class AppKitDisplay : NonCopyable {
 public:
  /// The first call starts the server and the window manager, and sets DISPLAY for AppKit.
  static AppKitDisplay& shared();

 private:
  // Must be the first member: its destructor kills all child processes, so it must run last.
  AppKitEnvironment environment_;

 public:
  XServer server;
  /// Acts as the user and as other programs.
  XClient client;
  Process managerProcess;

  /// Returns the X window of an NSWindow.
  [[nodiscard]] static xcb_window_t idOf(NSWindow* window);
  /// Returns true if the window is key and has the focus of the X server. Otherwise returns false
  /// and asks the window manager to activate the window, at most twice per second. Call this until
  /// it returns true. One activation may not be enough: AppKit then requests the focus with the
  /// time of its last event, and the X server ignores the request if the focus has changed since.
  bool giveFocus(NSWindow* window);
  /// Returns true if `window` has the focus of the X server and no window of AppKit is key.
  /// Otherwise returns false and gives the focus to `window`, at most twice per second. `window`
  /// belongs to another program. Call this until it returns true: when a window closes, the window
  /// manager may move the focus away from `window`.
  bool giveFocusToOtherProgram(xcb_window_t window);
  /// Waits until the window manager has executed all earlier requests of `client`.
  void waitForManager();
  /// Opens a window as a game in another process would, and waits until the window is on the
  /// screen.
  xcb_window_t openGame(PixelRect frame);

 private:
  AppKitDisplay();

  Nanoseconds nextActivationTime_ = 0;
};

}  // namespace vel::test
