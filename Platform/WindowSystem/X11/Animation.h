#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Animates the spinners of all windows on screen. A spinner is a part of a window's `Cover`. All
/// spinners change at the same time.
class Animation final : public NonCopyable {
 public:
  explicit Animation(WindowTable& windows) : windows_(windows) {}

  /// The time of the next step of the animation; `kNever` if no spinner on screen is animated.
  [[nodiscard]] Nanoseconds deadline() const;
  /// If `deadline` is not later than `now`, redraws every animated spinner as it looks at `now`.
  void advance(Nanoseconds now);

 private:
  WindowTable& windows_;
  Nanoseconds nextStepTime_ = 0;
};

}  // namespace vel::x11
