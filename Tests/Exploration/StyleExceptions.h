#pragma once

#include <span>
#include <string_view>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// A known case in which a host's window does not get its own style back.
struct StyleException {
  std::string_view name;
  std::string_view reason;
  /// Whether the step, which is about to be played, causes this case.
  bool (*begins)(const ObservedPlay& play, const host::Step& step) = nullptr;
  /// Whether the window has the style that this case leaves.
  bool (*leaves)(const ObservedPlay& play, const NSWindow& window) = nullptr;
};

[[nodiscard]] std::span<const StyleException> styleExceptions();

/// Whether no cover is up and none is about to be removed.
[[nodiscard]] bool isUncovered(const ObservedPlay& play);
/// Whether no controller keeps a window, or a style that is not the window's own. Earlier covers
/// then have no further effect on styles.
[[nodiscard]] bool isStyleForgotten(const ObservedPlay& play);

}  // namespace vel::exploration
