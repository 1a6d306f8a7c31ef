#include "Platform/Foundation/NSString.h"

#include <algorithm>

#include "Platform/Foundation/NearestFloat.h"

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
  const float value = nearestFloat(number);
  return isNegative ? -value : value;
}

}  // namespace vel
