#pragma once

#include <span>
#include <string_view>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// A known case in which the library does not restore the style of a host's window.
struct StyleException {
  std::string_view name;
  /// Returns true if the step causes this case. Called just before the step is played.
  bool (*isCausedBy)(const ObservedPlay& play, const host::Step& step) = nullptr;
  /// Returns true if the window has the wrong style that this case causes.
  bool (*hasResultingStyle)(const ObservedPlay& play, const NSWindow& window) = nullptr;
};

[[nodiscard]] std::span<const StyleException> styleExceptions();

/// Returns true if no cover is up and no removal of a cover is pending.
[[nodiscard]] bool isUncovered(const ObservedPlay& play);
/// Returns true if an earlier cover can still give a window a wrong style. This is possible if
/// `embedded_cover::selfController` is not null, if a controller's `appWindow` is not null, or if a
/// controller has saved a style other than the original style of the player window.
[[nodiscard]] bool canEarlierCoverChangeStyle(const ObservedPlay& play);

}  // namespace vel::exploration
