#pragma once

#include <string_view>

namespace vel::fuzz {

/// The expected result of `NSString::floatValue`, computed in a slow and simple way. Tries
/// each prefix of the text, the longest first. Finds the nearest float with integer arithmetic of
/// any size. Rounds ties to even.
[[nodiscard]] float slowFloatValue(std::string_view text);

}  // namespace vel::fuzz
