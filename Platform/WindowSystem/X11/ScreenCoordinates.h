#pragma once

#include <xcb/randr.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Foundation/Geometry.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// The value of Xft.dpi in a resource database, as a scale where 96 is 1; 1 where there is none or
/// it makes no sense.
[[nodiscard]] double scaleFromResources(std::string_view resources);

/// How points become pixels and back. A point is as many pixels as the display's scale says
/// (Xft.dpi over 96), everywhere and for every window; that is read once, as it was when the
/// display was opened: who changes it later changes nothing here. The origin of the points is the
/// lower left corner of the primary monitor, else of the first; it follows the monitors. The server
/// is asked at once, and its answers are taken when they are first needed: nobody waits for them
/// alone.
class ScreenCoordinates {
 public:
  explicit ScreenCoordinates(Connection& connection);

  /// A rectangle on the screen, its pixels counted from the root window's corner.
  [[nodiscard]] CGRect points(PixelRect pixels);
  [[nodiscard]] PixelRect pixels(CGRect points);
  /// A rectangle in a window's content of the given height in pixels.
  [[nodiscard]] PixelRect contentPixels(CGRect points, int contentHeight);

  /// Takes an event; answers whether points are counted from elsewhere now.
  bool handle(const xcb_generic_event_t& event);

 private:
  void askForMonitors();
  void takeAnswers();
  void readMonitors(const xcb_randr_get_monitors_reply_t* monitors);

  Connection& connection_;
  std::optional<xcb_get_property_cookie_t> resourcesAsked_;
  std::optional<xcb_randr_get_monitors_cookie_t> monitorsAsked_;
  double scale_ = 1;
  PixelRect first_;
  int monitorsChanged_ = -1;  // the event's number
};

}  // namespace vel::x11
