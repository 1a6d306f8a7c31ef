#pragma once

#include <span>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// The statements that must hold for every launch screen, whatever the host and the user do.
[[nodiscard]] std::span<const Invariant> invariants();

}  // namespace vel::exploration
