#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <optional>

#include "Platform/Foundation/Geometry.h"

namespace vel::x11 {

/// How colours are written into the pixels of a visual.
class PixelFormat {
 public:
  /// Of the screen's visual with that id and the depth of the window that uses it.
  PixelFormat(const xcb_screen_t& screen, xcb_visualid_t visual, std::uint8_t depth);

  [[nodiscard]] std::uint32_t pixel(CGColor color) const;
  /// Which bits of a pixel are red, green and blue; none where pixels are numbers in a table.
  [[nodiscard]] std::optional<std::array<std::uint32_t, 3>> masks() const;

 private:
  const xcb_screen_t& screen_;
  const xcb_visualtype_t* visual_ = nullptr;
  std::uint32_t depthMask_;
};

}  // namespace vel::x11
