#pragma once

#include <string>

#include "Tests/Exploration/ObservedPlay.h"

namespace vel::exploration {

/// Returns bytes that identify the state of the play. If two plays have the same state fingerprint,
/// the same actions then lead to the same results and the same violations in both plays. All times
/// in the state fingerprint are relative to the current time.
[[nodiscard]] std::string stateFingerprint(const ObservedPlay& play);

}  // namespace vel::exploration
