#pragma once

#include <string>
#include <string_view>

#include "Platform/Foundation/NSDictionary.h"

namespace vel {

/// A content request's parameters from the JSON object that a content service sends. Texts and
/// numbers become such; null, true, false, lists and objects become values that are neither. None,
/// with the reason in `error`, where the text is not one JSON object.
Strong<NSDictionary> parametersFromJson(std::string_view json, std::string& error);

}  // namespace vel
