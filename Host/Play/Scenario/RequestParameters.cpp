#include "Host/Play/Scenario/RequestParameters.h"

#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSString.h"

namespace vel::host {

namespace {

using Json = nlohmann::json;

/// Stands for what is neither a text nor a number nor nothing: a truth value, a list, an object.
class OtherValue final : public Class<OtherValue, "OtherValue"> {};

Strong<NSObjectProtocol> objectFor(const Json& value) {
  switch (value.type()) {
    case Json::value_t::string:
      return NSString::stringWithUTF8String(value.get_ref<const std::string&>());
    case Json::value_t::number_integer:
      return NSNumber::numberWithInteger(value.get<std::int64_t>());
    case Json::value_t::number_unsigned:
      return NSNumber::numberWithUnsignedInteger(value.get<std::uint64_t>());
    case Json::value_t::number_float:
      return NSNumber::numberWithDouble(value.get<double>());
    case Json::value_t::null:
      return NSNull::null();
    default:
      return make<OtherValue>();
  }
}

}  // namespace

Strong<NSDictionary> readRequestParameters(const JsonValue& value) {
  if (value.isNull()) {
    return nullptr;
  }
  if (!value.json().is_object()) {
    value.refuse("an object with the request's parameters, or null");
  }
  NSDictionary::Entries entries;
  for (const auto& [name, parameter] : value.json().items()) {
    entries.emplace(name, objectFor(parameter));
  }
  return NSDictionary::dictionaryWithEntries(std::move(entries));
}

}  // namespace vel::host
