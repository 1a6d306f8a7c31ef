#pragma once

#include <string_view>

namespace vel::fuzz {

/// What NSString's `floatValue` has to answer, found in another way, slow and plain: the prefixes
/// are tried one by one, and the float nearest to the decimal number is found by comparing whole
/// numbers of any size, half-way cases going to the even one.
[[nodiscard]] float slowFloatValue(std::string_view text);

}  // namespace vel::fuzz
