#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "Tests/Exploration/Alphabet.h"
#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// A script that breaks an invariant. If the invariant breaks only after the end of the script,
/// when the manager is deactivated, the last action of the script is "deactivate".
struct Finding {
  std::string violation;
  Script script;
};

/// The result of an exploration.
struct Exploration {
  /// The number of different states, including the first one.
  std::size_t stateCount = 0;
  /// The number of scripts that were played.
  std::size_t scriptCount = 0;
  /// Every script up to this length was played, or reaches the same state as a shorter script.
  std::size_t depth = 0;
  /// The first script that breaks an invariant. No shorter script breaks one. The exploration stops
  /// there.
  std::optional<Finding> finding;
};

/// Plays every script of up to `depth` actions from its start, shorter scripts first. If several
/// scripts lead to the same state, extends only the first one.
[[nodiscard]] Exploration explore(const Setting& setting, std::span<const Invariant> invariants,
                                  std::size_t depth);

/// Plays one script to its end. Returns the broken invariant, or an empty text.
[[nodiscard]] std::string violationIn(const ParsedSetting& parsed,
                                      std::span<const Invariant> invariants, const Script& script);

}  // namespace vel::exploration
