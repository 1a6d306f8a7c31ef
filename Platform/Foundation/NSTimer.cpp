#include "Platform/Foundation/NSTimer.h"

#include <algorithm>
#include <utility>

#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/Foundation/TimerObserver.h"

namespace vel {

namespace {

constexpr Nanoseconds kShortestInterval = 100'000;

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
  const Nanoseconds span =
      interval > 0 ? std::max(nanosecondsFromSeconds(interval), Nanoseconds{1}) : kShortestInterval;
  const Nanoseconds first = span < kNever - now ? now + span : kNever;
  auto timer = make<NSTimer>(first, span, repeats, std::move(target), callout);
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
  const Strong<NSTimer> timer = self();  // keeps the timer alive: the loop may own it alone
  NSRunLoop::mainRunLoop().remove(*this);
  const Strong<NSObject> target = std::move(target_);
}

void NSTimer::advance(Nanoseconds now) {
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
