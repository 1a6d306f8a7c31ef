#pragma once

#include <string>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// The values on which the rest of the play depends, as bytes. Two plays with the same key have the
/// same future. The key contains the history that the invariants use. Its times are relative to
/// now.
[[nodiscard]] std::string stateKey(const ObservedPlay& play);

}  // namespace vel::exploration
