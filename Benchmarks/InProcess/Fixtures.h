// Windows, requests and contents that several benchmarks use.
#pragma once

#include <string_view>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSWindow.h"

namespace vel::bench {

/// Opens a window with this class name.
Strong<NSWindow> openWindow(std::string_view className);
/// Creates a request for a launch screen of `duration` seconds.
Strong<ContentRequest> makeRequest(std::string_view event, double duration);
/// Loads the content of `manager` for a launch screen of `duration` seconds.
Strong<ContentView> loadContent(const Strong<LaunchScreenManager>& manager, double duration);

}  // namespace vel::bench
