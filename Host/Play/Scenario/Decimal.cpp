#include "Host/Play/Scenario/Decimal.h"

#include <charconv>

namespace vel::host {

std::string shortestDecimal(double number) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

}  // namespace vel::host
