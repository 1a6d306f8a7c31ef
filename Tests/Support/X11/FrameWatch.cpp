#include "Tests/Support/X11/FrameWatch.h"

#include <xcb/damage.h>

#include <algorithm>
#include <utility>

#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

FrameWatch::FrameWatch(const std::string& display, PixelRect place, Kind kind)
    : client_(display), place_(place), kind_(std::move(kind)) {
  xcb_connection_t* const x = client_.get();
  drawn_ = xcb_get_extension_data(x, &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY;
  const x11::FromServer<xcb_damage_query_version_reply_t> version(
      xcb_damage_query_version_reply(x, xcb_damage_query_version(x, 1, 1), nullptr));
  xcb_damage_create(x, xcb_generate_id(x), client_.root(), XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
  client_.events();  // the first of them tells of all that stands there already
  look();
}

bool FrameWatch::watchUntil(const std::function<bool()>& condition) {
  const Nanoseconds limit = steadyNow() + kTimeout;
  while (!condition()) {
    if (steadyNow() >= limit) {
      return false;
    }
    if (!takeEvents()) {
      waitForInput(xcb_get_file_descriptor(client_.get()),
                   steadyNow() + kNanosecondsPerSecond / 100);
    }
  }
  client_.settle();
  takeEvents();
  return true;
}

bool FrameWatch::takeEvents() {
  bool came = false;
  while (const x11::Event event{xcb_poll_for_event(client_.get())}) {
    came = true;
    if (x11::typeOf(*event) != drawn_) {
      continue;
    }
    const xcb_rectangle_t area = x11::eventAs<xcb_damage_notify_event_t>(*event).area;
    const int left = std::max<int>(area.x, place_.x);
    const int top = std::max<int>(area.y, place_.y);
    const int right = std::min(area.x + area.width, place_.x + place_.width);
    const int bottom = std::min(area.y + area.height, place_.y + place_.height);
    if (left < right && top < bottom) {
      latest_.push_back({left - place_.x, top - place_.y, right - left, bottom - top});
      look();
    }
  }
  return came;
}

void FrameWatch::look() {
  const char kind = kind_(client_.picture(place_));
  if (kinds_.empty() || kinds_.back() != kind) {
    kinds_ += kind;
    drawings_.push_back(std::exchange(latest_, {}));
  }
}

}  // namespace vel::test
