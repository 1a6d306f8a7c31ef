#pragma once

#include <xcb/render.h>

#include <array>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/RenderExtension.h"

namespace vel::x11 {

/// Draws a spinner in a window: twelve spokes with different shades. The spinner is the background
/// of the window, so the server repaints the spinner after an exposure. To animate the spinner,
/// call `draw` after each `kFrameInterval` with the index of the next spoke.
class Spinner final : public NonCopyable {
 public:
  static constexpr unsigned kSpokes = 12;
  /// The darkest spoke goes round once per second.
  static constexpr Nanoseconds kFrameInterval = kNanosecondsPerSecond / kSpokes;

  /// `window` is a square of `side` pixels. `format` and `depth` are the window's picture format
  /// and depth.
  Spinner(Connection& connection, const RenderExtension& render, xcb_render_pictformat_t format,
          xcb_window_t window, std::uint8_t depth, int side, CGColor background);
  ~Spinner();

  /// `darkestSpoke` is the index of a spoke: spoke 0 is at the top, spoke 3 on the right.
  void draw(unsigned darkestSpoke);

 private:
  void drawSpoke(unsigned spoke, xcb_render_picture_t shade);

  Connection& connection_;
  xcb_window_t window_;
  int side_;
  CGColor background_;
  xcb_render_pictformat_t maskFormat_;
  xcb_pixmap_t pixmap_;
  xcb_render_picture_t picture_;
  std::array<xcb_render_picture_t, kSpokes> shades_{};  // darkest first
};

}  // namespace vel::x11
