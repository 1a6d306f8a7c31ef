#include "Platform/WindowSystem/X11/Animation.h"

#include <algorithm>

namespace vel::x11 {

Nanoseconds Animation::deadline() const {
  const bool isRunning = std::ranges::any_of(windows_, [](const auto& entry) {
    return entry.second.isOnScreen() && entry.second.cover->isAnimated();
  });
  return isRunning ? nextPicture_ : kNever;
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
  constexpr Nanoseconds kStep = Spinner::kFrameInterval;
  nextPicture_ = (now / kStep + 1) * kStep;
}

}  // namespace vel::x11
