#pragma once

#import <AppKit/AppKit.h>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/Cocoa/AppKitEnvironment.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {

/// An X server with a window manager, to which the AppKit of this process connects. `client` acts
/// as the user and as other programs. AppKit connects to only one server while a process runs, so
/// all tests of a process share this object.
class AppKitDisplay : NonCopyable {
 public:
  /// The first call starts the server, and sets the environment of AppKit.
  static AppKitDisplay& shared();

 private:
  // The first member, so its destructor runs last. The destructor kills all child processes.
  AppKitEnvironment environment_;

 public:
  XServer server;
  XClient client;
  Process manager;

  /// Returns the X window of a native window.
  [[nodiscard]] static xcb_window_t idOf(NSWindow* window);
  /// Returns true if the window is key and has the focus of the X server. Otherwise the user
  /// activates the window, at most twice per second. Call this until it returns true: the X server
  /// ignores AppKit's request for the focus if the window manager has moved the focus since AppKit
  /// received its last event.
  bool giveFocus(NSWindow* window);
  /// Gives the focus to a window of another program, at most twice per second. Returns true if no
  /// window of AppKit is key and the other window has the focus of the X server. Call this until it
  /// returns true: if a window was closed before, the window manager may move the focus after a
  /// call.
  bool giveFocusToOtherProgram(xcb_window_t window);
  /// Waits until the window manager has executed all earlier requests of `client`.
  void waitForManager();
  /// Opens the window of a game in another program, and waits until it is on the screen.
  xcb_window_t openGame(PixelRect frame);

 private:
  AppKitDisplay();

  Nanoseconds nextActivationTime_ = 0;
};

}  // namespace vel::test
