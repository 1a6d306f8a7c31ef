#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// An immutable string in UTF-8.
class VEL_EXPORT NSString final : public Class<NSString, "NSString"> {
 public:
  explicit NSString(std::string text) : text_(std::move(text)) {}

  static Strong<NSString> stringWithUTF8String(std::string_view text) {
    return make<NSString>(std::string(text));
  }

  /// The bytes of the string. The view is valid as long as this object exists.
  [[nodiscard]] std::string_view UTF8String() const { return text_; }
  /// The length of the string in bytes.
  [[nodiscard]] std::size_t length() const { return text_.size(); }
  /// Compares byte by byte.
  [[nodiscard]] bool isEqualToString(std::string_view other) const { return text_ == other; }
  [[nodiscard]] bool isEqual(const NSObjectProtocol* other) const override;

  /// The decimal number at the start of the string, rounded to single precision. White space may
  /// precede the number. The number may have a sign, a point and a decimal exponent. Returns 0 if
  /// there is no such number, for example in "nan" or "inf". Returns plus or minus infinity
  /// if the number's magnitude is too large. The locale has no effect.
  [[nodiscard]] float floatValue() const;

 private:
  std::string text_;
};

}  // namespace vel
