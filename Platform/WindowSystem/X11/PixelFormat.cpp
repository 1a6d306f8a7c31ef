#include "Platform/WindowSystem/X11/PixelFormat.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace vel::x11 {

namespace {

// Scales `component`, a value from 0 to 1, to the bits of `mask`.
std::uint32_t maskedComponent(double component, std::uint32_t mask) {
  if (mask == 0) {
    return 0;
  }
  const int shift = std::countr_zero(mask);
  const double maximum = mask >> shift;
  return static_cast<std::uint32_t>(std::lround(std::clamp(component, 0.0, 1.0) * maximum))
         << shift;
}

}  // namespace

PixelFormat::PixelFormat(const xcb_screen_t& screen, xcb_visualid_t visual, std::uint8_t depth)
    : screen_(screen), depthMask_(depth < 32 ? (1U << depth) - 1 : ~0U) {
  for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0;
       xcb_depth_next(&depths)) {
    for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
         xcb_visualtype_next(&visuals)) {
      if (visuals.data->visual_id == visual) {
        visual_ = visuals.data;
      }
    }
  }
}

std::optional<std::array<std::uint32_t, 3>> PixelFormat::masks() const {
  if (visual_ == nullptr || (visual_->_class != XCB_VISUAL_CLASS_TRUE_COLOR &&
                             visual_->_class != XCB_VISUAL_CLASS_DIRECT_COLOR)) {
    return std::nullopt;
  }
  return std::array{visual_->red_mask, visual_->green_mask, visual_->blue_mask};
}

std::uint32_t PixelFormat::pixel(CGColor color) const {
  const auto channelMasks = masks();
  if (!channelMasks) {
    const bool isLight = color.red + color.green + color.blue > 1.5;
    return isLight ? screen_.white_pixel : screen_.black_pixel;
  }
  const auto& [red, green, blue] = *channelMasks;
  // The bits that no colour component uses may contain the opacity. Setting these bits makes the
  // pixel opaque.
  return maskedComponent(color.red, red) | maskedComponent(color.green, green) |
         maskedComponent(color.blue, blue) | (depthMask_ & ~(red | green | blue));
}

}  // namespace vel::x11
