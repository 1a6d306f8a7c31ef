#pragma once

#include <string_view>

namespace vel::fuzz {

/// Returns the expected result of `NSString::floatValue`, computed in a slow and simple way. Skips
/// leading white space and reads the longest prefix that is a decimal number. Computes the nearest
/// float with integers of unlimited size. Rounds ties to even.
[[nodiscard]] float slowFloatValue(std::string_view text);

}  // namespace vel::fuzz
