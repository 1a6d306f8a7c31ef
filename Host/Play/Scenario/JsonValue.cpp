#include "Host/Play/Scenario/JsonValue.h"

#include <algorithm>
#include <limits>

namespace vel::host {

void JsonValue::throwInvalid(std::string_view expectedValue) const {
  throw ScenarioError(pointer_.to_string(),
                      std::string(expectedValue) + (isPresent() ? "" : ", which is missing"));
}

bool JsonValue::boolean() const {
  if (!isPresent() || !json_->is_boolean()) {
    throwInvalid("true or false");
  }
  return json_->get<bool>();
}

std::string JsonValue::string(std::string_view expectedValue) const {
  if (!isPresent() || !json_->is_string()) {
    throwInvalid(expectedValue);
  }
  return json_->get<std::string>();
}

std::optional<std::string> JsonValue::stringOrNull(std::string_view expectedValue) const {
  if (isNull()) {
    return std::nullopt;
  }
  return string(expectedValue);
}

double JsonValue::number() const {
  if (!isPresent() || !json_->is_number()) {
    throwInvalid("a number");
  }
  return json_->get<double>();
}

double JsonValue::numberOrNonFinite() const {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  static constexpr NamedValue<double> kNonFiniteNumbers[] = {
      {"nan", std::numeric_limits<double>::quiet_NaN()},
      {"inf", kInfinity},
      {"-inf", -kInfinity},
  };
  if (isPresent() && json_->is_number()) {
    return number();
  }
  for (const NamedValue<double>& entry : kNonFiniteNumbers) {
    if (isPresent() && *json_ == entry.name) {
      return entry.value;
    }
  }
  throwInvalid(R"(a number, "nan", "inf" or "-inf")");
}

std::int64_t JsonValue::integer(std::int64_t minimum, std::int64_t maximum) const {
  if (isPresent() && json_->is_number_integer()) {
    const auto number = json_->get<std::int64_t>();
    // An unsigned number beyond the signed range becomes negative in the conversion.
    const bool isInSignedRange = !json_->is_number_unsigned() || number >= 0;
    if (isInSignedRange && number >= minimum && number <= maximum) {
      return number;
    }
  }
  throwInvalid("an integer from " + std::to_string(minimum) + " to " + std::to_string(maximum));
}

std::uint64_t JsonValue::unsigned64() const {
  if (!isPresent() || !json_->is_number_unsigned()) {
    throwInvalid("an integer from 0 to 18446744073709551615");
  }
  return json_->get<std::uint64_t>();
}

std::vector<JsonValue> JsonValue::elements(std::string_view expectedValue) const {
  if (!isPresent() || !json_->is_array()) {
    throwInvalid(expectedValue);
  }
  std::vector<JsonValue> values;
  for (std::size_t index = 0; index < json_->size(); ++index) {
    values.emplace_back(&(*json_)[index], pointer_ / index);
  }
  return values;
}

JsonMembers::JsonMembers(JsonValue object, std::string_view expectedValue)
    : object_(std::move(object)) {
  if (!object_.isPresent() || !object_.json().is_object()) {
    object_.throwInvalid(expectedValue);
  }
}

JsonValue JsonMembers::operator[](std::string_view name) {
  requestedNames_.push_back(name);
  const auto member = object_.json().find(name);
  return {member == object_.json().end() ? nullptr : &*member,
          object_.pointer() / std::string(name)};
}

void JsonMembers::rejectUnknownMembers() const {
  for (const auto& [name, value] : object_.json().items()) {
    if (std::ranges::find(requestedNames_, name) == requestedNames_.end()) {
      throw ScenarioError((object_.pointer() / name).to_string(),
                          "a known member: " + describeChoices(requestedNames_));
    }
  }
}

std::string describeChoices(const std::vector<std::string_view>& names) {
  std::string text = names.size() == 1 ? "" : "one of ";
  for (std::size_t index = 0; index < names.size(); ++index) {
    text += (index == 0 ? "\"" : ", \"") + std::string(names[index]) + "\"";
  }
  return text;
}

}  // namespace vel::host
