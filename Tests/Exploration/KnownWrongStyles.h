#pragma once

#include <span>
#include <string_view>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// A known case in which the library leaves a wrong style on a host's window. The invariants accept
/// this style.
struct KnownWrongStyle {
  std::string_view name;
  /// Returns true if the step can cause the wrong style. Called just before the player performs the
  /// step.
  bool (*isCausedBy)(const ObservedPlay& play, const host::Step& step) = nullptr;
  /// Returns true if the window has the wrong style of this case.
  bool (*hasResultingStyle)(const ObservedPlay& play, const NSWindow& window) = nullptr;
};

[[nodiscard]] std::span<const KnownWrongStyle> knownWrongStyles();

/// Returns true if no launch screen is shown and no dismissed launch screen still has to be
/// removed.
[[nodiscard]] bool isUncovered(const ObservedPlay& play);
/// Returns true if the controller of an earlier launch screen can still give a window a wrong
/// style.
[[nodiscard]] bool canEarlierCoverChangeStyle(const ObservedPlay& play);

}  // namespace vel::exploration
