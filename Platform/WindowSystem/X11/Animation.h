#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Animates the turning indicators in the covers (`Cover`) of all windows on screen. All indicators
/// change at the same time.
class Animation final : public NonCopyable {
 public:
  explicit Animation(WindowTable& windows) : windows_(windows) {}

  /// The time of the next step; `kNever` if no indicator on screen is animated.
  [[nodiscard]] Nanoseconds deadline() const;
  /// If the time of the next step has come, draws all animated indicators.
  void advance(Nanoseconds now);

 private:
  WindowTable& windows_;
  Nanoseconds nextStepTime_ = 0;
};

}  // namespace vel::x11
