#pragma once

#include <cstdint>
#include <ctime>

namespace vel::bench {

/// The monotonic clock, in nanoseconds.
inline std::int64_t readClock() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

inline void sleepUntil(std::int64_t time) {
  const timespec end{time / 1'000'000'000, time % 1'000'000'000};
  clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr);
}

}  // namespace vel::bench
