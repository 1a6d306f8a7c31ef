#pragma once

#include <chrono>

#include "Platform/Foundation/Time.h"

namespace vel::x11 {

/// How long a window manager has to act on a request before the back end reads the result.
inline constexpr Nanoseconds kWindowManagerDelay = kNanosecondsPerSecond / 5;

/// How long the back end waits for a reply that a window manager always sends. Only a window
/// manager that hangs takes longer.
inline constexpr Nanoseconds kWindowManagerTimeLimit = 2 * kNanosecondsPerSecond;

[[nodiscard]] inline Nanoseconds steadyNow() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace vel::x11
