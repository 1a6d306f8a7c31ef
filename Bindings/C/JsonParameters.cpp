#include "Bindings/C/JsonParameters.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSString.h"

namespace vel {

namespace {

using Json = nlohmann::json;

/// Reads the members of the outermost object; what lies deeper counts as one value of no use.
/// Nothing here is recursive, so no nesting is too deep.
class ParametersReader final : public nlohmann::json_sax<Json> {
 public:
  NSDictionary::Entries entries;
  std::string error;

  bool null() override { return add(NSNull::null()); }
  bool boolean(bool /*value*/) override { return add(NSNull::null()); }
  bool number_integer(std::int64_t value) override {
    return add(NSNumber::numberWithInteger(value));
  }
  bool number_unsigned(std::uint64_t value) override {
    return add(NSNumber::numberWithUnsignedInteger(value));
  }
  bool number_float(double value, const std::string& /*text*/) override {
    return add(NSNumber::numberWithDouble(value));
  }
  bool string(std::string& value) override { return add(NSString::stringWithUTF8String(value)); }
  bool binary(Json::binary_t& /*value*/) override { return add(NSNull::null()); }

  bool start_object(std::size_t /*count*/) override {
    ++depth_;
    return true;
  }
  bool end_object() override { return leave(); }
  bool start_array(std::size_t /*count*/) override {
    if (depth_ == 0) {
      return refuse("a list");
    }
    ++depth_;
    return true;
  }
  bool end_array() override { return leave(); }
  bool key(std::string& name) override {
    if (depth_ == 1) {
      key_ = name;
    }
    return true;
  }

  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*problem*/) override {
    error = "not JSON at byte " + std::to_string(position);
    return false;
  }

 private:
  bool add(Strong<NSObjectProtocol> value) {
    if (depth_ == 0) {
      return refuse("a single value");
    }
    if (depth_ == 1) {
      entries.insert_or_assign(key_, std::move(value));
    }
    return true;
  }

  bool leave() {
    --depth_;
    return depth_ != 1 || add(NSNull::null());
  }

  bool refuse(const std::string& found) {
    error = "the parameters are an object, not " + found;
    return false;
  }

  std::size_t depth_ = 0;
  std::string key_;
};

}  // namespace

Strong<NSDictionary> parametersFromJson(std::string_view json, std::string& error) {
  ParametersReader reader;
  if (!Json::sax_parse(json, &reader)) {
    error = std::move(reader.error);
    return nullptr;
  }
  return NSDictionary::dictionaryWithEntries(std::move(reader.entries));
}

}  // namespace vel
