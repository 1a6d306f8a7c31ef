#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

namespace vel::host {

/// Objects and arrays may stand in each other this deep.
inline constexpr std::size_t kDeepestJson = 64;

/// Reads one JSON document in UTF-8. Besides what JSON forbids, a member that stands twice in one
/// object, deeper nesting than `kDeepestJson` and a number beyond a double's range are refused with
/// a ScenarioError.
[[nodiscard]] nlohmann::json parseStrictJson(std::string_view text);

}  // namespace vel::host
