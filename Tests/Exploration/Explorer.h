#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "Tests/Exploration/Alphabet.h"
#include "Tests/Exploration/Stage.h"

namespace vel::exploration {

/// A script in which an invariant does not hold. Where that shows only in the time after it, when
/// the manager has been deactivated, that is its last action.
struct Finding {
  std::string violation;
  Script script;
};

struct Exploration {
  /// Different ones, the first included.
  std::size_t states = 0;
  /// Scripts played.
  std::size_t sequences = 0;
  /// The length up to which every script was played, or found to end where a shorter one does.
  std::size_t depth = 0;
  /// The first, and so one of the shortest; the exploration ends with it.
  std::optional<Finding> finding;
};

/// Plays every script of up to `depth` actions, the shorter ones first, each from the start on a
/// stage of its own. Of scripts that lead to the same state only the first is gone on from.
[[nodiscard]] Exploration explore(const Setting& setting, std::span<const Invariant> invariants,
                                  std::size_t depth);

/// Plays one script to its end; what does not hold, or nothing.
[[nodiscard]] std::string violationIn(const Theatre& theatre, std::span<const Invariant> invariants,
                                      const Script& script);

}  // namespace vel::exploration
