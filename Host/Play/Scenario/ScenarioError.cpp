#include "Host/Play/Scenario/ScenarioError.h"

#include <cstdio>

namespace vel::host {

JsonPlace JsonPlace::member(std::string_view name) const {
  JsonPlace place = *this;
  place.pointer_ += '/';
  for (const char character : name) {
    if (character == '~') {
      place.pointer_ += "~0";
    } else if (character == '/') {
      place.pointer_ += "~1";
    } else {
      place.pointer_ += character;
    }
  }
  return place;
}

JsonPlace JsonPlace::element(std::size_t index) const { return member(std::to_string(index)); }

ScenarioError::ScenarioError(const JsonPlace& place, std::string_view expected)
    : std::runtime_error(
          (place.pointer().empty() ? "\"\" (the document)" : inOneLine(place.pointer())) +
          ": expected " + inOneLine(expected)) {}

std::string inOneLine(std::string_view text) {
  std::string line;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x20 || code == 0x7f) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", code);
      line += escaped;
    } else {
      line += character;
    }
  }
  return line;
}

}  // namespace vel::host
