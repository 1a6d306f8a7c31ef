#pragma once

#include <atomic>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"

namespace vel {

/// The run loop's clock. Only the main thread may call `waitUntil`. Any thread may call `now` and
/// `wake`.
class VEL_EXPORT Clock : NonCopyable {
 public:
  virtual ~Clock() = default;

  [[nodiscard]] virtual Nanoseconds now() const = 0;

  /// Waits until `deadline` or until `wake` is called. May return early. Returns false if the clock
  /// knows that the wait would never end.
  virtual bool waitUntil(Nanoseconds deadline) = 0;

  /// Ends the current wait. If no wait is in progress, ends the next wait.
  virtual void wake() = 0;
};

/// A clock whose time advances only in `waitUntil`. `waitUntil` returns immediately.
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
