#include "Platform/Foundation/NearestFloat.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace vel {

namespace {

// `number` must have no sign and be outside the range of `float`. Returns true if it is too large,
// and false if it is too close to 0. `std::from_chars` does not distinguish these two cases.
bool isTooLarge(std::string_view number) {
  const std::size_t mantissaEnd = std::min(number.find_first_of("eE"), number.size());
  const std::string_view mantissa = number.substr(0, mantissaEnd);
  const std::size_t firstNonzeroDigit = mantissa.find_first_of("123456789");
  if (firstNonzeroDigit == std::string_view::npos) {
    return false;
  }
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  // Positive if the first nonzero digit is before the point, negative if it is after the point.
  const auto pointOffset =
      static_cast<long long>(point) - static_cast<long long>(firstNonzeroDigit);
  std::string_view exponent = number.substr(std::min(mantissaEnd + 1, number.size()));
  const bool isExponentNegative = exponent.starts_with('-');
  exponent.remove_prefix(exponent.starts_with('+') || isExponentNegative ? 1 : 0);
  long long exponentMagnitude = 0;
  if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), exponentMagnitude).ec ==
      std::errc::result_out_of_range) {
    return !isExponentNegative;
  }
  // A number out of range is too large if `pointOffset` plus the exponent is positive. The sum
  // could overflow, so this code does not compute it.
  return pointOffset > (isExponentNegative ? exponentMagnitude : -exponentMagnitude);
}

}  // namespace

float nearestFloat(std::string_view number) {
  float value = 0;
  if (std::from_chars(number.data(), number.data() + number.size(), value).ec ==
      std::errc::result_out_of_range) {
    value = isTooLarge(number) ? std::numeric_limits<float>::infinity() : 0;
  }
  return value;
}

}  // namespace vel
