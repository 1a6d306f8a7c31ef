#pragma once

#include <chrono>

#include "Platform/Foundation/Time.h"

namespace vel::x11 {

/// The time that the back end gives a window manager to act on a request that has no reply.
inline constexpr Nanoseconds kWindowManagerDelay = kNanosecondsPerSecond / 5;

/// The longest time that the back end waits for a reply from a window manager. Only a window
/// manager that hangs takes longer.
inline constexpr Nanoseconds kWindowManagerReplyTimeLimit = 2 * kNanosecondsPerSecond;

[[nodiscard]] inline Nanoseconds steadyNow() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace vel::x11
