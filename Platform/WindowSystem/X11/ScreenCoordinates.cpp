#include "Platform/WindowSystem/X11/ScreenCoordinates.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/Foundation/NSString.h"

namespace vel::x11 {

namespace {

constexpr double kUnscaledDpi = 96;
constexpr double kMinScale = 0.5;
constexpr double kMaxScale = 16;
constexpr std::string_view kDpiResource = "Xft.dpi:";

int roundToInt(double value) { return static_cast<int>(std::lround(value)); }

}  // namespace

double scaleFromResources(std::string_view resources) {
  while (!resources.empty()) {
    const std::size_t end = std::min(resources.find('\n'), resources.size());
    std::string_view line = resources.substr(0, end);
    resources.remove_prefix(std::min(end + 1, resources.size()));
    if (!line.starts_with(kDpiResource)) {
      continue;
    }
    line.remove_prefix(kDpiResource.size());
    const double dpi = NSString::stringWithUTF8String(line)->floatValue();
    const double scale = dpi / kUnscaledDpi;
    return scale >= kMinScale && scale <= kMaxScale ? scale : 1;
  }
  return 1;
}

ScreenCoordinates::ScreenCoordinates(Connection& connection)
    : connection_(connection),
      pendingResources_(connection.requestProperty(connection.root(), XCB_ATOM_RESOURCE_MANAGER)),
      originMonitor_{0, 0, connection.screen().width_in_pixels,
                     connection.screen().height_in_pixels} {
  const xcb_query_extension_reply_t* const randr =
      xcb_get_extension_data(connection_.get(), &xcb_randr_id);
  if (randr != nullptr && randr->present != 0) {
    screenChangeEvent_ = randr->first_event + XCB_RANDR_SCREEN_CHANGE_NOTIFY;
    const auto version = xcb_randr_query_version(connection_.get(), 1, 5);
    xcb_discard_reply(connection_.get(), version.sequence);
    connection_.track(xcb_randr_select_input(connection_.get(), connection_.root(),
                                             XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE),
                      "RRSelectInput", connection_.root());
  }
  requestMonitors();
}

void ScreenCoordinates::requestMonitors() {
  if (screenChangeEvent_ >= 0) {
    constexpr std::uint8_t kActiveOnly = 1;
    pendingMonitors_ = xcb_randr_get_monitors(connection_.get(), connection_.root(), kActiveOnly);
  }
}

void ScreenCoordinates::readReplies() {
  if (const auto cookie = std::exchange(pendingResources_, std::nullopt)) {
    if (const auto resources = connection_.readProperty(*cookie, connection_.root())) {
      scale_ = scaleFromResources(resources->text());
    }
  }
  if (const auto cookie = std::exchange(pendingMonitors_, std::nullopt)) {
    const auto monitors = connection_.waitForReply(xcb_randr_get_monitors_reply, *cookie,
                                                   "RRGetMonitors", connection_.root());
    readOriginMonitor(monitors.get());
  }
}

// Sets `originMonitor_` to the primary monitor, or to the first monitor if no monitor is primary.
void ScreenCoordinates::readOriginMonitor(const xcb_randr_get_monitors_reply_t* monitors) {
  originMonitor_ = {0, 0, connection_.screen().width_in_pixels,
                    connection_.screen().height_in_pixels};
  if (monitors == nullptr) {
    return;
  }
  if (monitors->nMonitors > 0) {  // `Connection::isXwayland` checks this name
    connection_.requestMonitorName(xcb_randr_get_monitors_monitors_iterator(monitors).data->name);
  }
  bool hasFirstMonitor = false;
  for (auto monitor = xcb_randr_get_monitors_monitors_iterator(monitors); monitor.rem > 0;
       xcb_randr_monitor_info_next(&monitor)) {
    if (!hasFirstMonitor || monitor.data->primary != 0) {
      originMonitor_ = {monitor.data->x, monitor.data->y, monitor.data->width,
                        monitor.data->height};
    }
    if (monitor.data->primary != 0) {
      return;
    }
    hasFirstMonitor = true;
  }
}

bool ScreenCoordinates::handle(const xcb_generic_event_t& event) {
  // `xrandr --setmonitor` causes a ConfigureNotify of the root window but no RRScreenChangeNotify.
  const bool isRootConfigureNotify =
      typeOf(event) == XCB_CONFIGURE_NOTIFY &&
      eventAs<xcb_configure_notify_event_t>(event).window == connection_.root();
  if (typeOf(event) != screenChangeEvent_ && !isRootConfigureNotify) {
    return false;
  }
  readReplies();  // sets `originMonitor_` if the constructor's requests are pending
  const PixelRect previousMonitor = originMonitor_;
  requestMonitors();
  readReplies();
  return originMonitor_ != previousMonitor;
}

CGRect ScreenCoordinates::points(PixelRect pixels) {
  readReplies();
  const int bottom = originMonitor_.y + originMonitor_.height;
  return CGRectMake((pixels.x - originMonitor_.x) / scale_,
                    (bottom - pixels.y - pixels.height) / scale_, pixels.width / scale_,
                    pixels.height / scale_);
}

PixelRect ScreenCoordinates::pixels(CGRect points) {
  readReplies();
  const int width = roundToInt(points.size.width * scale_);
  const int height = roundToInt(points.size.height * scale_);
  const int bottom = originMonitor_.y + originMonitor_.height;
  return {originMonitor_.x + roundToInt(points.origin.x * scale_),
          bottom - roundToInt(points.origin.y * scale_) - height, width, height};
}

PixelRect ScreenCoordinates::contentPixels(CGRect points, int contentHeight) {
  readReplies();
  const int left = roundToInt(points.origin.x * scale_);
  const int right = roundToInt((points.origin.x + points.size.width) * scale_);
  const int top = contentHeight - roundToInt((points.origin.y + points.size.height) * scale_);
  const int bottom = contentHeight - roundToInt(points.origin.y * scale_);
  return {left, top, right - left, bottom - top};
}

}  // namespace vel::x11
