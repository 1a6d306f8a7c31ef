// Connects the library to AppKit: the application, the windows and the event. Only the main thread
// may call these functions.
#pragma once

#import <AppKit/AppKit.h>

#include <string>
#include <string_view>

#include "Platform/AppKit/NSWindow.h"

namespace vel_objc {

/// Starts the library on AppKit, in the native run loop of the main thread. Returns true at once if
/// the library has already started. On failure, sets `error` to the reason and returns false.
bool startApplication(std::string& error);

/// The library's window for a native window. The first call for a window adopts it. If the native
/// window has a content view controller, gives the library's window a controller with the same
/// class name. On failure, sets `error` to the reason and returns null.
vel::Strong<vel::NSWindow> windowFor(NSWindow* native, std::string& error);

/// Calls `logEvent:` of the class MetricsCenter. Without such a class, writes the event to the log.
void recordEvent(std::string_view event);

}  // namespace vel_objc
