#include "Platform/WindowSystem/X11/Animation.h"

#include <algorithm>

namespace vel::x11 {

Nanoseconds Animation::deadline() const {
  const bool isRunning = std::ranges::any_of(windows_, [](const auto& entry) {
    return entry.second.isOnScreen() && entry.second.cover->isAnimated();
  });
  return isRunning ? nextStepTime_ : kNever;
}

void Animation::advance(Nanoseconds now) {
  if (now < deadline()) {
    return;
  }
  for (auto& [id, window] : windows_) {
    if (window.isOnScreen()) {
      window.cover->animate(now);
    }
  }
  constexpr Nanoseconds kInterval = Spinner::kFrameInterval;
  nextStepTime_ = (now / kInterval + 1) * kInterval;
}

}  // namespace vel::x11
