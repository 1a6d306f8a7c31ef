#include "Platform/Foundation/NSTimer.h"

#include <algorithm>
#include <utility>

#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/Foundation/TimerObserver.h"

namespace vel {

namespace {

// Replaces an interval of 0 or less.
constexpr Nanoseconds kDefaultInterval = 100'000;

}  // namespace

NSTimer::NSTimer(Nanoseconds firstFireDate, Nanoseconds interval, bool repeats,
                 Strong<NSObject> target, Callout callout)
    : firstFireDate_(firstFireDate),
      fireDate_(firstFireDate),
      interval_(interval),
      repeats_(repeats),
      target_(std::move(target)),
      callout_(callout) {}

Strong<NSTimer> NSTimer::schedule(double interval, Strong<NSObject> target, bool repeats,
                                  Callout callout) {
  const Nanoseconds now = NSRunLoop::mainRunLoop().now();
  const Nanoseconds nanoseconds =
      interval > 0 ? std::max(nanosecondsFromSeconds(interval), Nanoseconds{1}) : kDefaultInterval;
  const Nanoseconds firstFireDate = nanoseconds < kNever - now ? now + nanoseconds : kNever;
  auto timer = make<NSTimer>(firstFireDate, nanoseconds, repeats, std::move(target), callout);
  if (NSRunLoop* loop = NSRunLoop::currentRunLoop()) {
    loop->addTimerForMode(timer, NSDefaultRunLoopMode);
  }
  return timer;
}

void NSTimer::invalidate() {
  if (!isValid_) {
    return;
  }
  isValid_ = false;
  // Keeps the timer alive: the run loop may hold the only reference to the timer.
  const Strong<NSTimer> timer = self();
  NSRunLoop::mainRunLoop().removeTimer(*this);
  // Declared after `timer`, so that the target is released first. The target's destructor may use
  // the timer.
  const Strong<NSObject> target = std::move(target_);
}

void NSTimer::advanceFireDate(Nanoseconds now) {
  fireDate_ = firstFireDate_ + ((now - firstFireDate_) / interval_ + 1) * interval_;
}

void NSTimer::fire() {
  const Strong<NSObject> target = target_;
  if (!repeats_) {
    invalidate();
  }
  struct FiringScope : NonCopyable {
    explicit FiringScope(bool& flag) : isFiring(flag) { isFiring = true; }
    ~FiringScope() { isFiring = false; }
    bool& isFiring;
  } const scope(isFiring_);
  if (target != nullptr) {
    callout_(*target, *this);
  }
  if (detail::timerObserver != nullptr) [[unlikely]] {
    detail::timerObserver->timerFired(*this, target);
  }
}

}  // namespace vel
