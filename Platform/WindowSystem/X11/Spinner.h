#pragma once

#include <xcb/render.h>

#include <array>
#include <map>
#include <optional>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

/// What the server's Render extension can draw with; asked for when it is first needed. Without it
/// covers have no indicator; the log says so once.
class Render {
 public:
  explicit Render(Connection& connection) : connection_(connection) {}

  /// The format of pictures in windows of a visual; none where the server cannot draw there.
  std::optional<xcb_render_pictformat_t> formatOf(xcb_visualid_t visual);
  /// The format of masks, eight bits of opacity.
  [[nodiscard]] xcb_render_pictformat_t mask() const { return mask_; }

 private:
  void ask();

  Connection& connection_;
  bool asked_ = false;
  xcb_render_pictformat_t mask_ = XCB_NONE;
  std::map<xcb_visualid_t, xcb_render_pictformat_t> formats_;
};

/// The spinning indicator: twelve spokes whose shade goes round once a second. It is drawn into a
/// window of its size and becomes that window's background, so that the server itself shows it
/// again wherever it has been covered.
class Spinner {
 public:
  static constexpr unsigned kSpokes = 12;
  static constexpr Nanoseconds kTimeForSpoke = kNanosecondsPerSecond / kSpokes;

  Spinner(Connection& connection, const Render& render, xcb_render_pictformat_t format,
          xcb_window_t window, std::uint8_t depth, int side, CGColor background);
  Spinner(const Spinner&) = delete;
  Spinner& operator=(const Spinner&) = delete;
  Spinner(Spinner&&) = delete;
  Spinner& operator=(Spinner&&) = delete;
  ~Spinner();

  /// Draws the picture with the darkest spoke at `position` (0 is at the top, 3 to the right).
  void draw(unsigned position);

 private:
  void drawSpoke(unsigned spoke, xcb_render_picture_t ink);

  Connection& connection_;
  xcb_window_t window_;
  int side_;
  CGColor background_;
  xcb_render_pictformat_t mask_;
  xcb_pixmap_t pixmap_;
  xcb_render_picture_t picture_;
  std::array<xcb_render_picture_t, kSpokes> inks_{};  // darkest first
};

}  // namespace vel::x11
