#pragma once

#include <string_view>

namespace vel {

/// Returns the float that is nearest to an unsigned decimal number such as "12.5e3". Returns
/// infinity if the number is too large, and 0 if the number is too small. Does not depend on the
/// locale. `number` must not contain other text. Any thread may call this function. CMake chooses
/// the implementation: the file in the folder `FromChars` if the standard library has
/// `std::from_chars` for floats, else the file in `Posix`.
[[nodiscard]] float nearestFloat(std::string_view number);

}  // namespace vel
