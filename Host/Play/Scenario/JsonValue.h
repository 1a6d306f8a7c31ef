// Reads the values of a JSON document. A value that is not as expected throws a ScenarioError.
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

/// A value of the document, or a member that the document leaves out. Does not own the document.
/// The functions that return a value throw a ScenarioError if the value has another type, is out of
/// range or is missing. `expected` says in the error what the value should be.
class JsonValue {
 public:
  using Pointer = nlohmann::json::json_pointer;

  /// `json` is null if the value is missing; `place` is its place in the document.
  JsonValue(const nlohmann::json* json, Pointer place) : json_(json), place_(std::move(place)) {}

  [[nodiscard]] bool isPresent() const { return json_ != nullptr; }
  [[nodiscard]] bool isNull() const { return isPresent() && json_->is_null(); }
  [[nodiscard]] const Pointer& place() const { return place_; }
  /// Throws a ScenarioError for this value.
  [[noreturn]] void refuse(std::string_view expected) const;

  [[nodiscard]] bool boolean() const;
  [[nodiscard]] std::string text(std::string_view expected = "a string") const;
  [[nodiscard]] std::optional<std::string> textOrNull(
      std::string_view expected = "a string or null") const;
  [[nodiscard]] double number() const;
  /// A number, or one of the strings "nan", "inf" and "-inf".
  [[nodiscard]] double numberOrWord() const;
  [[nodiscard]] std::int64_t integer(std::int64_t minimum, std::int64_t maximum) const;
  [[nodiscard]] std::uint64_t unsigned64() const;
  /// The elements of an array.
  [[nodiscard]] std::vector<JsonValue> elements(std::string_view expected) const;
  /// The entry of the table whose name is this string.
  template <class Value, std::size_t Size>
  [[nodiscard]] const NamedValue<Value>& entryOf(const NamedValue<Value> (&table)[Size]) const;
  /// The value in the table whose name is this string.
  template <class Value, std::size_t Size>
  [[nodiscard]] Value oneOf(const NamedValue<Value> (&table)[Size]) const {
    return entryOf(table).value;
  }

  /// The value itself, which must be present.
  [[nodiscard]] const nlohmann::json& json() const { return *json_; }

 private:
  const nlohmann::json* json_;
  Pointer place_;
};

/// The members of one object. The caller reads each member that it knows and then calls
/// `refuseUnknown`.
class JsonMembers {
 public:
  /// Throws a ScenarioError if the value is not an object.
  JsonMembers(JsonValue object, std::string_view expected);

  /// The value of the member, which may be missing.
  [[nodiscard]] JsonValue operator[](std::string_view name);

  /// Reads the member into `target` if the member is present, for example:
  /// `members.readInto(broker, "broker", &JsonValue::boolean)`.
  template <class Target, class Reader>
  void readInto(Target& target, std::string_view name, Reader reader) {
    if (const JsonValue value = (*this)[name]; value.isPresent()) {
      target = std::invoke(reader, value);
    }
  }
  /// Reads the member into `target` if the member is present. It must be a name in the table.
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

/// Returns `one of "a", "b"`, or `"a"` for a single name.
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
