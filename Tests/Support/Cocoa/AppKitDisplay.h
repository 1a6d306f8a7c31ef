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
  /// The first call starts the server, and sets the environment variables that AppKit reads.
  static AppKitDisplay& shared();

 private:
  // The first member, so its destructor runs last. The destructor kills all child processes.
  AppKitEnvironment environment_;

 public:
  XServer server;
  /// Acts as the user and as other programs.
  XClient client;
  Process managerProcess;

  /// Returns the X window of an NSWindow.
  [[nodiscard]] static xcb_window_t idOf(NSWindow* window);
  /// Returns true if the window is key and has the focus of the X server. Otherwise asks the window
  /// manager to activate the window, at most twice per second, and returns false. Call this until
  /// it returns true: AppKit's request for the focus can fail. The request contains the time of
  /// AppKit's last event. The X server ignores the request if the focus has changed after that
  /// time.
  bool giveFocus(NSWindow* window);
  /// Returns true if no window of AppKit is key and `window`, which belongs to another program, has
  /// the focus of the X server. Otherwise gives the focus to `window`, at most twice per second,
  /// and returns false. Call this until it returns true: after a window has closed, the window
  /// manager may take the focus from `window` again.
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
