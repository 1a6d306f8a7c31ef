#include "Platform/Foundation/NSRunLoop.h"

#include <algorithm>
#include <utility>

#include "Platform/Foundation/NSThread.h"
#include "Platform/Foundation/ReleasePool.h"

namespace vel {

namespace {

bool firesIn(std::uint8_t modes, NSRunLoopMode mode) {
  return (modes & static_cast<std::uint8_t>(mode)) != 0;
}

/// Counts a pass while it is under way, and drains at its end what was handed over in it.
class Pass {
 public:
  explicit Pass(std::size_t& passes) : passes_(passes), pool_(ReleasePool::current()) {
    // What was handed over before any pass began goes with the first one.
    mark_ = passes_++ == 0 ? 0 : pool_.size();
  }
  Pass(const Pass&) = delete;
  Pass& operator=(const Pass&) = delete;
  ~Pass() {
    pool_.drainTo(mark_);
    --passes_;
  }

 private:
  std::size_t& passes_;
  ReleasePool& pool_;
  std::size_t mark_;
};

}  // namespace

NSRunLoop::NSRunLoop() : clock_(makeRealClock()) {}

NSRunLoop& NSRunLoop::mainRunLoop() {
  // Never destroyed: other threads may wake it while the process ends.
  static auto& loop = *new NSRunLoop();
  return loop;
}

NSRunLoop* NSRunLoop::currentRunLoop() {
  return NSThread::isMainThread() ? &mainRunLoop() : nullptr;
}

void NSRunLoop::setClock(std::unique_ptr<Clock> clock) {
  invalidateTimers();
  clock_ = std::move(clock);
}

void NSRunLoop::addTimerForMode(const Strong<NSTimer>& timer, NSRunLoopMode mode) {
  if (timer == nullptr || !timer->isValid()) {
    return;
  }
  if (timer->modes_ == 0) {
    timer->order_ = scheduled_++;
    timers_.insert(timer);
  }
  timer->modes_ |= static_cast<std::uint8_t>(mode);
  wake();
}

void NSRunLoop::wake() {
  // The main thread does not wait while it is here. A pass under way looks at what there is to do
  // when it ends; between passes only somebody who waits on the descriptor has to hear of it.
  if (!NSThread::isMainThread() || (passes_ == 0 && clock_->isPolled())) {
    clock_->wake();
  }
}

void NSRunLoop::deadlineChanged() {
  // A pass under way looks at the deadlines when it ends.
  if (passes_ == 0 && clock_->isPolled()) {
    clock_->passEnded(nextDeadline());
  }
}

void NSRunLoop::remove(NSTimer& timer) {
  if (timer.modes_ == 0) {
    return;  // never scheduled; it may be another thread's
  }
  const auto found = timers_.find(timer.self());
  if (found != timers_.end() && found->get() == &timer) {
    timers_.erase(found);
  }
}

void NSRunLoop::invalidateTimers() {
  while (!timers_.empty()) {
    const Strong<NSTimer> timer = *timers_.begin();
    timer->invalidate();
  }
}

NSRunLoop::Timers::const_iterator NSRunLoop::nextTimer(NSRunLoopMode mode) const {
  // A timer whose target is still running does not fire again inside itself.
  return std::ranges::find_if(timers_, [mode](const Strong<NSTimer>& timer) {
    return firesIn(timer->modes_, mode) && !timer->firing_;
  });
}

bool NSRunLoop::fireTimers(NSRunLoopMode mode) {
  auto next = nextTimer(mode);
  if (next == timers_.end()) {
    return false;  // an idle pass does not even read the clock
  }
  bool fired = false;
  const Nanoseconds began = now();
  Nanoseconds current = began;
  for (; next != timers_.end() && (*next)->fireDate_ <= began; next = nextTimer(mode)) {
    if (std::exchange(fired, true)) {
      current = now();  // the one before may have taken its time
    }
    // Kept alive: its call may invalidate it.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const Strong<NSTimer> timer = *next;
    if (timer->repeats_) {
      advance(next, current);
    }
    timer->fire();
  }
  return fired;
}

// Moves a repeating timer to its next fire date and its new place, before its target is called.
void NSRunLoop::advance(Timers::const_iterator position, Nanoseconds current) {
  auto node = timers_.extract(position);
  node.value()->advance(current);
  timers_.insert(std::move(node));
}

bool NSRunLoop::runPass(NSRunLoopMode mode) {
  const Pass pass(passes_);
  clock_->passBegan();
  bool did = fireTimers(mode);
  if (windowSystem_ != nullptr) {
    did |= windowSystem_->deliver();
  }
  if (mainQueue_ != nullptr) {
    did |= mainQueue_->deliver();
  }
  if (clock_->isPolled()) {
    clock_->passEnded(nextDeadline(mode));
  }
  return did;
}

Nanoseconds NSRunLoop::nextDeadline(NSRunLoopMode mode) const {
  Nanoseconds deadline = kNever;
  if (const auto next = nextTimer(mode); next != timers_.end()) {
    deadline = (*next)->fireDate_;
  }
  for (const RunLoopSource* source : {windowSystem_, mainQueue_}) {
    if (source != nullptr) {
      deadline = std::min(deadline, source->nextDeadline());
    }
  }
  return deadline;
}

void NSRunLoop::wait(NSRunLoopMode mode, Nanoseconds limit) {
  const Nanoseconds deadline = std::min(limit, nextDeadline(mode));
  if (deadline == kNever && !clock_->canWaitForEver()) {
    throw NothingToWaitFor("a wait in virtual time with nothing scheduled; " + pending(mode));
  }
  clock_->waitUntil(deadline);
}

void NSRunLoop::runModeBeforeDate(NSRunLoopMode mode, Nanoseconds limit) {
  if (!runPass(mode)) {
    wait(mode, limit);
  }
}

void NSRunLoop::runUntilDate(Nanoseconds limit) {
  // What comes due after the end does not count: a timer that is always late would never let go.
  const Nanoseconds end = std::max(limit, now());
  while (now() < end || nextDeadline(mode_) <= end) {
    runModeBeforeDate(mode_, end);
  }
}

void NSRunLoop::runUntil(const std::function<bool()>& done) {
  while (!done()) {
    runModeBeforeDate(mode_, kNever);
  }
}

std::string NSRunLoop::pending(NSRunLoopMode mode) const {
  std::string text = "timers: " + std::to_string(timers_.size());
  for (const Strong<NSTimer>& timer : timers_) {
    text += "\n  at " + std::to_string(timer->fireDate_) + " ns, target " +
            std::string(timer->target() ? timer->target()->className() : "none") +
            (timer->firing_ ? ", firing now" : "") +
            (firesIn(timer->modes_, mode) ? "" : ", not in this mode");
  }
  return text;
}

}  // namespace vel
