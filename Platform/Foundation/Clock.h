// The clocks, which tell the time and wait.
#pragma once

#include <atomic>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"

namespace vel {

/// The run loop's clock. Real and virtual time differ in this class only. The run loop owns its
/// clock and waits on the main thread. Any thread may call `now` and `wake`.
class VEL_EXPORT Clock : NonCopyable {
 public:
  virtual ~Clock() = default;

  [[nodiscard]] virtual Nanoseconds now() const = 0;

  /// Waits until `deadline`. `wake`, or input that the clock also waits for, ends the wait earlier.
  /// Returns false, without waiting, if nothing could ever end the wait.
  virtual bool waitUntil(Nanoseconds deadline) = 0;

  /// Ends the current wait. If no wait is in progress, ends the next wait.
  virtual void wake() = 0;
};

/// A clock whose time advances only during a wait, and then jumps to the deadline.
class VEL_EXPORT VirtualClock final : public Clock {
 public:
  [[nodiscard]] Nanoseconds now() const override { return now_; }
  bool waitUntil(Nanoseconds deadline) override {
    if (hasWakeUp_.exchange(false)) {
      return true;
    }
    if (deadline == kNever) {
      return false;
    }
    if (deadline > now_) {
      now_ = deadline;
    }
    return true;
  }
  void wake() override { hasWakeUp_ = true; }

 private:
  std::atomic<Nanoseconds> now_ = 0;
  std::atomic<bool> hasWakeUp_ = false;
};

}  // namespace vel
