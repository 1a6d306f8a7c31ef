#include "Platform/WindowSystem/X11/WindowCapture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>

#include "Platform/WindowSystem/X11/PixelFormat.h"

namespace vel::x11 {

namespace {

// Current servers use 32 bits per pixel for depths 24 and 32, without padding between rows.
// WindowCapture does not support other layouts.
constexpr std::size_t kBytesPerPixel = 4;
constexpr std::uint32_t kAllPlanes = ~0U;

PixelRect intersection(PixelRect first, PixelRect second) {
  const int left = std::max(first.x, second.x);
  const int top = std::max(first.y, second.y);
  return {left, top, std::min(first.x + first.width, second.x + second.width) - left,
          std::min(first.y + first.height, second.y + second.height) - top};
}

/// The red, green or blue bits of a pixel.
struct Channel {
  int shift;
  std::uint32_t maximum;

  explicit Channel(std::uint32_t mask)
      : shift(mask == 0 ? 0 : std::countr_zero(mask)), maximum(mask >> shift) {}
  /// The channel's value in a pixel, scaled to 0 to 255.
  [[nodiscard]] std::uint8_t valueIn(std::uint32_t pixel) const {
    return static_cast<std::uint8_t>((pixel >> shift & maximum) * 255 / std::max(maximum, 1U));
  }
};

// Returns three bytes for each pixel: red, green and blue. `masks` contains the red mask, the green
// mask and the blue mask.
std::vector<std::uint8_t> colorBytesOf(std::span<const std::uint8_t> image, std::uint8_t byteOrder,
                                       const std::array<std::uint32_t, 3>& masks) {
  const bool isBigEndian = byteOrder == XCB_IMAGE_ORDER_MSB_FIRST;
  const std::array channels{Channel(masks[0]), Channel(masks[1]), Channel(masks[2])};
  std::vector<std::uint8_t> bytes(image.size() / kBytesPerPixel * channels.size());
  std::uint8_t* next = bytes.data();
  const std::uint8_t* const end = image.data() + image.size();
  // Growing `bytes` in this loop would be slow, and would delay the handling of events.
  for (const std::uint8_t* byte = image.data(); byte != end; byte += kBytesPerPixel) {
    std::uint32_t pixel = 0;
    for (unsigned i = 0; i < kBytesPerPixel; ++i) {
      pixel = pixel << 8U | byte[isBigEndian ? i : kBytesPerPixel - 1 - i];
    }
    *next++ = channels[0].valueIn(pixel);
    *next++ = channels[1].valueIn(pixel);
    *next++ = channels[2].valueIn(pixel);
  }
  return bytes;
}

}  // namespace

std::optional<WindowPicture> WindowCapture::capture(PixelRect frame) {
  xcb_connection_t* const xcb = connection_.get();
  const xcb_screen_t& screen = connection_.screen();
  const auto rootGeometry = connection_.waitForReply(
      xcb_get_geometry_reply, xcb_get_geometry(xcb, screen.root), "GetGeometry", screen.root);
  if (rootGeometry == nullptr) {
    return std::nullopt;
  }
  const PixelRect area = intersection(frame, {0, 0, rootGeometry->width, rootGeometry->height});
  const auto masks = PixelFormat(screen, screen.root_visual, screen.root_depth).masks();
  if (area.width <= 0 || area.height <= 0 || !masks) {
    return std::nullopt;
  }
  const auto image = connection_.waitForReply(
      xcb_get_image_reply,
      xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, screen.root, static_cast<std::int16_t>(area.x),
                    static_cast<std::int16_t>(area.y), static_cast<std::uint16_t>(area.width),
                    static_cast<std::uint16_t>(area.height), kAllPlanes),
      "GetImage", screen.root);
  if (image == nullptr) {
    return std::nullopt;
  }
  const std::span bytes(xcb_get_image_data(image.get()),
                        static_cast<std::size_t>(xcb_get_image_data_length(image.get())));
  const auto pixelCount =
      static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height);
  if (bytes.size() != pixelCount * kBytesPerPixel) {
    return std::nullopt;
  }
  return WindowPicture{.width = area.width,
                       .height = area.height,
                       .pixels = colorBytesOf(bytes, xcb_get_setup(xcb)->image_byte_order, *masks)};
}

}  // namespace vel::x11
