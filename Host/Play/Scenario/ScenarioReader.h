#pragma once

#include <string_view>

#include "Host/Play/Scenario/Scenario.h"
#include "Host/Play/Scenario/ScenarioError.h"

namespace vel::host {

/// Reads a scenario from its JSON text and checks all of it; throws a ScenarioError at the first
/// thing that is wrong.
[[nodiscard]] Scenario readScenario(std::string_view text);

}  // namespace vel::host
