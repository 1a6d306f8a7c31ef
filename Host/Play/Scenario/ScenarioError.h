#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace vel::host {

/// Thrown if a JSON document is not a valid scenario. `what` returns one line.
class ScenarioError : public std::runtime_error {
 public:
  /// `jsonPointer` is a JSON pointer to the invalid value. An empty pointer means the whole
  /// document. `expectedValue` describes a valid value.
  ScenarioError(const std::string& jsonPointer, std::string_view expectedValue);
};

/// Escapes each control character of the text as \u00XX. The result is a single line.
[[nodiscard]] std::string escapeControlCharacters(std::string_view text);

}  // namespace vel::host
