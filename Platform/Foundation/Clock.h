// What is now, and how to wait: the one difference between real and virtual time.
#pragma once

#include <atomic>
#include <memory>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Time.h"

namespace vel {

/// The run loop's clock. The loop owns it; it waits on the main thread, while `now` and `wake` may
/// be called from any.
class VEL_EXPORT Clock {
 public:
  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  Clock(Clock&&) = delete;
  Clock& operator=(Clock&&) = delete;
  virtual ~Clock() = default;

  [[nodiscard]] virtual Nanoseconds now() const = 0;

  /// Returns at `deadline`, never before it, unless something arrives first: a wake-up, or input on
  /// the watched descriptor.
  virtual void waitUntil(Nanoseconds deadline) = 0;
  /// Whether a wait without a deadline can end.
  [[nodiscard]] virtual bool canWaitForEver() const = 0;

  /// Ends the wait in progress, or else the next one.
  virtual void wake() = 0;

  /// The loop begins a pass: wake-ups that came before it are served by it.
  virtual void passBegan() = 0;
  /// Whether somebody else waits on the descriptor, and has to be told by `passEnded`.
  [[nodiscard]] virtual bool isPolled() const = 0;
  /// The loop has ended a pass and has nothing to do until `deadline`; from here on the descriptor
  /// tells when it has.
  virtual void passEnded(Nanoseconds deadline) = 0;

  /// Becomes readable when the loop has something to do; -1 where time is virtual. From the first
  /// call on it is kept up to date.
  [[nodiscard]] virtual int descriptor() = 0;
  /// Adds a descriptor whose input ends a wait (a window system's connection); -1 for none.
  virtual void watch(int descriptor) = 0;
};

/// The steady clock of the machine.
VEL_EXPORT std::unique_ptr<Clock> makeRealClock();

/// A clock that stands still until the loop would wait, and then moves straight to the deadline.
class VEL_EXPORT VirtualClock final : public Clock {
 public:
  [[nodiscard]] Nanoseconds now() const override { return now_; }
  void waitUntil(Nanoseconds deadline) override {
    if (!woken_.exchange(false) && deadline > now_) {
      now_ = deadline;
    }
  }
  [[nodiscard]] bool canWaitForEver() const override { return woken_; }
  void wake() override { woken_ = true; }
  void passBegan() override { woken_ = false; }
  [[nodiscard]] bool isPolled() const override { return false; }
  void passEnded(Nanoseconds /*deadline*/) override {}
  [[nodiscard]] int descriptor() override { return -1; }
  void watch(int /*descriptor*/) override {}

 private:
  std::atomic<Nanoseconds> now_ = 0;
  std::atomic<bool> woken_ = false;
};

}  // namespace vel
