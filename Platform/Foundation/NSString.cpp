#include "Platform/Foundation/NSString.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace vel {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

bool isDigit(char character) { return character >= '0' && character <= '9'; }

std::size_t countDigits(std::string_view text, std::size_t start) {
  std::size_t end = start;
  while (end < text.size() && isDigit(text[end])) {
    ++end;
  }
  return end - start;
}

// The length of the unsigned decimal number at the start of `text`. 0 if there is no number.
std::size_t decimalPrefixLength(std::string_view text) {
  std::size_t end = countDigits(text, 0);
  std::size_t digitCount = end;
  if (end < text.size() && text[end] == '.') {
    const std::size_t fractionDigitCount = countDigits(text, end + 1);
    digitCount += fractionDigitCount;
    end += 1 + fractionDigitCount;
  }
  if (digitCount == 0) {
    return 0;
  }
  if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
    std::size_t exponentStart = end + 1;
    if (exponentStart < text.size() && (text[exponentStart] == '+' || text[exponentStart] == '-')) {
      ++exponentStart;
    }
    if (const std::size_t count = countDigits(text, exponentStart); count > 0) {
      end = exponentStart + count;
    }
  }
  return end;
}

// `number` is out of a float's range. Returns true if it is too large, and false if it is too
// small. `std::from_chars` does not distinguish these two cases.
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
  const bool isNegative = exponent.starts_with('-');
  exponent.remove_prefix(exponent.starts_with('+') || isNegative ? 1 : 0);
  long long magnitude = 0;
  if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), magnitude).ec ==
      std::errc::result_out_of_range) {
    return !isNegative;
  }
  // The number is out of range, so it is too large exactly if its power of ten is positive.
  return pointOffset > (isNegative ? magnitude : -magnitude);
}

}  // namespace

bool NSString::isEqual(const NSObjectProtocol* other) const {
  const auto* string = dynamic_cast<const NSString*>(other);
  return string != nullptr && isEqualToString(string->text_);
}

float NSString::floatValue() const {
  std::string_view text = text_;
  text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
  const bool isNegative = text.starts_with('-');
  text.remove_prefix(text.starts_with('+') || isNegative ? 1 : 0);
  const std::string_view number = text.substr(0, decimalPrefixLength(text));
  if (number.empty()) {
    return 0;
  }
  float value = 0;
  if (std::from_chars(number.data(), number.data() + number.size(), value).ec ==
      std::errc::result_out_of_range) {
    value = isTooLarge(number) ? std::numeric_limits<float>::infinity() : 0;
  }
  return isNegative ? -value : value;
}

}  // namespace vel
