#pragma once

#include <string_view>

namespace vel::fuzz {

/// The expected result of `NSString::floatValue`, computed in a slow and simple way: tries the
/// prefixes one by one, and finds the nearest float by comparing integers of any size. Rounds ties
/// to even.
[[nodiscard]] float slowFloatValue(std::string_view text);

}  // namespace vel::fuzz
