// Functions that append compact JSON to a text.
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
/// Writes NaN and the infinities as the strings "nan", "inf" and "-inf", because JSON has only
/// finite numbers.
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

/// A JSON object that is being appended to `text`. The destructor writes the closing brace. The
/// members are in the order of the calls.
class JsonObject : private NonCopyable {
 public:
  explicit JsonObject(std::string& text) : text_(text) { text_ += '{'; }
  ~JsonObject() { text_ += '}'; }

  template <class Value>
  JsonObject& member(std::string_view name, const Value& value) {
    writeJson(beginMember(name), value);
    return *this;
  }
  /// Writes the name of a member. The caller must append the value to the returned text.
  std::string& beginMember(std::string_view name);

 private:
  std::string& text_;
  bool hasMembers_ = false;
};

}  // namespace vel::host
