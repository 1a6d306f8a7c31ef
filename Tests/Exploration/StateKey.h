#pragma once

#include <string>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// Everything that the rest of the play depends on: two plays with the same key have the same
/// future. Contains what the invariants remember, and times relative to now.
[[nodiscard]] std::string stateKey(const ObservedPlay& play);

}  // namespace vel::exploration
