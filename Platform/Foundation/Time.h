// Monotonic time in whole nanoseconds.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace vel {

/// A time on a clock, or a duration.
using Nanoseconds = std::int64_t;

inline constexpr Nanoseconds kNanosecondsPerSecond = 1'000'000'000;
/// A time that is never reached.
inline constexpr Nanoseconds kNever = std::numeric_limits<Nanoseconds>::max();

/// Converts seconds to nanoseconds and rounds to the nearest integer. Returns 0 for NaN, and
/// `kNever` or `-kNever` for a value that is out of range.
[[nodiscard]] inline Nanoseconds nanosecondsFromSeconds(double seconds) {
  constexpr double kLimit = 9.2e18;  // slightly less than `kNever`
  const double nanoseconds = seconds * static_cast<double>(kNanosecondsPerSecond);
  if (std::isnan(nanoseconds)) {
    return 0;
  }
  if (std::abs(nanoseconds) >= kLimit) {
    return nanoseconds > 0 ? kNever : -kNever;
  }
  return std::llround(nanoseconds);
}

[[nodiscard]] inline double secondsFromNanoseconds(Nanoseconds nanoseconds) {
  return static_cast<double>(nanoseconds) / static_cast<double>(kNanosecondsPerSecond);
}

}  // namespace vel
