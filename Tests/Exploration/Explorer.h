#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "Tests/Exploration/Alphabet.h"
#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// A script that breaks an invariant.
struct Finding {
  /// The broken invariant and what is wrong.
  std::string violation;
  /// Ends with "deactivate" if the violation comes from `ObservedPlay::end`, which deactivates the
  /// manager of the launch screen.
  Script script;
};

/// The result of `explore`.
struct Exploration {
  /// The number of different states, including the state before the first action. 0 if there is a
  /// finding.
  std::size_t stateCount = 0;
  /// The number of scripts that were played.
  std::size_t scriptCount = 0;
  /// The exploration has reached every state that a script of up to this length can reach.
  std::size_t depth = 0;
  /// The first script that breaks an invariant. The exploration stops after this script.
  std::optional<Finding> finding;
};

/// Plays scripts of up to `depth` actions, shorter scripts first. Each play begins with a new host.
/// Extends a script by every action, unless an earlier script leads to the same state.
[[nodiscard]] Exploration explore(const HostSetup& hostSetup, std::span<const Invariant> invariants,
                                  std::size_t depth);

/// Plays one script to its end. Returns the broken invariant, or an empty string.
[[nodiscard]] std::string violationIn(const ParsedHostSetup& parsedHostSetup,
                                      std::span<const Invariant> invariants, const Script& script);

}  // namespace vel::exploration
