#include "Fuzz/SlowNumber.h"

#include <algorithm>
#include <bit>
#include <compare>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace vel::fuzz {

namespace {

// A nonnegative integer of any size.
class Natural {
 public:
  explicit Natural(std::uint32_t value) : digits_{value} {}

  Natural& multiplyAdd(std::uint32_t factor, std::uint32_t summand) {
    std::uint64_t carry = summand;
    for (std::uint32_t& digit : digits_) {
      carry += std::uint64_t{digit} * factor;
      digit = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    if (carry > 0) {
      digits_.push_back(static_cast<std::uint32_t>(carry));
    }
    return *this;
  }
  // Does nothing if the exponent is negative.
  Natural& multiplyByPower(std::uint32_t base, int exponent) {
    for (; exponent > 0; --exponent) {
      multiplyAdd(base, 0);
    }
    return *this;
  }

  std::strong_ordering operator<=>(const Natural& other) const {
    for (std::size_t index = std::max(digits_.size(), other.digits_.size()); index-- > 0;) {
      if (const auto order = digitAt(index) <=> other.digitAt(index); std::is_neq(order)) {
        return order;
      }
    }
    return std::strong_ordering::equal;
  }

 private:
  [[nodiscard]] std::uint32_t digitAt(std::size_t index) const {
    return index < digits_.size() ? digits_[index] : 0;
  }
  std::vector<std::uint32_t> digits_;  // in base 2^32, least significant first
};

bool isDigits(std::string_view text) {
  return std::ranges::all_of(text, [](char digit) { return digit >= '0' && digit <= '9'; });
}

std::string_view withoutSign(std::string_view text) {
  return text.starts_with('+') || text.starts_with('-') ? text.substr(1) : text;
}

struct SplitText {
  std::string_view textBefore;
  bool hasSeparator;
  std::string_view textAfter;
};
// Splits the text at its first character that `separators` contains. If the text has no such
// character, `textBefore` is the whole text.
SplitText splitAt(std::string_view text, std::string_view separators) {
  const std::size_t index = text.find_first_of(separators);
  return index == std::string_view::npos
             ? SplitText{text, false, {}}
             : SplitText{text.substr(0, index), true, text.substr(index + 1)};
}

bool isDecimalNumber(std::string_view text) {
  const auto [mantissa, hasExponent, exponent] = splitAt(withoutSign(text), "eE");
  const auto [whole, hasPoint, fraction] = splitAt(mantissa, ".");
  const std::string_view exponentDigits = withoutSign(exponent);
  return isDigits(whole) && isDigits(fraction) && !(whole.empty() && fraction.empty()) &&
         (!hasExponent || (isDigits(exponentDigits) && !exponentDigits.empty()));
}

int readExponent(std::string_view text) {
  constexpr int kMaxExponent = 100'000'000;  // no input has so many digits
  int exponent = 0;
  for (const char digit : withoutSign(text)) {
    exponent = std::min(exponent * 10 + (digit - '0'), kMaxExponent);
  }
  return text.starts_with('-') ? -exponent : exponent;
}

// The nonnegative number `digits` * 10^`exponent`.
struct Decimal {
  std::string digits;
  int exponent;

  // Compares this number with `mantissa` * 2^`power`. A negative exponent or power multiplies
  // the other side instead, so both sides are integers.
  [[nodiscard]] std::strong_ordering compare(std::uint32_t mantissa, int power) const {
    Natural thisSide(0);
    for (const char digit : digits) {
      thisSide.multiplyAdd(10, static_cast<std::uint32_t>(digit - '0'));
    }
    thisSide.multiplyByPower(10, exponent).multiplyByPower(2, -power);
    Natural otherSide(mantissa);
    otherSide.multiplyByPower(10, -exponent).multiplyByPower(2, power);
    return thisSide <=> otherSide;
  }
};

// The bits of a nonnegative float, as an integer. These integers have the same order as the floats.
// Infinity follows the largest finite float.
struct FloatBits {
  static constexpr std::uint32_t kInfinity = 0x7f800000;
  static constexpr int kMinPower = -149;

  std::uint32_t bits;
  [[nodiscard]] std::uint32_t mantissa() const {
    const std::uint32_t fraction = bits & 0x7fffff;
    return bits >> 23 == 0 ? fraction : fraction | 0x800000;
  }
  [[nodiscard]] int power() const {
    return kMinPower + std::max(static_cast<int>(bits >> 23) - 1, 0);
  }
};

float nearestFloat(const Decimal& number) {
  // After the loop, `low` has the bits of the largest float that is not above the number.
  std::uint32_t low = 0;
  std::uint32_t high = FloatBits::kInfinity;
  while (high - low > 1) {
    const FloatBits middle{low + (high - low) / 2};
    (std::is_lt(number.compare(middle.mantissa(), middle.power())) ? high : low) = middle.bits;
  }
  // The midpoint between two adjacent floats needs one more bit: its mantissa is 2 * mantissa + 1.
  const FloatBits lowerFloat{low};
  const auto order = number.compare(2 * lowerFloat.mantissa() + 1, lowerFloat.power() - 1);
  const bool roundsUp = std::is_gt(order) || (std::is_eq(order) && lowerFloat.mantissa() % 2 == 1);
  return std::bit_cast<float>(roundsUp ? low + 1 : low);
}

float magnitude(std::string_view number) {
  const auto [mantissa, hasExponent, exponentText] = splitAt(withoutSign(number), "eE");
  const auto [whole, hasPoint, fraction] = splitAt(mantissa, ".");
  std::string digits = std::string(whole) + std::string(fraction);
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
  const int exponent = readExponent(exponentText) - static_cast<int>(fraction.size());
  const int decimalMagnitude =
      exponent + static_cast<int>(digits.size());  // the number is less than 10^decimalMagnitude
  if (digits.empty() || decimalMagnitude < -50) {
    return 0;
  }
  if (decimalMagnitude > 50) {
    return std::numeric_limits<float>::infinity();
  }
  return nearestFloat({digits, exponent});
}

}  // namespace

float slowFloatValue(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
  text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
  while (!text.empty() && !isDecimalNumber(text)) {
    text.remove_suffix(1);
  }
  const float value = magnitude(text);
  return text.starts_with('-') ? -value : value;
}

}  // namespace vel::fuzz
