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

  /// Returns the value of an opaque pixel with this colour. If the visual is neither TrueColor nor
  /// DirectColor, the pixel is white for a light colour and black for a dark colour.
  [[nodiscard]] std::uint32_t pixel(CGColor color) const;
  /// The masks of the red, green and blue bits of a pixel value. No value if the visual is neither
  /// TrueColor nor DirectColor.
  [[nodiscard]] std::optional<std::array<std::uint32_t, 3>> masks() const;

 private:
  const xcb_screen_t& screen_;
  const xcb_visualtype_t* visual_ = nullptr;
  std::uint32_t depthMask_;  // the lowest `depth` bits are set
};

}  // namespace vel::x11
