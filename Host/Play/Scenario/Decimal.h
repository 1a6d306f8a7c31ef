#pragma once

#include <string>

namespace vel::host {

/// Returns the shortest decimal number whose conversion to a double gives `number`.
[[nodiscard]] std::string shortestDecimal(double number);

}  // namespace vel::host
