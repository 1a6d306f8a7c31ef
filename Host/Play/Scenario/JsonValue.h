// Classes that read and check the values of a JSON document.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Play/Scenario/NamedValue.h"
#include "Host/Play/Scenario/ScenarioError.h"

namespace vel::host {

/// A path to a value in a JSON document, such as /steps/3/at.
using JsonPointer = nlohmann::json::json_pointer;

/// A value in a JSON document, or a missing member of an object. Does not own the document.
///
/// A function that reads the value throws a ScenarioError if the value is missing, has the wrong
/// type or is out of range. The error message contains the parameter `expectedValue`, a description
/// of a valid value.
class JsonValue {
 public:
  /// `json` is a null pointer if the value is missing. `pointer` is the path to the value.
  JsonValue(const nlohmann::json* json, JsonPointer pointer)
      : json_(json), pointer_(std::move(pointer)) {}

  [[nodiscard]] bool isPresent() const { return json_ != nullptr; }
  /// True for the JSON value `null`. False if the value is missing.
  [[nodiscard]] bool isNull() const { return isPresent() && json_->is_null(); }
  [[nodiscard]] const JsonPointer& pointer() const { return pointer_; }
  /// Throws a ScenarioError whose message contains the path to this value and `expectedValue`.
  [[noreturn]] void throwInvalid(std::string_view expectedValue) const;

  [[nodiscard]] bool boolean() const;
  [[nodiscard]] std::string string(std::string_view expectedValue = "a string") const;
  /// Returns `std::nullopt` for the JSON value `null`.
  [[nodiscard]] std::optional<std::string> stringOrNull(
      std::string_view expectedValue = "a string or null") const;
  [[nodiscard]] double number() const;
  /// Reads a number or one of the strings "nan", "inf" and "-inf".
  [[nodiscard]] double numberOrNonFinite() const;
  [[nodiscard]] std::int64_t integer(std::int64_t minimum, std::int64_t maximum) const;
  [[nodiscard]] std::uint64_t unsigned64() const;
  /// Returns the elements of an array.
  [[nodiscard]] std::vector<JsonValue> elements(std::string_view expectedValue) const;
  /// Reads a string and returns the entry of `table` that has this string as its name. Throws a
  /// ScenarioError if no entry has this name.
  template <class Value, std::size_t Size>
  [[nodiscard]] const NamedValue<Value>& entryIn(const NamedValue<Value> (&table)[Size]) const;
  /// Returns the value of the entry that `entryIn` returns.
  template <class Value, std::size_t Size>
  [[nodiscard]] Value valueIn(const NamedValue<Value> (&table)[Size]) const {
    return entryIn(table).value;
  }

  /// Returns the parsed value. The value must be present.
  [[nodiscard]] const nlohmann::json& json() const { return *json_; }

 private:
  const nlohmann::json* json_;
  JsonPointer pointer_;
};

/// The members of a JSON object. The caller reads the members that it supports and then calls
/// `rejectUnknownMembers`.
class JsonMembers {
 public:
  /// Throws a ScenarioError if `object` is not a JSON object. The error message contains
  /// `expectedValue`, a description of a valid value.
  JsonMembers(JsonValue object, std::string_view expectedValue);

  /// Returns the value of the member `name`. The value may be missing.
  [[nodiscard]] JsonValue operator[](std::string_view name);

  /// Reads the member `name` into `target` if the member is present, for example:
  /// `members.readInto(broker, "broker", &JsonValue::boolean)`.
  template <class Target, class Reader>
  void readInto(Target& target, std::string_view name, Reader reader) {
    if (const JsonValue value = (*this)[name]; value.isPresent()) {
      target = std::invoke(reader, value);
    }
  }
  /// Reads the member `name` into `target` with `JsonValue::valueIn` if the member is present.
  template <class Target, class Value, std::size_t Size>
  void readInto(Target& target, std::string_view name, const NamedValue<Value> (&table)[Size]) {
    if (const JsonValue value = (*this)[name]; value.isPresent()) {
      target = value.valueIn(table);
    }
  }

  /// Throws a ScenarioError if the object has a member that the caller has not read.
  void rejectUnknownMembers() const;

 private:
  JsonValue object_;
  std::vector<std::string_view> requestedNames_;
};

/// Returns the names as text for an error message: `one of "a", "b"`. Returns `"a"` for a single
/// name.
[[nodiscard]] std::string describeChoices(const std::vector<std::string_view>& names);

template <class Value, std::size_t Size>
const NamedValue<Value>& JsonValue::entryIn(const NamedValue<Value> (&table)[Size]) const {
  std::vector<std::string_view> names;
  for (const NamedValue<Value>& entry : table) {
    if (isPresent() && json_->is_string() && json_->get_ref<const std::string&>() == entry.name) {
      return entry;
    }
    names.push_back(entry.name);
  }
  throwInvalid(describeChoices(names));
}

}  // namespace vel::host
