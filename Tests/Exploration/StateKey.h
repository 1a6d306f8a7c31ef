#pragma once

#include <string>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// Returns the values on which the rest of the play depends, as bytes. If two plays have the same
/// state key, the same further actions have the same results in both plays. The state key also
/// contains the history that the invariants use. Its times are relative to the current time.
[[nodiscard]] std::string stateKey(const ObservedPlay& play);

}  // namespace vel::exploration
