#include <png.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <span>
#include <stdexcept>

#include "Tests/Support/X11/XClient.h"

namespace vel::test {

namespace {

Picture readPicture(xcb_connection_t* connection, xcb_drawable_t drawable, PixelRect area) {
  const x11::XcbPointer<xcb_get_image_reply_t> image(xcb_get_image_reply(
      connection,
      xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable,
                    static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y),
                    static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height),
                    ~0U),
      nullptr));
  if (image == nullptr) {
    throw std::runtime_error("the server returns no picture");
  }
  const std::span bytes(xcb_get_image_data(image.get()),
                        static_cast<std::size_t>(xcb_get_image_data_length(image.get())));
  Picture picture{area.width, area.height, std::vector<std::uint32_t>(bytes.size() / 4)};
  std::memcpy(picture.pixels.data(), bytes.data(), picture.pixels.size() * 4);
  return picture;
}

// Removes the pointer, which a compositor draws, from the lower right corner of the screen.
// `XClient::click` leaves the pointer in this corner. Fills the corner with the colours to its
// left. `picture` shows the rectangle `area` of the screen. Does nothing if `area` contains no
// pixels to the left of the corner.
void paintOverPointer(Picture& picture, PixelRect area, PixelRect compositorScreen) {
  constexpr int kPointerSide = 24;
  const int left = compositorScreen.width - kPointerSide - area.x;
  const int top = compositorScreen.height - kPointerSide - area.y;
  for (int y = std::max(top, 0); left > 0 && y < picture.height; ++y) {
    for (int x = left; x < picture.width; ++x) {
      const auto row = static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width);
      picture.pixels.at(row + static_cast<std::size_t>(x)) = picture.at(left - 1, y);
    }
  }
}

}  // namespace

std::uint32_t Picture::at(int x, int y) const {
  return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x));
}

std::map<std::uint32_t, int> Picture::colors() const {
  std::map<std::uint32_t, int> counts;
  for (const std::uint32_t pixel : pixels) {
    ++counts[pixel];
  }
  return counts;
}

bool Picture::isAll(std::uint32_t color) const {
  return !pixels.empty() &&
         std::ranges::all_of(pixels, [color](std::uint32_t pixel) { return pixel == color; });
}

PixelRect Picture::boundsOfPixelsExcept(std::uint32_t color) const {
  int left = width;
  int top = height;
  int right = 0;
  int bottom = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (at(x, y) != color) {
        left = std::min(left, x);
        right = std::max(right, x + 1);
        top = std::min(top, y);
        bottom = std::max(bottom, y + 1);
      }
    }
  }
  return right == 0 ? PixelRect{} : PixelRect{left, top, right - left, bottom - top};
}

Picture Picture::readPng(const std::string& file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, file.c_str()) == 0) {
    throw std::runtime_error("cannot read " + file);
  }
  image.format = PNG_FORMAT_RGB;
  std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr) == 0) {
    throw std::runtime_error("cannot read " + file);
  }
  Picture picture{static_cast<int>(image.width), static_cast<int>(image.height), {}};
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    picture.pixels.push_back(static_cast<std::uint32_t>(bytes[i] << 16U | bytes[i + 1] << 8U) |
                             bytes[i + 2]);
  }
  return picture;
}

void Picture::save(const std::string& name) const {
  const std::filesystem::path folder("build/pictures");
  std::filesystem::create_directories(folder);
  std::vector<std::uint8_t> bytes;
  bytes.reserve(pixels.size() * 3);
  for (const std::uint32_t pixel : pixels) {
    for (const unsigned shift : {16U, 8U, 0U}) {
      bytes.push_back(static_cast<std::uint8_t>(pixel >> shift & 0xFF));
    }
  }
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_RGB;
  const std::string file = (folder / (name + ".png")).string();
  if (png_image_write_to_file(&image, file.c_str(), 0, bytes.data(), 0, nullptr) == 0) {
    throw std::runtime_error("cannot write " + file);
  }
}

Picture XClient::screenPicture(xcb_window_t window) const {
  return screenPicture(areaOnScreen(window));
}

Picture XClient::screenPicture(PixelRect area) const {
  // Under Xwayland, the compositor is a client of another X server, the outer server.
  // `outerClient_` is a client of the outer server too. It is null if there is no compositor.
  const PixelRect capturedScreen =
      outerClient_ != nullptr ? outerClient_->screenArea() : screenArea();
  // An X server returns no picture of an area that is partly outside its screen. A compositor may
  // place a window partly outside the screen. A window manager may enlarge a window beyond the
  // screen before it moves the window.
  const bool isOnScreen = area.x >= 0 && area.y >= 0 && area.width > 0 && area.height > 0 &&
                          area.x + area.width <= capturedScreen.width &&
                          area.y + area.height <= capturedScreen.height;
  if (!isOnScreen) {
    return {};
  }
  if (outerClient_ != nullptr) {
    Picture picture = outerClient_->screenPicture(area);
    const PixelRect compositorScreen = screenArea();  // Xwayland's screen
    paintOverPointer(picture, area, compositorScreen);
    return picture;
  }
  Picture picture = readPicture(connection_, root_, area);
  for (std::uint32_t& pixel : picture.pixels) {
    pixel &= 0xFFFFFF;  // clears the unused byte
  }
  return picture;
}

Picture XClient::windowPicture(xcb_window_t window) const {
  const PixelRect area = areaOnScreen(window);
  return readPicture(connection_, window, {0, 0, area.width, area.height});
}

}  // namespace vel::test
