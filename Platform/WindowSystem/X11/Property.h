#pragma once

#include <xcb/xproto.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vel::x11 {

/// The type, format and bytes of a window's property.
struct Property {
  xcb_atom_t type = XCB_ATOM_NONE;
  /// Bits per element: 8, 16 or 32.
  std::uint8_t format = 8;
  std::vector<std::uint8_t> bytes;
  bool operator==(const Property&) const = default;

  /// The elements of a property of format 32; empty for another format.
  [[nodiscard]] std::vector<std::uint32_t> numbers() const;
  [[nodiscard]] std::string text() const { return {bytes.begin(), bytes.end()}; }
  /// A property of format 32.
  static Property ofNumbers(xcb_atom_t type, std::span<const std::uint32_t> numbers);
  /// A property of format 8.
  static Property ofText(xcb_atom_t type, std::string_view text);
};

}  // namespace vel::x11
