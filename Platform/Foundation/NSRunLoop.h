#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/WaitHandle.h"

namespace vel {

class WaitSet;

/// Delivers events or work to `NSRunLoop`. The loop calls `deliver` once in each pass. Only the
/// main thread may call these functions.
class VEL_EXPORT RunLoopSource : NonCopyable {
 public:
  virtual ~RunLoopSource() = default;

  /// Delivers all events or work that are due. Returns true if any were due.
  virtual bool deliver() = 0;
  /// The time at which the next event or work is due. 0 or a past time means now. `kNever` means
  /// that no such time is known.
  [[nodiscard]] virtual Nanoseconds nextDeadline() const = 0;
  /// Describes the pending work for an error message. Each line describes one piece of work and
  /// begins with a line feed.
  [[nodiscard]] virtual std::string describePending() const { return {}; }
};

/// Thrown instead of a wait that would never end: the clock is a `VirtualClock`, and no deadline is
/// known. The message lists the timers of all modes and the pending work of the sources.
class VEL_EXPORT EndlessWaitError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// The main thread's run loop. Each pass runs in one mode:
///   1. It fires the due timers of this mode.
///   2. It delivers the window system's events.
///   3. It runs the due work of the main queue.
///   4. It drains the main thread's `ReleasePool`.
/// A host program either calls `runUntilDate`, or calls `pump` from its own loop. Any thread may
/// call `mainRunLoop`, `currentRunLoop`, `now`, `wake` and `setMainQueueSource`. Only the main
/// thread may call the other operations.
class VEL_EXPORT NSRunLoop : NonCopyable {
 public:
  static NSRunLoop& mainRunLoop();
  /// The main run loop on the main thread, null on any other thread.
  static NSRunLoop* currentRunLoop();

  /// Replaces the clock by the machine's steady clock, which is also the default. Invalidates all
  /// timers. Throws `std::system_error`, and changes nothing, if the process has no descriptors
  /// left.
  void useRealTime();
  /// Replaces the clock, for example by a `VirtualClock`. Invalidates all timers. Until
  /// `useRealTime` is called, the loop runs in virtual time: it does not wait for input.
  void setClock(std::unique_ptr<Clock> clock);
  [[nodiscard]] Clock& clock() { return *clock_; }
  [[nodiscard]] Nanoseconds now() const { return clock_->now(); }

  /// Each of these two functions sets one source; null removes the source. The run loop does not
  /// own its sources.
  void setWindowSystemSource(RunLoopSource* source) { windowSystem_ = source; }
  void setMainQueueSource(RunLoopSource* source) { mainQueue_ = source; }

  /// Sets the mode that `pump`, `runUntilDate` and `runUntil` use from the next pass on.
  void setMode(NSRunLoopMode mode) { mode_ = mode; }
  [[nodiscard]] NSRunLoopMode mode() const { return mode_; }

  /// Schedules `timer` in `mode`. The timer also stays scheduled in its earlier modes. Ignores null
  /// and an invalid timer.
  void addTimerForMode(const Strong<NSTimer>& timer, NSRunLoopMode mode);

  /// Runs one pass. Returns true if the pass did any work. Never waits for an event, but may block
  /// for a round trip to the display server.
  bool runPass(NSRunLoopMode mode);
  /// Runs one pass in the loop's mode. A game calls this function once per frame.
  bool pump() { return runPass(mode_); }
  /// Runs one pass. If the pass did no work, waits for the next deadline, an event or a wake-up.
  /// The wait ends at `limit` at the latest. `limit` is a time on the loop's clock.
  void runModeBeforeDate(NSRunLoopMode mode, Nanoseconds limit);
  /// Runs passes until the loop's clock reaches `limit`. Timers, events and work that are due at
  /// `limit` are included.
  void runUntilDate(Nanoseconds limit);
  /// Runs passes until `isDone` returns true. Calls `isDone` before each pass.
  void runUntil(const std::function<bool()>& isDone);

  /// The time at which the next timer, event or work is due in the loop's mode. 0 or a past time
  /// means now. `kNever` means that no such time is known.
  [[nodiscard]] Nanoseconds nextDeadline() const { return nextDeadline(mode_); }
  /// Returns a handle for a host's own loop. The descriptor of the handle is readable when the host
  /// must call `pump`. Do not use the handle after `useRealTime` or `setClock`, which close the
  /// descriptor. In virtual time, the handle is invalid.
  [[nodiscard]] WaitHandle waitHandle();
  /// Watches `handle`: input on the handle ends a wait of the loop. Replaces the previously watched
  /// handle. An invalid `handle` only removes the previous one. Has no effect in virtual time.
  void watch(WaitHandle handle);

  /// Ends a wait of the loop, and makes the descriptor of `waitHandle` readable. Any thread may
  /// call this function.
  void wake();
  /// Makes the descriptor of `waitHandle` readable from `nextDeadline()` on. Call this function
  /// when the deadline of a source changes between two passes. Without this call, the host could
  /// wake up too late.
  void updateDescriptor();

  /// The number of timers that are scheduled in any mode.
  [[nodiscard]] std::size_t timerCount() const { return timers_.size(); }
  /// Invalidates every timer.
  void invalidateTimers();

 private:
  friend class NSTimer;

  struct EarlierFirst {
    bool operator()(const Strong<NSTimer>& left, const Strong<NSTimer>& right) const {
      return left->fireDate_ != right->fireDate_ ? left->fireDate_ < right->fireDate_
                                                 : left->order_ < right->order_;
    }
  };
  using Timers = std::set<Strong<NSTimer>, EarlierFirst>;

  NSRunLoop();
  ~NSRunLoop();

  void replaceClock(std::unique_ptr<Clock> clock, std::unique_ptr<WaitSet> waitSet);
  void beginPass();
  void setDescriptorDeadline(Nanoseconds deadline);
  /// Returns false if `wake` has been called since the latest pass began.
  bool tryToBecomeIdle();
  void removeTimer(NSTimer& timer);
  bool fireTimers(NSRunLoopMode mode);
  void reschedule(Timers::const_iterator position, Nanoseconds currentTime);
  [[nodiscard]] Timers::const_iterator nextTimer(NSRunLoopMode mode) const;
  [[nodiscard]] Nanoseconds nextDeadline(NSRunLoopMode mode) const;
  void wait(NSRunLoopMode mode, Nanoseconds limit);
  [[nodiscard]] std::string describePending(NSRunLoopMode mode) const;

  std::unique_ptr<WaitSet> waitSet_;  // null in virtual time
  std::unique_ptr<Clock> clock_;
  RunLoopSource* windowSystem_ = nullptr;
  // Atomic because any thread may call `setMainQueueSource`.
  std::atomic<RunLoopSource*> mainQueue_ = nullptr;
  NSRunLoopMode mode_ = NSDefaultRunLoopMode;
  Timers timers_;
  std::uint64_t nextTimerOrder_ = 0;
  std::size_t runningPasses_ = 0;  // more than 1 if a pass runs a nested loop
  bool isDescriptorPolled_ = false;
  std::atomic<unsigned> wakeState_ = 0;  // bits, which NSRunLoop.cpp defines
};

}  // namespace vel
