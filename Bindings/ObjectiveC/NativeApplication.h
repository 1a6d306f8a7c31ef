// The library in a process with AppKit. Only the main thread may call these functions.
#pragma once

#import <AppKit/AppKit.h>

#include <string>
#include <string_view>

#include "Platform/AppKit/NSWindow.h"

namespace vel_objc {

/// Starts the library on AppKit, in the native run loop of the main thread. Uses the application of
/// the library if it already exists. On failure, sets `error` to the reason and returns false.
bool startApplication(std::string& error);

/// The library's window for a native window. The first call for a window adopts it. If the native
/// window has a content view controller, the library's window has one with the same class name. On
/// failure, sets `error` to the reason and returns null.
vel::Strong<vel::NSWindow> windowFor(NSWindow* native, std::string& error);

/// Calls `logEvent:` of the class MetricsCenter. Without such a class, writes the event to the log.
void recordEvent(std::string_view event);

}  // namespace vel_objc
