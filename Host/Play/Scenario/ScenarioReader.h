#pragma once

#include <string_view>

#include "Host/Play/Scenario/Scenario.h"
#include "Host/Play/Scenario/ScenarioError.h"

namespace vel::host {

/// Reads a scenario from its JSON text and checks all of it. Throws a ScenarioError for the first
/// error.
[[nodiscard]] Scenario readScenario(std::string_view text);

}  // namespace vel::host
