// Writing compact JSON, member by member in the order given.
#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vel::host {

/// The shortest decimal that reads back as the same double.
[[nodiscard]] std::string shortestDecimal(double number);

void writeJson(std::string& text, std::same_as<bool> auto value) {
  text += value ? "true" : "false";
}
template <std::integral Number>
  requires(!std::same_as<Number, bool>)
void writeJson(std::string& text, Number value) {
  text += std::to_string(value);
}
/// What is no JSON number becomes "nan", "inf" or "-inf".
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

/// An object being written at the end of a text; its end closes it.
class JsonObject {
 public:
  explicit JsonObject(std::string& text) : text_(text) { text_ += '{'; }
  JsonObject(const JsonObject&) = delete;
  JsonObject& operator=(const JsonObject&) = delete;
  ~JsonObject() { text_ += '}'; }

  template <class Value>
  JsonObject& member(std::string_view name, const Value& value) {
    writeJson(nameMember(name), value);
    return *this;
  }
  /// Begins a member; its value has to be written to the text next.
  std::string& nameMember(std::string_view name);

 private:
  std::string& text_;
  bool hasMembers_ = false;
};

}  // namespace vel::host
