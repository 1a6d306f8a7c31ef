// Reading a JSON document by expectation: what is not as expected is refused with its place.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Play/Scenario/NamedValue.h"
#include "Host/Play/Scenario/ScenarioError.h"

namespace vel::host {

/// A value of the document, or the lack of one where a member is left out. It borrows the document.
/// Each reading throws a ScenarioError that says what was expected where the value is of another
/// kind, out of range or left out.
class JsonValue {
 public:
  JsonValue(const nlohmann::json* json, JsonPlace place) : json_(json), place_(std::move(place)) {}

  [[nodiscard]] bool isGiven() const { return json_ != nullptr; }
  [[nodiscard]] bool isNull() const { return isGiven() && json_->is_null(); }
  [[nodiscard]] const JsonPlace& place() const { return place_; }
  [[noreturn]] void refuse(std::string_view expected) const;

  [[nodiscard]] bool boolean() const;
  [[nodiscard]] std::string text(std::string_view expected = "a string") const;
  [[nodiscard]] std::optional<std::string> textOrNull(
      std::string_view expected = "a string or null") const;
  [[nodiscard]] double number() const;
  /// A number, or one of the strings "nan", "inf" and "-inf".
  [[nodiscard]] double numberOrWord() const;
  [[nodiscard]] std::int64_t integer(std::int64_t least, std::int64_t greatest) const;
  [[nodiscard]] std::uint64_t unsigned64() const;
  /// The elements of an array.
  [[nodiscard]] std::vector<JsonValue> elements(std::string_view expected) const;
  /// The table's entry for the string, and its value.
  template <class Value, std::size_t Size>
  [[nodiscard]] const NamedValue<Value>& entryOf(const NamedValue<Value> (&table)[Size]) const;
  template <class Value, std::size_t Size>
  [[nodiscard]] Value oneOf(const NamedValue<Value> (&table)[Size]) const {
    return entryOf(table).value;
  }

  /// For kinds that are told apart by the reader.
  [[nodiscard]] const nlohmann::json& json() const { return *json_; }

 private:
  const nlohmann::json* json_;
  JsonPlace place_;
};

/// The members of one object. Each is asked for by its name; those that nobody asked for are
/// refused in the end.
class JsonMembers {
 public:
  JsonMembers(JsonValue object, std::string_view expected);

  /// The member's value, which may be left out.
  [[nodiscard]] JsonValue operator[](std::string_view name);

  /// Reads the member, if it is given, into `target`: `members.take("broker", broker,
  /// &JsonValue::boolean)`.
  template <class Target, class Reading>
  void take(std::string_view name, Target& target, Reading reading) {
    if (const JsonValue value = (*this)[name]; value.isGiven()) {
      target = std::invoke(reading, value);
    }
  }
  /// The same for a member that holds a word of the table.
  template <class Target, class Value, std::size_t Size>
  void takeOneOf(std::string_view name, Target& target, const NamedValue<Value> (&table)[Size]) {
    if (const JsonValue value = (*this)[name]; value.isGiven()) {
      target = value.oneOf(table);
    }
  }

  /// Throws a ScenarioError for the first member that has not been asked for.
  void refuseOthers() const;

 private:
  JsonValue object_;
  std::vector<std::string_view> asked_;
};

/// "one of "a", "b"", or just ""a"" where there is no choice.
[[nodiscard]] std::string oneOfThese(const std::vector<std::string_view>& names);

template <class Value, std::size_t Size>
const NamedValue<Value>& JsonValue::entryOf(const NamedValue<Value> (&table)[Size]) const {
  std::vector<std::string_view> names;
  for (const NamedValue<Value>& entry : table) {
    if (isGiven() && json_->is_string() && json_->get_ref<const std::string&>() == entry.name) {
      return entry;
    }
    names.push_back(entry.name);
  }
  refuse(oneOfThese(names));
}

}  // namespace vel::host
