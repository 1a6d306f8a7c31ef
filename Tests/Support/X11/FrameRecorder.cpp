#include "Tests/Support/X11/FrameRecorder.h"

#include <xcb/damage.h>

#include <algorithm>
#include <utility>

#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

FrameRecorder::FrameRecorder(const std::string& display, PixelRect area, Classifier classifier)
    : client_(display), area_(area), classifier_(std::move(classifier)) {
  xcb_connection_t* const connection = client_.connection();
  damageNotifyType_ =
      xcb_get_extension_data(connection, &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY;
  // The Damage extension requires this request before all others.
  const x11::XcbPointer<xcb_damage_query_version_reply_t> version(xcb_damage_query_version_reply(
      connection, xcb_damage_query_version(connection, 1, 1), nullptr));
  xcb_damage_create(connection, xcb_generate_id(connection), client_.root(),
                    XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
  client_.takeEventTypes();  // discards the damage event of earlier drawings
  takePicture();
}

bool FrameRecorder::recordUntil(const std::function<bool()>& condition) {
  const Nanoseconds limit = steadyNow() + kTimeout;
  while (!condition()) {
    if (steadyNow() >= limit) {
      return false;
    }
    if (!readEvents()) {
      waitForInput(xcb_get_file_descriptor(client_.connection()),
                   steadyNow() + kNanosecondsPerSecond / 100);
    }
  }
  // Events of the last drawings may not have arrived yet.
  client_.waitForServer();
  readEvents();
  return true;
}

bool FrameRecorder::readEvents() {
  bool hasReadEvent = false;
  while (const x11::Event event{xcb_poll_for_event(client_.connection())}) {
    hasReadEvent = true;
    if (x11::typeOf(*event) != damageNotifyType_) {
      continue;
    }
    const xcb_rectangle_t drawnArea = x11::eventAs<xcb_damage_notify_event_t>(*event).area;
    const int left = std::max<int>(drawnArea.x, area_.x);
    const int top = std::max<int>(drawnArea.y, area_.y);
    const int right = std::min(drawnArea.x + drawnArea.width, area_.x + area_.width);
    const int bottom = std::min(drawnArea.y + drawnArea.height, area_.y + area_.height);
    if (left < right && top < bottom) {
      newDrawings_.push_back({left - area_.x, top - area_.y, right - left, bottom - top});
      takePicture();
    }
  }
  return hasReadEvent;
}

void FrameRecorder::takePicture() {
  const char letter = classifier_(client_.screenPicture(area_));
  if (letters_.empty() || letters_.back() != letter) {
    letters_ += letter;
    drawings_.push_back(std::exchange(newDrawings_, {}));
  }
}

}  // namespace vel::test
