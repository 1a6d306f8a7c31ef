#pragma once

#include <string>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// Returns the values on which the rest of the play depends, as bytes. If two plays have the same
/// key, the same further actions have the same results in both plays. The key also contains the
/// history that the invariants use. Times in the key are relative to the current time.
[[nodiscard]] std::string stateKey(const ObservedPlay& play);

}  // namespace vel::exploration
