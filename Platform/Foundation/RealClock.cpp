#include "Platform/Foundation/RealClock.h"

#include <chrono>

namespace vel {

Nanoseconds RealClock::now() const {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool RealClock::waitUntil(Nanoseconds deadline) {
  waitSet_.setDeadline(deadline);
  waitSet_.wait();
  return true;  // even without a deadline, the wait can end: by `wake` or by input
}

void RealClock::wake() { waitSet_.wake(); }

}  // namespace vel
