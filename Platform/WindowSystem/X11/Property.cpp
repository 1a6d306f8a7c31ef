#include "Platform/WindowSystem/X11/Property.h"

#include <cstring>

namespace vel::x11 {

std::vector<std::uint32_t> Property::numbers() const {
  std::vector<std::uint32_t> elements(format == 32 ? bytes.size() / sizeof(std::uint32_t) : 0);
  if (!elements.empty()) {
    std::memcpy(elements.data(), bytes.data(), elements.size() * sizeof(std::uint32_t));
  }
  return elements;
}

Property Property::ofNumbers(xcb_atom_t type, std::span<const std::uint32_t> numbers) {
  const auto bytes = std::as_bytes(numbers);
  Property property{.type = type, .format = 32, .bytes = std::vector<std::uint8_t>(bytes.size())};
  if (!bytes.empty()) {
    std::memcpy(property.bytes.data(), bytes.data(), bytes.size());
  }
  return property;
}

Property Property::ofText(xcb_atom_t type, std::string_view text) {
  return {.type = type, .format = 8, .bytes = {text.begin(), text.end()}};
}

}  // namespace vel::x11
