// Time: monotonic, whole nanoseconds.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace vel {

/// A moment on a clock, or a span between two.
using Nanoseconds = std::int64_t;

inline constexpr Nanoseconds kNanosecondsPerSecond = 1'000'000'000;
/// The moment that does not come.
inline constexpr Nanoseconds kNever = std::numeric_limits<Nanoseconds>::max();

/// Seconds as nanoseconds, rounded to nearest. What is not a number gives 0; what is out of range,
/// the nearest value in it.
[[nodiscard]] inline Nanoseconds nanosecondsFromSeconds(double seconds) {
  constexpr double kLimit = 9.2e18;
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
