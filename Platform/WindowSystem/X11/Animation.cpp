#include "Platform/WindowSystem/X11/Animation.h"

#include <algorithm>

namespace vel::x11 {

Nanoseconds Animation::deadline() const {
  const bool isAnySpinnerAnimated = std::ranges::any_of(windows_, [](const auto& entry) {
    return entry.second.isOnScreen() && entry.second.cover->isAnimated();
  });
  return isAnySpinnerAnimated ? nextStepTime_ : kNever;
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
  // A spinner's frame changes at each multiple of `kInterval`.
  nextStepTime_ = (now / kInterval + 1) * kInterval;
}

}  // namespace vel::x11
