#include "Platform/Foundation/RealClock.h"

#include <chrono>

namespace vel {

Nanoseconds RealClock::now() const {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool RealClock::waitUntil(Nanoseconds deadline) {
  waitSet_.setDeadline(deadline);
  waitSet_.wait();
  return true;  // a wake-up or input can end every wait
}

void RealClock::wake() { waitSet_.wake(); }

}  // namespace vel
