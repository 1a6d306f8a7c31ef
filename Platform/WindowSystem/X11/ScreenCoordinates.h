#pragma once

#include <xcb/randr.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Foundation/Geometry.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// Returns the scale in a resource database: Xft.dpi divided by 96. Returns 1 if Xft.dpi is missing
/// or the scale is not between 0.5 and 16.
[[nodiscard]] double scaleFromResources(std::string_view resources);

/// Converts between points and pixels. One scale applies to the whole screen: Xft.dpi divided by
/// 96. Later changes of Xft.dpi have no effect. On the screen, the origin of points is the lower
/// left corner of the primary monitor, or of the first monitor if no monitor is primary. When the
/// monitors change, the origin may change too.
///
/// The constructor requests Xft.dpi and the monitors from the X server. The first conversion reads
/// the replies.
class ScreenCoordinates {
 public:
  explicit ScreenCoordinates(Connection& connection);

  /// `points` and `pixels` convert a rectangle on the screen. The origin of pixels is the upper
  /// left corner of the root window.
  [[nodiscard]] CGRect points(PixelRect pixels);
  [[nodiscard]] PixelRect pixels(CGRect points);
  /// Converts a rectangle in the content of a window. Both origins are corners of the content: the
  /// lower left corner for points, and the upper left corner for pixels. `contentHeight` is in
  /// pixels.
  [[nodiscard]] PixelRect contentPixels(CGRect points, int contentHeight);

  /// Handles an event. Returns true if the origin of points has changed.
  bool handle(const xcb_generic_event_t& event);

 private:
  void requestMonitors();
  void readReplies();
  void readOriginMonitor(const xcb_randr_get_monitors_reply_t* monitors);

  Connection& connection_;
  std::optional<xcb_get_property_cookie_t> pendingResources_;
  std::optional<xcb_randr_get_monitors_cookie_t> pendingMonitors_;
  double scale_ = 1;
  PixelRect originMonitor_;     // the monitor that has the origin of points
  int screenChangeEvent_ = -1;  // the type of RRScreenChangeNotify; -1 if the server has no RandR
};

}  // namespace vel::x11
