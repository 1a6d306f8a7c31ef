#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// An immutable text in UTF-8.
class VEL_EXPORT NSString final : public Class<NSString, "NSString"> {
 public:
  explicit NSString(std::string text) : text_(std::move(text)) {}

  static Strong<NSString> stringWithUTF8String(std::string_view text) {
    return make<NSString>(std::string(text));
  }

  /// The text; valid as long as the string.
  [[nodiscard]] std::string_view UTF8String() const { return text_; }
  /// The length in bytes of UTF-8.
  [[nodiscard]] std::size_t length() const { return text_.size(); }
  /// Byte-wise equality: case counts.
  [[nodiscard]] bool isEqualToString(std::string_view other) const { return text_ == other; }
  [[nodiscard]] bool isEqual(const NSObjectProtocol* other) const override;

  /// The number that the text starts with: leading white space skipped, then the longest prefix
  /// that is a decimal number (sign, digits, point, decimal exponent), rounded to single precision.
  /// 0 when there is none; out of range plus or minus infinity, too small 0. Words ("nan", "inf")
  /// and hexadecimal are not numbers; the locale never matters.
  [[nodiscard]] float floatValue() const;

 private:
  std::string text_;
};

}  // namespace vel
