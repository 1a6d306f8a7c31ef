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

/// A value in a JSON document, or a missing member of an object. Does not own the document.
///
/// The functions from `boolean` to `oneOf` read the value. These functions throw a ScenarioError if
/// the value is missing, has the wrong type or is out of range. The parameter `expected` is a
/// description of a valid value for the error message.
class JsonValue {
 public:
  using Pointer = nlohmann::json::json_pointer;

  /// If `json` is a null pointer, the value is missing. `place` is the JSON pointer to the value.
  /// Error messages contain `place`.
  JsonValue(const nlohmann::json* json, Pointer place) : json_(json), place_(std::move(place)) {}

  [[nodiscard]] bool isPresent() const { return json_ != nullptr; }
  /// True for the JSON value `null`. False if the value is missing.
  [[nodiscard]] bool isNull() const { return isPresent() && json_->is_null(); }
  [[nodiscard]] const Pointer& place() const { return place_; }
  /// Throws a ScenarioError for this value. `expected` describes a valid value in the message.
  [[noreturn]] void refuse(std::string_view expected) const;

  [[nodiscard]] bool boolean() const;
  [[nodiscard]] std::string text(std::string_view expected = "a string") const;
  /// Returns `std::nullopt` for the JSON value `null`.
  [[nodiscard]] std::optional<std::string> textOrNull(
      std::string_view expected = "a string or null") const;
  [[nodiscard]] double number() const;
  /// Reads a number or one of the strings "nan", "inf" and "-inf".
  [[nodiscard]] double numberOrWord() const;
  [[nodiscard]] std::int64_t integer(std::int64_t minimum, std::int64_t maximum) const;
  [[nodiscard]] std::uint64_t unsigned64() const;
  /// Returns the elements of an array.
  [[nodiscard]] std::vector<JsonValue> elements(std::string_view expected) const;
  /// Finds the value, which must be a string, among the names in the table. Returns the entry with
  /// this name. Throws a ScenarioError if the table does not contain the name.
  template <class Value, std::size_t Size>
  [[nodiscard]] const NamedValue<Value>& entryOf(const NamedValue<Value> (&table)[Size]) const;
  /// Like `entryOf`, but returns only the value of the entry.
  template <class Value, std::size_t Size>
  [[nodiscard]] Value oneOf(const NamedValue<Value> (&table)[Size]) const {
    return entryOf(table).value;
  }

  /// Returns the parsed value. The value must be present.
  [[nodiscard]] const nlohmann::json& json() const { return *json_; }

 private:
  const nlohmann::json* json_;
  Pointer place_;
};

/// The members of a JSON object. The caller reads each known member and then calls `refuseUnknown`.
class JsonMembers {
 public:
  /// Throws a ScenarioError if `object` is not a JSON object. `expected` describes a valid value in
  /// the message.
  JsonMembers(JsonValue object, std::string_view expected);

  /// Returns the value of the member with this name. The value may be missing.
  [[nodiscard]] JsonValue operator[](std::string_view name);

  /// Reads the member into `target` if the member is present, for example:
  /// `members.readInto(broker, "broker", &JsonValue::boolean)`.
  template <class Target, class Reader>
  void readInto(Target& target, std::string_view name, Reader reader) {
    if (const JsonValue value = (*this)[name]; value.isPresent()) {
      target = std::invoke(reader, value);
    }
  }
  /// If the member is present, finds its string among the names in the table and stores the value
  /// of the entry in `target`. Throws a ScenarioError if the table does not contain the name.
  template <class Target, class Value, std::size_t Size>
  void readInto(Target& target, std::string_view name, const NamedValue<Value> (&table)[Size]) {
    if (const JsonValue value = (*this)[name]; value.isPresent()) {
      target = value.oneOf(table);
    }
  }

  /// Throws a ScenarioError for the first member that the caller has not read.
  void refuseUnknown() const;

 private:
  JsonValue object_;
  std::vector<std::string_view> knownNames_;
};

/// Lists the names for the message of an error: `one of "a", "b"`. Returns `"a"` for a single name.
[[nodiscard]] std::string oneOfNames(const std::vector<std::string_view>& names);

template <class Value, std::size_t Size>
const NamedValue<Value>& JsonValue::entryOf(const NamedValue<Value> (&table)[Size]) const {
  std::vector<std::string_view> names;
  for (const NamedValue<Value>& entry : table) {
    if (isPresent() && json_->is_string() && json_->get_ref<const std::string&>() == entry.name) {
      return entry;
    }
    names.push_back(entry.name);
  }
  refuse(oneOfNames(names));
}

}  // namespace vel::host
