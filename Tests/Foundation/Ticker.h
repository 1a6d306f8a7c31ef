// A target for timers, and functions that schedule timers.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/Foundation/NSTimer.h"

namespace vel::test {

/// Counts the firings of its timer, and runs `work` at each firing. `work` may be null.
class Ticker final : public Class<Ticker, "Ticker"> {
 public:
  explicit Ticker(std::function<void(NSTimer&)> work = nullptr) : work_(std::move(work)) {}

  void tick(NSTimer& timer) {
    ++ticks_;
    if (work_) {
      work_(timer);
    }
  }
  [[nodiscard]] int ticks() const { return ticks_; }

 private:
  std::function<void(NSTimer&)> work_;
  int ticks_ = 0;
};

enum class Repeats : bool { No, Yes };

/// Schedules a timer that calls `ticker` after `seconds`. A repeating timer calls `ticker` every
/// `seconds`. The timer fires in the default mode of the current thread's run loop.
inline Strong<NSTimer> schedule(double seconds, const Strong<Ticker>& ticker,
                                Repeats repeats = Repeats::No) {
  return NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Ticker::tick>(
      seconds, ticker, repeats == Repeats::Yes);
}

/// Schedules a timer that runs `work`.
inline Strong<NSTimer> schedule(double seconds, std::function<void()> work,
                                Repeats repeats = Repeats::No) {
  return schedule(seconds, make<Ticker>([work = std::move(work)](NSTimer&) { work(); }), repeats);
}

/// Advances the virtual clock without a run loop pass, to simulate slow work.
inline void letTimePass(double seconds) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  loop.clock().waitUntil(loop.now() + nanosecondsFromSeconds(seconds));
}

}  // namespace vel::test
