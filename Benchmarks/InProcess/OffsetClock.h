#pragma once

#include <memory>

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/RealClock.h"

namespace vel::bench {

/// The system's monotonic clock plus an offset. A benchmark makes timers due by increasing the
/// offset. Reading this clock costs as much as reading the system's clock.
class OffsetClock final : public Clock {
 public:
  [[nodiscard]] Nanoseconds now() const override { return realClock_.now() + offset_; }
  bool waitUntil(Nanoseconds /*deadline*/) override { return true; }
  void wake() override {}

  void advance(Nanoseconds span) { offset_ += span; }

 private:
  std::unique_ptr<WaitSet> waitSet_ = makeWaitSet();
  RealClock realClock_{*waitSet_};
  Nanoseconds offset_ = 0;
};

}  // namespace vel::bench
