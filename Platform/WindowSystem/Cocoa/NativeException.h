#pragma once

#include <functional>

namespace vel::cocoa {

/// Calls `operation`. Returns false if it throws an exception of C++ or of Objective-C. This
/// function is in a C++ source, because Clang with GCC's Objective-C runtime cannot catch either
/// kind of exception with `catch` in Objective-C++.
bool tryToRun(const std::function<void()>& operation);

}  // namespace vel::cocoa
