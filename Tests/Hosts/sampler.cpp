// Samples what the screen shows at nine points of a window until its standard input ends.
//
// usage: hosts-sampler WINDOW BACKDROP [MICROSECONDS]
//
// BACKDROP is the colour of the screen behind the window. Each output line describes one frame:
//
// - the time of CLOCK_MONOTONIC in nanoseconds
// - the window's state: V viewable, U not viewable, D destroyed
// - a mask of the points that are not white
// - a mask of the points that have the colour BACKDROP
// - the colour of the first point that is not white
// - the window's position and size on the screen
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string_view>
#include <vector>

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint32_t kColorBits = 0xFFFFFF;
constexpr int kPointsPerSide = 3;
constexpr int kPoints = kPointsPerSide * kPointsPerSide;
constexpr int kDefaultInterval = 2000;  // microseconds

struct Free {
  void operator()(void* memory) const { std::free(memory); }  // NOLINT(cppcoreguidelines-no-malloc)
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

struct Rect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Rect&) const = default;
};

struct Point {
  int x = 0;
  int y = 0;
};

long long nanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

class Sampler {
 public:
  Sampler(xcb_connection_t* x, xcb_window_t window, std::uint32_t backdrop)
      : x_(x),
        window_(window),
        backdrop_(backdrop),
        screen_(xcb_setup_roots_iterator(xcb_get_setup(x)).data),
        frameExtents_(atom("_GTK_FRAME_EXTENTS")) {}

  /// Prints one frame. The server grab guarantees that the colours belong to the printed position.
  void sample() {
    xcb_grab_server(x_);
    bool isCurrent = sampleAt(place_);
    // The window has moved since the last frame: read the points of its current position.
    for (int tries = 0; !isCurrent && tries < 3; ++tries) {
      isCurrent = sampleAt(place_);
    }
    xcb_ungrab_server(x_);
    xcb_flush(x_);
    std::printf("%lld %c %x %x %06x %d %d %d %d\n", nanoseconds(), state_, otherPoints_,
                backdropPoints_, firstOther_, place_.x, place_.y, place_.width, place_.height);
  }

 private:
  xcb_atom_t atom(std::string_view name) {
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        x_, xcb_intern_atom(x_, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  /// The corners, the middles of the edges and the centre of the part of the window that is on the
  /// screen. The shadow that the program draws around its window is not included.
  [[nodiscard]] std::vector<Point> points(Rect place) const {
    const int left = std::max(place.x + extents_[0], 0);
    const int top = std::max(place.y + extents_[2], 0);
    const int right =
        std::min<int>(place.x + place.width - extents_[1], screen_->width_in_pixels) - 1;
    const int bottom =
        std::min<int>(place.y + place.height - extents_[3], screen_->height_in_pixels) - 1;
    std::vector<Point> result;
    if (right < left || bottom < top) {
      return result;
    }
    for (int index = 0; index < kPoints; ++index) {
      result.push_back({left + (right - left) * (index % kPointsPerSide) / 2,
                        top + (bottom - top) * (index / kPointsPerSide) / 2});
    }
    return result;
  }

  /// Reads the window's state and the points of `place` in one round trip, and updates `place_` and
  /// `extents_`. Returns false if the window's position, size or shadow differs from the values
  /// that were used for the points.
  bool sampleAt(Rect place) {
    const auto attributes = xcb_get_window_attributes(x_, window_);
    const auto geometry = xcb_get_geometry(x_, window_);
    const auto translation = xcb_translate_coordinates(x_, window_, screen_->root, 0, 0);
    const auto extents = xcb_get_property(x_, 0, window_, frameExtents_, XCB_ATOM_CARDINAL, 0, 4);
    std::vector<xcb_get_image_cookie_t> images;
    for (const Point point : points(place)) {
      images.push_back(xcb_get_image(x_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root,
                                     static_cast<std::int16_t>(point.x),
                                     static_cast<std::int16_t>(point.y), 1, 1, ~0U));
    }

    const Reply<xcb_get_window_attributes_reply_t> attributesReply(
        xcb_get_window_attributes_reply(x_, attributes, nullptr));
    const Reply<xcb_get_geometry_reply_t> geometryReply(
        xcb_get_geometry_reply(x_, geometry, nullptr));
    const Reply<xcb_translate_coordinates_reply_t> translationReply(
        xcb_translate_coordinates_reply(x_, translation, nullptr));
    const Reply<xcb_get_property_reply_t> extentsReply(
        xcb_get_property_reply(x_, extents, nullptr));
    otherPoints_ = 0;
    backdropPoints_ = 0;
    firstOther_ = kWhite;
    for (std::size_t index = 0; index < images.size(); ++index) {
      const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(x_, images[index], nullptr));
      std::uint32_t color = 0;
      if (image && xcb_get_image_data_length(image.get()) >= 4) {
        const std::uint8_t* data = xcb_get_image_data(image.get());
        color = (data[0] | data[1] << 8U | data[2] << 16U) & kColorBits;
      }
      if (color != kWhite) {
        firstOther_ = otherPoints_ == 0 ? color : firstOther_;
        otherPoints_ |= 1U << index;
        backdropPoints_ |= (color == backdrop_ ? 1U : 0U) << index;
      }
    }

    if (!attributesReply || !geometryReply || !translationReply) {
      state_ = 'D';
      return true;
    }
    state_ = attributesReply->map_state == XCB_MAP_STATE_VIEWABLE ? 'V' : 'U';
    std::array<int, 4> currentExtents{};
    if (extentsReply && xcb_get_property_value_length(extentsReply.get()) >= 16) {
      const auto* values =
          static_cast<const std::uint32_t*>(xcb_get_property_value(extentsReply.get()));
      std::copy_n(values, currentExtents.size(), currentExtents.begin());
    }
    const Rect current{translationReply->dst_x, translationReply->dst_y, geometryReply->width,
                       geometryReply->height};
    const bool isCurrent = current == place && currentExtents == extents_;
    place_ = current;
    extents_ = currentExtents;
    return isCurrent;
  }

  xcb_connection_t* x_;
  xcb_window_t window_;
  std::uint32_t backdrop_;
  xcb_screen_t* screen_;
  xcb_atom_t frameExtents_;
  Rect place_;
  std::array<int, 4> extents_{};  // left, right, top, bottom
  char state_ = 'U';
  std::uint32_t otherPoints_ = 0;
  std::uint32_t backdropPoints_ = 0;
  std::uint32_t firstOther_ = kWhite;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: hosts-sampler WINDOW BACKDROP [MICROSECONDS]\n", stderr);
    return 2;
  }
  const auto window = static_cast<xcb_window_t>(std::strtoul(argv[1], nullptr, 0));
  const long interval = argc > 3 ? std::strtol(argv[3], nullptr, 10) : kDefaultInterval;
  xcb_connection_t* const x = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(x) != 0) {
    std::fputs("hosts-sampler: no display\n", stderr);
    return 1;
  }
  const auto backdrop = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 16));
  Sampler sampler(x, window, backdrop);
  pollfd input{STDIN_FILENO, POLLIN, 0};
  const timespec wait{0, interval * 1000};
  bool isFirst = true;
  while (xcb_connection_has_error(x) == 0) {
    sampler.sample();
    if (isFirst) {
      std::fflush(stdout);
      isFirst = false;
    }
    if (ppoll(&input, 1, &wait, nullptr) > 0) {
      break;
    }
  }
  std::fflush(stdout);
  xcb_disconnect(x);
  return 0;
}
