#pragma once

#include <xcb/render.h>

#include <array>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/RenderExtension.h"

namespace vel::x11 {

/// The spinning indicator: twelve spokes whose shade goes round once a second. It is drawn into a
/// window of its size and becomes that window's background, so that the server itself shows it
/// again wherever it has been covered.
class Spinner {
 public:
  static constexpr unsigned kSpokes = 12;
  static constexpr Nanoseconds kTimeForSpoke = kNanosecondsPerSecond / kSpokes;

  Spinner(Connection& connection, const RenderExtension& render, xcb_render_pictformat_t format,
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
