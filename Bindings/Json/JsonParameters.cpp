#include "Bindings/Json/JsonParameters.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSString.h"

namespace vel {

namespace {

using Json = nlohmann::json;

Strong<NSObjectProtocol> objectFromJson(const Json& value) {
  switch (value.type()) {
    case Json::value_t::string:
      return NSString::stringWithUTF8String(value.get_ref<const std::string&>());
    case Json::value_t::boolean:
      return NSNumber::numberWithInteger(value.get<bool>() ? 1 : 0);
    case Json::value_t::number_integer:
      return NSNumber::numberWithInteger(value.get<std::int64_t>());
    case Json::value_t::number_unsigned:
      return NSNumber::numberWithUnsignedInteger(value.get<std::uint64_t>());
    case Json::value_t::number_float:
      return NSNumber::numberWithDouble(value.get<double>());
    default:
      return NSNull::null();
  }
}

}  // namespace

Strong<NSDictionary> parametersFromJson(const Json& object) {
  NSDictionary::Entries entries;
  for (const auto& [name, value] : object.items()) {
    entries.emplace(name, objectFromJson(value));
  }
  return NSDictionary::dictionaryWithEntries(std::move(entries));
}

Strong<NSDictionary> parametersFromJsonText(std::string_view text, std::string& error) {
  Json json;
  try {
    json = Json::parse(text);
  } catch (const Json::parse_error& exception) {
    error = "not JSON at byte " + std::to_string(exception.byte);
    return nullptr;
  } catch (const Json::out_of_range&) {
    error = "a number in the JSON is too large";
    return nullptr;
  }
  if (!json.is_object()) {
    error = std::string("the parameters must be an object, not ") +
            (json.is_array() ? "a list" : "a single value");
    return nullptr;
  }
  return parametersFromJson(json);
}

}  // namespace vel
