#pragma once

#include <string>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// Returns the values on which the rest of the play depends, as bytes. Two plays with the same key
/// have the same future. The key contains the history that the invariants use. Times in the key are
/// relative to the current time.
[[nodiscard]] std::string stateKey(const ObservedPlay& play);

}  // namespace vel::exploration
