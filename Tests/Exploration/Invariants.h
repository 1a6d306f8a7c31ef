#pragma once

#include <span>

#include "Tests/Exploration/Stage.h"

namespace vel::exploration {

/// What holds of every launch screen, whatever its host and its user do.
[[nodiscard]] std::span<const Invariant> invariants();

}  // namespace vel::exploration
