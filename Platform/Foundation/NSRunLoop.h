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

/// A source of events or work. Each pass of the run loop fires the timers and then calls `deliver`
/// of each source. Only the main thread may use a source.
class VEL_EXPORT RunLoopSource : NonCopyable {
 public:
  virtual ~RunLoopSource() = default;

  /// Delivers all events or work that are due. Returns true if any were due.
  virtual bool deliver() = 0;
  /// The time at which the next event or work is due. 0 means that events or work are already due.
  /// `kNever` means that no such time is known.
  [[nodiscard]] virtual Nanoseconds nextDeadline() const = 0;
  /// Describes the pending work for an error message, one line for each piece of work. A line break
  /// precedes each line.
  [[nodiscard]] virtual std::string describePending() const { return {}; }
};

/// Thrown by a wait on a `VirtualClock` if no deadline is known, because the wait would never end.
/// The message lists the timers of all modes and the pending work of the sources.
class VEL_EXPORT EndlessWaitError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// The main thread's run loop. A pass in a mode fires the timers of the mode that are due, delivers
/// the window system's events, runs the work that is due in the main queue and drains the release
/// pool, in this order. Any thread may add work to the main queue. A host program either hands over
/// control (`runUntilDate`) or calls `pump` from its own loop. Any thread may call `mainRunLoop`,
/// `currentRunLoop`, `now`, `wake` and `setMainQueueSource`. Only the main thread may call the
/// other operations.
class VEL_EXPORT NSRunLoop : NonCopyable {
 public:
  static NSRunLoop& mainRunLoop();
  /// The main run loop on the main thread, null on any other thread.
  static NSRunLoop* currentRunLoop();

  /// Replaces the clock by the machine's steady clock, which is also the default. Invalidates all
  /// timers. Throws `std::system_error`, and changes nothing, if the process has no descriptors
  /// left.
  void useRealTime();
  /// Replaces the clock by a clock that does not wait for input, such as a `VirtualClock`.
  /// Invalidates all timers. Time is then virtual until `useRealTime` is called.
  void setClock(std::unique_ptr<Clock> clock);
  [[nodiscard]] Clock& clock() { return *clock_; }
  [[nodiscard]] Nanoseconds now() const { return clock_->now(); }

  /// Set the sources. Null removes the source. The run loop does not own the sources.
  void setWindowSystemSource(RunLoopSource* source) { windowSystem_ = source; }
  void setMainQueueSource(RunLoopSource* source) { mainQueue_ = source; }

  /// The mode of the passes that `pump`, `runUntilDate` and `runUntil` run. These functions read
  /// the mode before each pass, so a callback may change the mode of the next pass.
  void setMode(NSRunLoopMode mode) { mode_ = mode; }
  [[nodiscard]] NSRunLoopMode mode() const { return mode_; }

  /// Lets the timer fire in `mode`, in addition to its other modes. Ignores null and an invalid
  /// timer.
  void addTimerForMode(const Strong<NSTimer>& timer, NSRunLoopMode mode);

  /// Runs one pass. Returns true if the pass did any work. Never waits for an event, but may block
  /// for a round trip to the display server.
  bool runPass(NSRunLoopMode mode);
  /// Runs one pass in the loop's mode. A game calls this function once per frame.
  bool pump() { return runPass(mode_); }
  /// Runs one pass. If the pass did no work, waits for the next deadline, an event or a wake-up,
  /// but no longer than until `limit`, a time on the loop's clock.
  void runModeBeforeDate(NSRunLoopMode mode, Nanoseconds limit);
  /// Runs passes until the loop's clock reaches `limit`. Also runs everything that is due at
  /// `limit`.
  void runUntilDate(Nanoseconds limit);
  /// Runs passes until `isDone` returns true. Calls `isDone` before each pass.
  void runUntil(const std::function<bool()>& isDone);

  /// The time at which the next timer, event or work is due in the loop's mode. 0 or a past time
  /// means now. `kNever` means that no such time is known.
  [[nodiscard]] Nanoseconds nextDeadline() const { return nextDeadline(mode_); }
  /// Returns a handle for a host's own loop. Its descriptor is readable when a pass is due.
  /// The handle can be used until the clock is replaced. After the first call of this
  /// function, every pass updates the descriptor. In virtual time, the handle is invalid.
  [[nodiscard]] WaitHandle waitHandle();
  /// Watches `handle`: input on it ends a wait of the loop. Replaces the previous handle; an
  /// invalid handle only removes the previous handle. Has no effect in virtual time.
  void watch(WaitHandle handle);

  /// Ends a wait of the loop, and makes the descriptor of `waitHandle` readable. Any thread may
  /// call this function.
  void wake();
  /// Updates the descriptor of `waitHandle`. Call this function when the deadline of a source
  /// changes between two passes. Otherwise the host could wake up too late.
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
  /// Returns false if a wake-up has arrived.
  bool becomeIdle();
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
  // Atomic: the first use of the main queue sets this pointer, and may be on any thread.
  std::atomic<RunLoopSource*> mainQueue_ = nullptr;
  NSRunLoopMode mode_ = NSDefaultRunLoopMode;
  Timers timers_;
  std::uint64_t nextTimerOrder_ = 0;
  std::size_t runningPasses_ = 0;        // more than 1 if a pass runs a nested loop
  bool isDescriptorPolled_ = false;      // true if a host polls the descriptor
  std::atomic<unsigned> wakeState_ = 0;  // the bits `kIsIdle` and `kHasWakeUp` of NSRunLoop.cpp
};

}  // namespace vel
