#pragma once

#include "Host/Play/Scenario/JsonValue.h"
#include "Platform/Foundation/NSDictionary.h"

namespace vel::host {

/// A request's parameters: an object, or null for none. Strings and numbers keep their kind; any
/// other value becomes an object that is neither.
[[nodiscard]] Strong<NSDictionary> readRequestParameters(const JsonValue& value);

}  // namespace vel::host
