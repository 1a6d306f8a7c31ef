#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

namespace vel::host {

/// The maximum depth to which objects and arrays may be nested.
inline constexpr std::size_t kMaximumJsonDepth = 64;

/// Parses a JSON document in UTF-8. Throws a ScenarioError if the text is not valid JSON, if an
/// object has two members with the same name, if a number is beyond the range of a double, or if
/// the nesting is deeper than `kMaximumJsonDepth`.
[[nodiscard]] nlohmann::json parseStrictJson(std::string_view text);

}  // namespace vel::host
