#pragma once

#include <string>

namespace vel::host {

/// Returns the shortest decimal number that reads back as the same double.
[[nodiscard]] std::string shortestDecimal(double number);

}  // namespace vel::host
