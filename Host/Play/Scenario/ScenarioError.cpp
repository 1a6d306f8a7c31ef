#include "Host/Play/Scenario/ScenarioError.h"

#include <cstdio>

namespace vel::host {

ScenarioError::ScenarioError(const std::string& jsonPointer, std::string_view expectedValue)
    : std::runtime_error(
          (jsonPointer.empty() ? "\"\" (the document)" : escapeControlCharacters(jsonPointer)) +
          ": expected " + escapeControlCharacters(expectedValue)) {}

std::string escapeControlCharacters(std::string_view text) {
  std::string result;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x20 || code == 0x7f) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", code);
      result += escaped;
    } else {
      result += character;
    }
  }
  return result;
}

}  // namespace vel::host
