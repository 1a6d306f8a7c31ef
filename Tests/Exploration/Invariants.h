#pragma once

#include <span>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// What holds for every launch screen, whatever the host and the user do.
[[nodiscard]] std::span<const Invariant> invariants();

}  // namespace vel::exploration
