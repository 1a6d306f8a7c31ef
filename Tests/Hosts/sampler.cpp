// Repeatedly reads the colours on the screen at nine points of the visible part of a window.
// The program ends when its standard input ends or contains data.
//
// usage: hosts-sampler WINDOW BACKDROP [MICROSECONDS]
//
// BACKDROP is the colour of the screen behind the window: RRGGBB in hexadecimal. MICROSECONDS is
// the pause between two samples.
//
// A mask of points has one bit for each point, row by row. Bit 0 is the top left point. Each output
// line describes one sample:
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
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>
#include <vector>

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint32_t kColorBits = 0xFFFFFF;
constexpr int kPointsPerSide = 3;
constexpr int kPointCount = kPointsPerSide * kPointsPerSide;
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

/// The widths, in pixels, of the left, right, top and bottom border of a window.
using Extents = std::array<int, 4>;

Rect shrink(Rect rect, Extents extents) {
  return {rect.x + extents[0], rect.y + extents[2], rect.width - extents[0] - extents[1],
          rect.height - extents[2] - extents[3]};
}

Rect intersect(Rect first, Rect second) {
  const int x = std::max(first.x, second.x);
  const int y = std::max(first.y, second.y);
  const int right = std::min(first.x + first.width, second.x + second.width);
  const int bottom = std::min(first.y + first.height, second.y + second.height);
  return {x, y, right - x, bottom - y};
}

long long readClock() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

class Sampler {
 public:
  Sampler(xcb_connection_t* connection, xcb_window_t window, std::uint32_t backdrop)
      : connection_(connection),
        window_(window),
        backdrop_(backdrop),
        screen_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data),
        shadowExtentsAtom_(atom("_GTK_FRAME_EXTENTS")),
        frameExtentsAtom_(atom("_NET_FRAME_EXTENTS")) {}

  /// Prints one sample. The server grab guarantees that the window does not move between the
  /// reading of its position and the reading of the colours.
  void sample() {
    xcb_grab_server(connection_);
    bool isAreaCurrent = sampleAt(visibleArea_);
    // If `visibleArea_` was out of date, `sampleAt` has updated it.
    for (int tries = 0; !isAreaCurrent && tries < 3; ++tries) {
      isAreaCurrent = sampleAt(visibleArea_);
    }
    xcb_ungrab_server(connection_);
    xcb_flush(connection_);
    std::printf("%lld %c %x %x %06x %d %d %d %d\n", readClock(), state_, nonWhitePoints_,
                backdropPoints_, firstNonWhiteColor_, windowArea_.x, windowArea_.y,
                windowArea_.width, windowArea_.height);
  }

 private:
  xcb_atom_t atom(std::string_view name) {
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  /// The corners, the middles of the edges and the centre of `area`.
  [[nodiscard]] static std::vector<Point> samplePoints(Rect area) {
    std::vector<Point> points;
    if (area.width <= 0 || area.height <= 0) {
      return points;
    }
    for (int index = 0; index < kPointCount; ++index) {
      points.push_back({area.x + (area.width - 1) * (index % kPointsPerSide) / 2,
                        area.y + (area.height - 1) * (index / kPointsPerSide) / 2});
    }
    return points;
  }

  /// Returns the window's ancestors below the root window, from the parent up.
  std::vector<xcb_window_t> readAncestors() {
    std::vector<xcb_window_t> ancestors;
    for (xcb_window_t window = window_;;) {
      const Reply<xcb_query_tree_reply_t> tree(
          xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
      if (!tree || tree->parent == screen_->root || tree->parent == XCB_WINDOW_NONE) {
        return ancestors;
      }
      window = tree->parent;
      ancestors.push_back(window);
    }
  }

  /// Returns the part of `area` that lies on the screen and inside each ancestor of the window.
  /// Leaves out the shadow that the window's owner draws.
  Rect clip(Rect area) {
    area = shrink(area, shadowExtents_);
    area = intersect(area, {0, 0, screen_->width_in_pixels, screen_->height_in_pixels});
    for (const xcb_window_t ancestor : readAncestors()) {
      const auto geometry = xcb_get_geometry(connection_, ancestor);
      const auto translation =
          xcb_translate_coordinates(connection_, ancestor, screen_->root, 0, 0);
      const Reply<xcb_get_geometry_reply_t> geometryReply(
          xcb_get_geometry_reply(connection_, geometry, nullptr));
      const Reply<xcb_translate_coordinates_reply_t> translationReply(
          xcb_translate_coordinates_reply(connection_, translation, nullptr));
      if (geometryReply && translationReply) {
        const Rect ancestorArea{translationReply->dst_x, translationReply->dst_y,
                                geometryReply->width, geometryReply->height};
        // While a window manager resizes a window, the window can be larger than the window
        // manager's frame. The frame's borders then cover a part of the window.
        if (intersect(area, ancestorArea) != area) {
          area = intersect(area, shrink(ancestorArea, frameExtents_));
        }
      }
    }
    return area;
  }

  xcb_get_property_cookie_t requestExtents(xcb_atom_t atom) {
    return xcb_get_property(connection_, 0, window_, atom, XCB_ATOM_CARDINAL, 0, 4);
  }

  /// Returns zeros if the property does not exist.
  Extents readExtents(xcb_get_property_cookie_t cookie) {
    const Reply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection_, cookie, nullptr));
    Extents extents{};
    if (reply && xcb_get_property_value_length(reply.get()) >= 16) {
      const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
      std::copy_n(values, extents.size(), extents.begin());
    }
    return extents;
  }

  /// Reads the points of `sampledArea` and the state of the window into the members. Returns true
  /// if `sampledArea` is the window's current visible area, or if the window is destroyed.
  bool sampleAt(Rect sampledArea) {
    const auto attributes = xcb_get_window_attributes(connection_, window_);
    const auto geometry = xcb_get_geometry(connection_, window_);
    const auto translation = xcb_translate_coordinates(connection_, window_, screen_->root, 0, 0);
    const auto shadowExtents = requestExtents(shadowExtentsAtom_);
    const auto frameExtents = requestExtents(frameExtentsAtom_);
    std::vector<xcb_get_image_cookie_t> images;
    for (const Point point : samplePoints(sampledArea)) {
      images.push_back(xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root,
                                     static_cast<std::int16_t>(point.x),
                                     static_cast<std::int16_t>(point.y), 1, 1, ~0U));
    }

    const Reply<xcb_get_window_attributes_reply_t> attributesReply(
        xcb_get_window_attributes_reply(connection_, attributes, nullptr));
    const Reply<xcb_get_geometry_reply_t> geometryReply(
        xcb_get_geometry_reply(connection_, geometry, nullptr));
    const Reply<xcb_translate_coordinates_reply_t> translationReply(
        xcb_translate_coordinates_reply(connection_, translation, nullptr));
    shadowExtents_ = readExtents(shadowExtents);
    frameExtents_ = readExtents(frameExtents);
    nonWhitePoints_ = 0;
    backdropPoints_ = 0;
    firstNonWhiteColor_ = kWhite;
    for (std::size_t index = 0; index < images.size(); ++index) {
      const Reply<xcb_get_image_reply_t> image(
          xcb_get_image_reply(connection_, images[index], nullptr));
      std::uint32_t color = 0;
      if (image && xcb_get_image_data_length(image.get()) >= 4) {
        std::memcpy(&color, xcb_get_image_data(image.get()), sizeof color);
        color &= kColorBits;
      }
      if (color != kWhite) {
        firstNonWhiteColor_ = nonWhitePoints_ == 0 ? color : firstNonWhiteColor_;
        nonWhitePoints_ |= 1U << index;
        backdropPoints_ |= (color == backdrop_ ? 1U : 0U) << index;
      }
    }

    if (!attributesReply || !geometryReply || !translationReply) {
      state_ = 'D';
      return true;
    }
    state_ = attributesReply->map_state == XCB_MAP_STATE_VIEWABLE ? 'V' : 'U';
    windowArea_ = {translationReply->dst_x, translationReply->dst_y, geometryReply->width,
                   geometryReply->height};
    visibleArea_ = clip(windowArea_);
    return visibleArea_ == sampledArea;
  }

  xcb_connection_t* connection_;
  xcb_window_t window_;
  std::uint32_t backdrop_;
  xcb_screen_t* screen_;
  xcb_atom_t shadowExtentsAtom_;
  xcb_atom_t frameExtentsAtom_;
  Rect windowArea_;
  Rect visibleArea_;
  Extents shadowExtents_{};  // of the shadow that the window's owner draws
  Extents frameExtents_{};   // of the window manager's frame
  char state_ = 'U';
  std::uint32_t nonWhitePoints_ = 0;
  std::uint32_t backdropPoints_ = 0;
  std::uint32_t firstNonWhiteColor_ = kWhite;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: hosts-sampler WINDOW BACKDROP [MICROSECONDS]\n", stderr);
    return 2;
  }
  const auto window = static_cast<xcb_window_t>(std::strtoul(argv[1], nullptr, 0));
  const long interval = argc > 3 ? std::strtol(argv[3], nullptr, 10) : kDefaultInterval;
  xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(connection) != 0) {
    std::fputs("hosts-sampler: no display\n", stderr);
    return 1;
  }
  const auto backdrop = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 16));
  Sampler sampler(connection, window, backdrop);
  pollfd input{STDIN_FILENO, POLLIN, 0};
  const timespec pause{0, interval * 1000};
  bool isFirst = true;
  while (xcb_connection_has_error(connection) == 0) {
    sampler.sample();
    // trial.py waits for the first line before it covers the window.
    if (isFirst) {
      std::fflush(stdout);
      isFirst = false;
    }
    if (ppoll(&input, 1, &pause, nullptr) > 0) {
      break;
    }
  }
  std::fflush(stdout);
  xcb_disconnect(connection);
  return 0;
}
