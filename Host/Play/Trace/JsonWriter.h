// Writes compact JSON. The members of an object keep the order in which they are written.
#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::host {

void writeJson(std::string& text, std::same_as<bool> auto value) {
  text += value ? "true" : "false";
}
template <std::integral Number>
  requires(!std::same_as<Number, bool>)
void writeJson(std::string& text, Number value) {
  text += std::to_string(value);
}
/// Writes NaN and the infinities as the strings "nan", "inf" and "-inf", because JSON has no such
/// numbers.
void writeJson(std::string& text, double value);
void writeJson(std::string& text, std::string_view value);
void writeJson(std::string& text, std::nullptr_t value);

template <class Value>
void writeJson(std::string& text, const std::optional<Value>& value) {
  if (value) {
    writeJson(text, *value);
  } else {
    writeJson(text, nullptr);
  }
}
template <class Value>
void writeJson(std::string& text, const std::vector<Value>& values) {
  text += '[';
  for (const Value& value : values) {
    text += &value == values.data() ? "" : ",";
    writeJson(text, value);
  }
  text += ']';
}

/// Appends a JSON object to `text`. The constructor writes the opening brace, and the destructor
/// writes the closing brace.
class JsonObject : private NonCopyable {
 public:
  explicit JsonObject(std::string& text) : text_(text) { text_ += '{'; }
  ~JsonObject() { text_ += '}'; }

  template <class Value>
  JsonObject& member(std::string_view name, const Value& value) {
    writeJson(beginMember(name), value);
    return *this;
  }
  /// Writes the name of a member and returns the text, to which the caller must append the value.
  std::string& beginMember(std::string_view name);

 private:
  std::string& text_;
  bool hasMembers_ = false;
};

}  // namespace vel::host
