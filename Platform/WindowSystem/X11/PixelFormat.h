#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <optional>

#include "Platform/Foundation/Geometry.h"

namespace vel::x11 {

/// Converts colours to pixel values of one visual.
class PixelFormat {
 public:
  /// `depth` is the depth of the window that uses the visual.
  PixelFormat(const xcb_screen_t& screen, xcb_visualid_t visual, std::uint8_t depth);

  [[nodiscard]] std::uint32_t pixel(CGColor color) const;
  /// The bits of a pixel value that are red, green and blue. No value if pixel values are indices
  /// of a colour map.
  [[nodiscard]] std::optional<std::array<std::uint32_t, 3>> masks() const;

 private:
  const xcb_screen_t& screen_;
  const xcb_visualtype_t* visual_ = nullptr;
  std::uint32_t depthMask_;
};

}  // namespace vel::x11
