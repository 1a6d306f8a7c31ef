#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSTimer.h"

namespace vel {

/// Something that a pass of the run loop serves besides its timers.
class VEL_EXPORT RunLoopSource {
 public:
  RunLoopSource() = default;
  RunLoopSource(const RunLoopSource&) = delete;
  RunLoopSource& operator=(const RunLoopSource&) = delete;
  RunLoopSource(RunLoopSource&&) = delete;
  RunLoopSource& operator=(RunLoopSource&&) = delete;
  virtual ~RunLoopSource() = default;

  /// Delivers what has come by now; answers whether there was anything.
  virtual bool deliver() = 0;
  /// When there will be something: `kNever` where that is unknown, 0 where there is already.
  [[nodiscard]] virtual Nanoseconds nextDeadline() const = 0;
};

/// Raised by a wait that could never end: virtual time, and nothing scheduled.
class VEL_EXPORT NothingToWaitFor : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// The main thread's run loop. One pass in a mode fires the timers that are due, delivers the
/// window system's events, runs the main queue's work and drains the release pool, in this order. A
/// host either hands over control (`runUntilDate`) or calls `pump` from a loop of its own.
class VEL_EXPORT NSRunLoop {
 public:
  static NSRunLoop& mainRunLoop();
  /// The main run loop on the main thread; none on any other.
  static NSRunLoop* currentRunLoop();

  /// Replaces the clock; timers scheduled on the old one are invalidated. The default is real time.
  void setClock(std::unique_ptr<Clock> clock);
  [[nodiscard]] Clock& clock() { return *clock_; }
  [[nodiscard]] Nanoseconds now() const { return clock_->now(); }

  /// Who is served in a pass after the timers: first the window system, then the main queue. None
  /// takes the source out.
  void setWindowSystemSource(RunLoopSource* source) { windowSystem_ = source; }
  void setMainQueueSource(RunLoopSource* source) { mainQueue_ = source; }

  /// The mode in which `pump` and `runUntilDate` run, looked at before each pass.
  void setMode(NSRunLoopMode mode) { mode_ = mode; }
  [[nodiscard]] NSRunLoopMode mode() const { return mode_; }

  /// Adds the timer for one more mode.
  void addTimerForMode(const Strong<NSTimer>& timer, NSRunLoopMode mode);

  /// One pass; answers whether it did anything. It waits for no event, only for the window system's
  /// answers.
  bool runPass(NSRunLoopMode mode);
  /// The same in the loop's mode: what a game calls once a frame.
  bool pump() { return runPass(mode_); }
  /// One pass; where it did nothing, waits for what comes next, `limit` at the latest.
  void runModeBeforeDate(NSRunLoopMode mode, Nanoseconds limit);
  /// Runs until `limit` has come and nothing more is due at that moment.
  void runUntilDate(Nanoseconds limit);
  /// Runs until `done` answers true, asking after each pass.
  void runUntil(const std::function<bool()>& done);

  /// When a pass in the loop's mode has something to do next; 0 for now, `kNever` if that is
  /// unknown.
  [[nodiscard]] Nanoseconds nextDeadline() const { return nextDeadline(mode_); }
  /// Becomes readable when a pass has something to do; -1 in virtual time. Valid until the clock is
  /// replaced.
  [[nodiscard]] int descriptor() { return clock_->descriptor(); }

  /// Ends a wait, also a host's on the descriptor. Any thread.
  void wake();
  /// Tells that what a source has to do may be due at another time now. Between passes that is
  /// passed on to a host that waits on the descriptor; without one, nothing happens. Main thread.
  void deadlineChanged();

  /// Timers that are scheduled, in any mode.
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

  void remove(NSTimer& timer);
  bool fireTimers(NSRunLoopMode mode);
  void advance(Timers::const_iterator position, Nanoseconds current);
  [[nodiscard]] Timers::const_iterator nextTimer(NSRunLoopMode mode) const;
  [[nodiscard]] Nanoseconds nextDeadline(NSRunLoopMode mode) const;
  void wait(NSRunLoopMode mode, Nanoseconds limit);
  [[nodiscard]] std::string pending(NSRunLoopMode mode) const;

  std::unique_ptr<Clock> clock_;
  RunLoopSource* windowSystem_ = nullptr;
  RunLoopSource* mainQueue_ = nullptr;
  NSRunLoopMode mode_ = NSDefaultRunLoopMode;
  Timers timers_;
  std::uint64_t scheduled_ = 0;
  std::size_t passes_ = 0;  // under way, nested ones included
};

}  // namespace vel
