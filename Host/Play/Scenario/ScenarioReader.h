#pragma once

#include <string_view>

#include "Host/Play/Scenario/Scenario.h"
#include "Host/Play/Scenario/ScenarioError.h"

namespace vel::host {

/// Parses and checks a scenario in JSON. Throws a ScenarioError for the first error.
[[nodiscard]] Scenario readScenario(std::string_view text);

}  // namespace vel::host
