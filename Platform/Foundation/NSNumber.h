#pragma once

#include <cstdint>
#include <limits>
#include <variant>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// An immutable number.
class VEL_EXPORT NSNumber final : public Class<NSNumber, "NSNumber"> {
 public:
  using Value = std::variant<std::int64_t, std::uint64_t, double>;

  explicit NSNumber(Value value) : value_(value) {}

  static Strong<NSNumber> numberWithDouble(double value) { return make<NSNumber>(Value(value)); }
  static Strong<NSNumber> numberWithInteger(std::int64_t value) {
    return make<NSNumber>(Value(value));
  }
  static Strong<NSNumber> numberWithUnsignedInteger(std::uint64_t value) {
    return make<NSNumber>(Value(value));
  }

  /// Returns the number rounded to single precision. Returns plus or minus infinity if the number
  /// is out of range.
  [[nodiscard]] float floatValue() const {
    static_assert(std::numeric_limits<float>::is_iec559,
                  "a conversion that is out of range must give infinity");
    return std::visit([](auto value) { return static_cast<float>(value); }, value_);
  }

 private:
  Value value_;
};

}  // namespace vel
