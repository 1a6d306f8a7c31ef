#pragma once

#import <AppKit/AppKit.h>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/Cocoa/AppKitEnvironment.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {

/// The X server of this process, with a window manager and another client. AppKit connects to only
/// one server while a process runs, so all tests of a process share this object.
class AppKitDisplay : NonCopyable {
 public:
  /// The first call starts the server, and sets the environment of AppKit.
  static AppKitDisplay& shared();

 private:
  AppKitEnvironment environment_;  // destroyed last, because it kills all child processes

 public:
  XServer server;
  XClient client;
  Process manager;

  /// The X window of a native window.
  [[nodiscard]] static xcb_window_t idOf(NSWindow* window);
  /// Lets the user activate the window. Returns true if the window is key and has the focus of the
  /// X server. Call this until it returns true: the X server ignores a request of AppKit for the
  /// focus if the window manager has moved the focus after AppKit received its last event.
  bool giveFocus(NSWindow* window);
  /// Opens a window of another program.
  xcb_window_t openGame(PixelRect frame);

 private:
  AppKitDisplay();

  Nanoseconds nextActivationTime_ = 0;
};

}  // namespace vel::test
