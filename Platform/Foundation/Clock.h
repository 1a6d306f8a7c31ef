#pragma once

#include <atomic>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"

namespace vel {

/// The run loop's clock. The run loop owns its clock and calls `waitUntil` on the main thread. Any
/// thread may call `now` and `wake`.
class VEL_EXPORT Clock : NonCopyable {
 public:
  virtual ~Clock() = default;

  [[nodiscard]] virtual Nanoseconds now() const = 0;

  /// Waits until `deadline` or until a call of `wake`. A `RealClock` also stops waiting when
  /// input or a signal arrives. Returns false only on a `VirtualClock`, if the deadline is `kNever`
  /// and no earlier call of `wake` ends the wait.
  virtual bool waitUntil(Nanoseconds deadline) = 0;

  /// Ends the current wait. If no wait is in progress, ends the next wait.
  virtual void wake() = 0;
};

/// A clock that does not really wait: `waitUntil` advances the time to the deadline and returns
/// immediately. The time does not advance otherwise.
class VEL_EXPORT VirtualClock final : public Clock {
 public:
  [[nodiscard]] Nanoseconds now() const override { return now_; }
  bool waitUntil(Nanoseconds deadline) override {
    if (isWakePending_.exchange(false)) {
      return true;
    }
    if (deadline == kNever) {
      return false;  // the wait would never end
    }
    if (deadline > now_) {
      now_ = deadline;
    }
    return true;
  }
  void wake() override { isWakePending_ = true; }

 private:
  std::atomic<Nanoseconds> now_ = 0;
  std::atomic<bool> isWakePending_ = false;
};

}  // namespace vel
