#pragma once

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/WaitSet.h"

namespace vel {

/// The machine's steady clock. Input or a signal may end `waitUntil` before the deadline. `waitSet`
/// must outlive the clock.
class RealClock final : public Clock {
 public:
  explicit RealClock(WaitSet& waitSet) : waitSet_(waitSet) {}

  [[nodiscard]] Nanoseconds now() const override;
  bool waitUntil(Nanoseconds deadline) override;
  void wake() override;

 private:
  WaitSet& waitSet_;
};

}  // namespace vel
