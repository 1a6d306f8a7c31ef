#include "Host/Play/Trace/JsonWriter.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "Host/Play/Scenario/Decimal.h"

namespace vel::host {

void writeJson(std::string& text, double value) {
  if (std::isnan(value)) {
    text += R"("nan")";
  } else if (std::isinf(value)) {
    text += value > 0 ? R"("inf")" : R"("-inf")";
  } else {
    text += shortestDecimal(value);
  }
}

void writeJson(std::string& text, std::string_view value) {
  using Json = nlohmann::json;
  // `replace` writes U+FFFD for invalid UTF-8. The default would throw an exception.
  text += Json(value).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void writeJson(std::string& text, std::nullptr_t /*value*/) { text += "null"; }

std::string& JsonObject::beginMember(std::string_view name) {
  if (hasMembers_) {
    text_ += ',';
  }
  hasMembers_ = true;
  writeJson(text_, name);
  return text_ += ':';
}

}  // namespace vel::host
