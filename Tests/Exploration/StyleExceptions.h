#pragma once

#include <span>
#include <string_view>

#include "Tests/Exploration/Stage.h"

namespace vel::exploration {

/// A way in which a host's window, on purpose, does not get its own style back.
struct StyleException {
  std::string_view name;
  std::string_view reason;
  /// Whether the step that is about to be done brings it about.
  bool (*begins)(const Stage& stage, const host::Step& step) = nullptr;
  /// Whether the window has just the style that it is then left with.
  bool (*leaves)(const Stage& stage, const NSWindow& window) = nullptr;
};

[[nodiscard]] std::span<const StyleException> styleExceptions();

/// Whether no cover is up and none is about to be removed.
[[nodiscard]] bool isUncovered(const Stage& stage);
/// Whether no controller holds a window or a style that is not the window's own: what went before
/// has no consequences any more.
[[nodiscard]] bool isStyleForgotten(const Stage& stage);

}  // namespace vel::exploration
