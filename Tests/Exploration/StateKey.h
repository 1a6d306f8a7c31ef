#pragma once

#include <string>

#include "Tests/Exploration/Stage.h"

namespace vel::exploration {

/// All that what comes next may depend on, and all that the invariants remember: two plays with the
/// same key go on alike. Times count from now.
[[nodiscard]] std::string stateKey(const Stage& stage);

}  // namespace vel::exploration
