// Looking at what is on the screen.
#include <algorithm>
#include <array>
#include <bit>
#include <span>

#include "Platform/WindowSystem/X11/PixelFormat.h"
#include "Platform/WindowSystem/X11/Requests.h"
#include "Platform/WindowSystem/X11/X11WindowSystem.h"

namespace vel {

using x11::PixelRect;
using x11::RequestBatch;
using x11::Window;

namespace {

// As all servers of today have them, whatever their depth; none of it is padding between rows.
constexpr std::size_t kBytesForPixel = 4;

PixelRect common(PixelRect one, PixelRect other) {
  const int left = std::max(one.x, other.x);
  const int top = std::max(one.y, other.y);
  return {left, top, std::min(one.x + one.width, other.x + other.width) - left,
          std::min(one.y + one.height, other.y + other.height) - top};
}

/// Red, green or blue in a pixel.
struct Channel {
  int shift;
  std::uint32_t greatest;

  explicit Channel(std::uint32_t mask)
      : shift(mask == 0 ? 0 : std::countr_zero(mask)), greatest(mask >> shift) {}
  [[nodiscard]] std::uint8_t of(std::uint32_t pixel) const {
    return static_cast<std::uint8_t>((pixel >> shift & greatest) * 255 / std::max(greatest, 1U));
  }
};

// Big pictures are gone through while the countdown runs: nothing is made anew for each pixel.
std::vector<std::uint8_t> componentsOf(std::span<const std::uint8_t> image, bool highestByteFirst,
                                       const std::array<std::uint32_t, 3>& masks) {
  const std::array channels{Channel(masks[0]), Channel(masks[1]), Channel(masks[2])};
  std::vector<std::uint8_t> components(image.size() / kBytesForPixel * channels.size());
  std::uint8_t* next = components.data();
  const std::uint8_t* const end = image.data() + image.size();
  for (const std::uint8_t* byte = image.data(); byte != end; byte += kBytesForPixel) {
    std::uint32_t pixel = 0;
    for (unsigned i = 0; i < kBytesForPixel; ++i) {
      pixel = pixel << 8U | byte[highestByteFirst ? i : kBytesForPixel - 1 - i];
    }
    *next++ = channels[0].of(pixel);
    *next++ = channels[1].of(pixel);
    *next++ = channels[2].of(pixel);
  }
  return components;
}

}  // namespace

std::optional<WindowPicture> X11WindowSystem::picture(WindowHandle window) {
  const Window* const seen = find(window);
  if (seen == nullptr || !seen->ordered || seen->miniaturized) {
    return std::nullopt;
  }
  const RequestBatch batch(*connection_);
  xcb_connection_t* const x = connection_->get();
  const xcb_screen_t& screen = connection_->screen();
  const auto size = connection_->waitForReply(
      xcb_get_geometry_reply, xcb_get_geometry(x, screen.root), "GetGeometry", screen.root);
  if (size == nullptr) {
    return std::nullopt;
  }
  const PixelRect place = common(seen->frame, {0, 0, size->width, size->height});
  const auto masks = x11::PixelFormat(screen, screen.root_visual, screen.root_depth).masks();
  if (place.width <= 0 || place.height <= 0 || !masks) {
    return std::nullopt;
  }
  const auto image = connection_->waitForReply(
      xcb_get_image_reply,
      xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, screen.root, static_cast<std::int16_t>(place.x),
                    static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
                    static_cast<std::uint16_t>(place.height), ~0U),
      "GetImage", screen.root);
  if (image == nullptr) {
    return std::nullopt;
  }
  const std::span bytes(xcb_get_image_data(image.get()),
                        static_cast<std::size_t>(xcb_get_image_data_length(image.get())));
  const auto pixels =
      static_cast<std::size_t>(place.width) * static_cast<std::size_t>(place.height);
  if (bytes.size() != pixels * kBytesForPixel) {
    return std::nullopt;
  }
  const bool highestByteFirst = xcb_get_setup(x)->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
  return WindowPicture{.width = place.width,
                       .height = place.height,
                       .pixels = componentsOf(bytes, highestByteFirst, *masks)};
}

}  // namespace vel
