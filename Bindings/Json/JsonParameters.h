// Converts JSON to the parameters of a content request.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "Platform/Foundation/NSDictionary.h"

namespace vel {

/// Returns the members of a JSON object as a dictionary. A string becomes an NSString and a number
/// an NSNumber. A boolean becomes the NSNumber 1 or 0. A null, an array or an object becomes an
/// NSNull. `object` must be a JSON object.
Strong<NSDictionary> parametersFromJson(const nlohmann::json& object);

/// Parses `text`, which must be one JSON object in UTF-8, and converts it like
/// `parametersFromJson`. If a name occurs twice, the last member counts. If `text` is not one JSON
/// object in UTF-8, returns null and stores the reason in `error`.
Strong<NSDictionary> parametersFromJsonText(std::string_view text, std::string& error);

}  // namespace vel
