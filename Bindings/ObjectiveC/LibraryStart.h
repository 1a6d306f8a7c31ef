#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace vel_objc {

/// Starts the library on the display "cocoa", in real time. `recordEvent` receives the name of each
/// event. On failure, for example without free descriptors, stops the library again, sets `error`
/// to the reason and returns false.
///
/// This function is in a C++ source, because Clang with GCC's Objective-C runtime cannot catch
/// exceptions in Objective-C++.
bool startLibrary(std::function<void(std::string_view)> recordEvent, std::string& error);

}  // namespace vel_objc
