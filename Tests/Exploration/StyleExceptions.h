#pragma once

#include <span>
#include <string_view>

#include "Tests/Exploration/Stage.h"

namespace vel::exploration {

/// A way in which a host's window, on purpose, does not get its own style back.
struct StyleException {
  std::string_view name;
  std::string_view reason;
  /// Whether the step that is about to be done, or what went before, brings it about.
  bool (*begins)(const Stage& stage, const host::Step& step);
  /// The style that the window is left with, where its host gave it this one.
  NSWindowStyleMask (*left)(NSWindowStyleMask given);
};

[[nodiscard]] std::span<const StyleException> styleExceptions();

}  // namespace vel::exploration
