#pragma once

#include <string>

namespace vel::host {

/// Returns the shortest decimal text that converts back to exactly `number`.
[[nodiscard]] std::string shortestDecimal(double number);

}  // namespace vel::host
