#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace vel::host {

/// Thrown if a text is not a scenario. `what` is one line: the place and what was expected there.
class ScenarioError : public std::runtime_error {
 public:
  /// `place` is a JSON pointer; an empty pointer means the whole document.
  ScenarioError(const std::string& place, std::string_view expected);
};

/// Returns the text with its control characters written as \u00XX, so that it is a single line.
[[nodiscard]] std::string inOneLine(std::string_view text);

}  // namespace vel::host
