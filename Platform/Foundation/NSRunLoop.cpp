#include "Platform/Foundation/NSRunLoop.h"

#include <algorithm>
#include <utility>

#include "Platform/Foundation/NSThread.h"
#include "Platform/Foundation/RealClock.h"
#include "Platform/Foundation/ReleasePool.h"
#include "Platform/Foundation/WaitSet.h"

namespace vel {

namespace {

bool containsMode(std::uint8_t modes, NSRunLoopMode mode) {
  return (modes & static_cast<std::uint8_t>(mode)) != 0;
}

// The bits of `wakeState_`.
constexpr unsigned kIsIdle = 1;     // the loop or a host may be waiting for events
constexpr unsigned kHasWakeUp = 2;  // a thread has called `wake` since the latest pass began

/// Adds 1 to the number of running passes. The destructor subtracts 1 and releases the objects that
/// the pass has added to the release pool.
class PassScope : NonCopyable {
 public:
  explicit PassScope(std::size_t& runningPasses)
      : runningPasses_(runningPasses), pool_(ReleasePool::currentPool()) {
    // A pass that is not nested in another pass also releases the earlier objects in the pool.
    finalPoolSize_ = runningPasses_++ == 0 ? 0 : pool_.size();
  }
  ~PassScope() {
    pool_.drainTo(finalPoolSize_);
    --runningPasses_;
  }

 private:
  std::size_t& runningPasses_;
  ReleasePool& pool_;
  std::size_t finalPoolSize_;
};

}  // namespace

NSRunLoop::NSRunLoop() { useRealTime(); }

NSRunLoop::~NSRunLoop() = default;

NSRunLoop& NSRunLoop::mainRunLoop() {
  // Never destroyed: other threads may call `wake` while the process exits.
  static auto& loop = *new NSRunLoop();
  return loop;
}

NSRunLoop* NSRunLoop::currentRunLoop() {
  return NSThread::isMainThread() ? &mainRunLoop() : nullptr;
}

void NSRunLoop::useRealTime() {
  std::unique_ptr<WaitSet> waitSet = makeWaitSet();
  auto clock = std::make_unique<RealClock>(*waitSet);
  replaceClock(std::move(clock), std::move(waitSet));
}

void NSRunLoop::setClock(std::unique_ptr<Clock> clock) { replaceClock(std::move(clock), nullptr); }

void NSRunLoop::replaceClock(std::unique_ptr<Clock> clock, std::unique_ptr<WaitSet> waitSet) {
  invalidateTimers();
  clock_ = std::move(clock);
  waitSet_ = std::move(waitSet);
  isDescriptorPolled_ = false;
  wakeState_ = 0;
}

WaitHandle NSRunLoop::waitHandle() {
  if (waitSet_ == nullptr) {
    return {};
  }
  if (!isDescriptorPolled_) {
    // From now on, each pass sets the time at which the descriptor becomes readable. The descriptor
    // must be readable immediately, so that the host runs the first of these passes.
    isDescriptorPolled_ = true;
    waitSet_->wake();
  }
  return waitSet_->handle();
}

void NSRunLoop::watch(WaitHandle handle) {
  if (waitSet_ != nullptr) {
    waitSet_->watch(handle);
  }
}

void NSRunLoop::addTimerForMode(const Strong<NSTimer>& timer, NSRunLoopMode mode) {
  if (timer == nullptr || !timer->isValid()) {
    return;
  }
  if (timer->modes_ == 0) {
    timer->order_ = nextTimerOrder_++;
    timers_.insert(timer);
  }
  timer->modes_ |= static_cast<std::uint8_t>(mode);
  wake();
}

void NSRunLoop::wake() {
  // On the main thread, the loop is not waiting, and only the descriptor may need an update. A
  // running pass updates the descriptor at the end of the pass.
  if (NSThread::isMainThread() && (runningPasses_ > 0 || !isDescriptorPolled_)) {
    return;
  }
  if ((wakeState_.fetch_or(kHasWakeUp) & kIsIdle) != 0) {
    clock_->wake();
  }
}

void NSRunLoop::updateDescriptor() {
  // A running pass updates the descriptor at the end of the pass.
  if (runningPasses_ == 0 && isDescriptorPolled_) {
    setDescriptorDeadline(nextDeadline());
  }
}

void NSRunLoop::beginPass() {
  wakeState_ = 0;  // the earlier wake-ups need no further pass
  if (waitSet_ != nullptr) {
    waitSet_->acknowledgeWakeUps();
  }
}

// Sets `kIsIdle`. Later calls of `NSRunLoop::wake` thus call `Clock::wake`. Returns false if a
// thread has called `NSRunLoop::wake` since the latest pass began.
bool NSRunLoop::tryToBecomeIdle() { return (wakeState_.fetch_or(kIsIdle) & kHasWakeUp) == 0; }

void NSRunLoop::setDescriptorDeadline(Nanoseconds deadline) {
  waitSet_->setDeadline(deadline);
  if (!tryToBecomeIdle()) {
    // The earlier call of `NSRunLoop::wake` may not have made the descriptor readable.
    waitSet_->wake();
  }
}

void NSRunLoop::removeTimer(NSTimer& timer) {
  if (timer.modes_ == 0) {
    // This timer was never scheduled, so it may belong to another thread. Only the main thread may
    // read `timers_`.
    return;
  }
  const auto position = timers_.find(timer.self());
  if (position != timers_.end() && position->get() == &timer) {
    timers_.erase(position);
  }
}

void NSRunLoop::invalidateTimers() {
  while (!timers_.empty()) {
    const Strong<NSTimer> timer = *timers_.begin();
    timer->invalidate();
  }
}

NSRunLoop::Timers::const_iterator NSRunLoop::nextTimer(NSRunLoopMode mode) const {
  // A timer does not fire again while it calls its target.
  return std::ranges::find_if(timers_, [mode](const Strong<NSTimer>& timer) {
    return containsMode(timer->modes_, mode) && !timer->isFiring_;
  });
}

bool NSRunLoop::fireTimers(NSRunLoopMode mode) {
  auto next = nextTimer(mode);
  if (next == timers_.end()) {
    return false;  // does not read the clock, so that a pass without timers is fast
  }
  bool hasFired = false;
  const Nanoseconds startTime = now();
  Nanoseconds currentTime = startTime;
  for (; next != timers_.end() && (*next)->fireDate_ <= startTime; next = nextTimer(mode)) {
    if (std::exchange(hasFired, true)) {
      currentTime = now();  // the target of the previous timer may have been slow
    }
    // The copy keeps the timer alive: the target may invalidate the timer.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const Strong<NSTimer> timer = *next;
    if (timer->repeats_) {
      reschedule(next, currentTime);
    }
    timer->fire();
  }
  return hasFired;
}

// Sets the next fire date of a repeating timer and updates the order of the timers. Must run before
// the timer's target. The target may remove the timer and thus invalidate `position`.
void NSRunLoop::reschedule(Timers::const_iterator position, Nanoseconds currentTime) {
  auto node = timers_.extract(position);
  node.value()->advanceFireDate(currentTime);
  timers_.insert(std::move(node));
}

bool NSRunLoop::runPass(NSRunLoopMode mode) {
  const PassScope scope(runningPasses_);
  beginPass();
  bool hasDoneWork = fireTimers(mode);
  if (windowSystem_ != nullptr) {
    hasDoneWork |= windowSystem_->deliver();
  }
  if (RunLoopSource* const mainQueue = mainQueue_) {
    hasDoneWork |= mainQueue->deliver();
  }
  if (isDescriptorPolled_) {
    setDescriptorDeadline(nextDeadline(mode));
  }
  return hasDoneWork;
}

Nanoseconds NSRunLoop::nextDeadline(NSRunLoopMode mode) const {
  Nanoseconds deadline = kNever;
  if (const auto next = nextTimer(mode); next != timers_.end()) {
    deadline = (*next)->fireDate_;
  }
  for (const RunLoopSource* source : {windowSystem_, mainQueue_.load()}) {
    if (source != nullptr) {
      deadline = std::min(deadline, source->nextDeadline());
    }
  }
  return deadline;
}

void NSRunLoop::wait(NSRunLoopMode mode, Nanoseconds limit) {
  if (!tryToBecomeIdle()) {
    return;
  }
  const bool isEndless = !clock_->waitUntil(std::min(limit, nextDeadline(mode)));
  // Outside a wait, only a polled descriptor needs calls of `Clock::wake`.
  if (!isDescriptorPolled_) {
    wakeState_.fetch_and(~kIsIdle);
  }
  if (isEndless) {
    throw EndlessWaitError("a wait in virtual time with nothing scheduled; " +
                           describePending(mode));
  }
}

void NSRunLoop::runModeBeforeDate(NSRunLoopMode mode, Nanoseconds limit) {
  if (!runPass(mode)) {
    wait(mode, limit);
  }
}

void NSRunLoop::runUntilDate(Nanoseconds limit) {
  // A repeating timer is always due if its target runs longer than its interval. The loop ends
  // nevertheless, because it compares the timer's deadline with the fixed time `end`.
  const Nanoseconds end = std::max(limit, now());
  while (now() < end || nextDeadline(mode_) <= end) {
    runModeBeforeDate(mode_, end);
  }
}

void NSRunLoop::runUntil(const std::function<bool()>& isDone) {
  while (!isDone()) {
    runModeBeforeDate(mode_, kNever);
  }
}

std::string NSRunLoop::describePending(NSRunLoopMode mode) const {
  std::string text = "timers: " + std::to_string(timers_.size());
  for (const Strong<NSTimer>& timer : timers_) {
    text += "\n  at " + std::to_string(timer->fireDate_) + " ns, target " +
            std::string(timer->target() ? timer->target()->className() : "null") +
            (timer->isFiring_ ? ", firing now" : "") +
            (containsMode(timer->modes_, mode) ? "" : ", not in this mode");
  }
  for (const RunLoopSource* source : {windowSystem_, mainQueue_.load()}) {
    if (source != nullptr) {
      text += source->describePending();
    }
  }
  return text;
}

}  // namespace vel
