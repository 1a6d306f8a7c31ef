#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vel::host {

/// Where something stands in a JSON document: a JSON pointer, empty for the document itself.
class JsonPlace {
 public:
  [[nodiscard]] JsonPlace member(std::string_view name) const;
  [[nodiscard]] JsonPlace element(std::size_t index) const;
  [[nodiscard]] const std::string& pointer() const { return pointer_; }

 private:
  std::string pointer_;
};

/// Why a text is no scenario; `what` is one line: the place and what was expected there.
class ScenarioError : public std::runtime_error {
 public:
  ScenarioError(const JsonPlace& place, std::string_view expected);
};

/// The text with its control characters written as \u00XX, so that it stays in one line.
[[nodiscard]] std::string inOneLine(std::string_view text);

}  // namespace vel::host
