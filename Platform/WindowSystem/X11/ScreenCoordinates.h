#pragma once

#include <xcb/randr.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Foundation/Geometry.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// Returns the scale of an X resource database: Xft.dpi divided by 96. Returns 1 if Xft.dpi is
/// missing or the scale is not between 0.5 and 16.
[[nodiscard]] double scaleFromResources(std::string_view resources);

/// Converts between points and pixels. The whole screen has one scale (see `scaleFromResources`),
/// which never changes.
class ScreenCoordinates {
 public:
  /// Requests Xft.dpi and the monitors from the X server. Does not wait for the replies.
  explicit ScreenCoordinates(Connection& connection);

  /// Converts a rectangle on the screen to points. The origin of the result is the lower left
  /// corner of the primary monitor, or of the first monitor if no monitor is primary. The origin of
  /// `pixels` is the upper left corner of the root window.
  [[nodiscard]] CGRect points(PixelRect pixels);
  /// Converts a rectangle on the screen to pixels, with the same origins as the function `points`.
  [[nodiscard]] PixelRect pixels(CGRect points);
  /// Converts a rectangle in a window's content to pixels. The origin of `points` is the lower left
  /// corner of the content. The origin of the result is the upper left corner of the content.
  /// `contentHeight` is in pixels.
  [[nodiscard]] PixelRect contentPixels(CGRect points, int contentHeight);

  /// Reads the monitors again if `event` reports that they may have changed. Returns true if the
  /// origin of points has changed.
  bool handle(const xcb_generic_event_t& event);

 private:
  void requestMonitors();
  void readReplies();
  void readOriginMonitor(const xcb_randr_get_monitors_reply_t* monitors);

  Connection& connection_;
  std::optional<xcb_get_property_cookie_t> pendingResources_;
  std::optional<xcb_randr_get_monitors_cookie_t> pendingMonitors_;
  double scale_ = 1;
  PixelRect originMonitor_;     // its lower left corner is the origin of points
  int screenChangeEvent_ = -1;  // the type of RRScreenChangeNotify; -1 if the server has no RandR
};

}  // namespace vel::x11
