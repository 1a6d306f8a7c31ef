#include "Platform/WindowSystem/X11/ControlsMonitor.h"

#include <algorithm>

namespace vel::x11 {

ControlsMonitor::ControlsMonitor(Connection& connection, WindowManager& windowManager,
                                 WindowTable& windows, ReportQueue& reports)
    : connection_(connection),
      windowManager_(windowManager),
      windows_(windows),
      reports_(reports) {}

void ControlsMonitor::handle(const xcb_generic_event_t& event) {
  if (typeOf(event) != XCB_PROPERTY_NOTIFY) {
    return;
  }
  const auto notice = eventAs<xcb_property_notify_event_t>(event);
  Window* const window = windows_.find(notice.window);
  // The remaining controls are the controls that the window manager offers although the style mask
  // excludes them. After a change of the mask, `reportedRemainingControls` has no value until the
  // scheduled check. An earlier check could read the controls for the previous mask.
  if (window != nullptr && window->reportedRemainingControls &&
      notice.atom == connection_.atom(Atom::NetWmAllowedActions)) {
    window->controlsDeadline = 0;  // 0: check at once
  }
}

void ControlsMonitor::windowManagerChanged() {
  for (auto& [id, window] : windows_) {
    if (window.reportedRemainingControls) {
      scheduleCheck(window);
    }
  }
}

void ControlsMonitor::styleMaskChanged(Window& window) {
  window.reportedRemainingControls.reset();
  scheduleCheck(window);
}

void ControlsMonitor::scheduleCheck(Window& window) {
  window.controlsDeadline = steadyNow() + kWindowManagerDelay;
}

Nanoseconds ControlsMonitor::deadline() const {
  Nanoseconds deadline = kNever;
  for (const auto& [id, window] : windows_) {
    deadline = std::min(deadline, window.controlsDeadline);
  }
  return deadline;
}

void ControlsMonitor::check(Nanoseconds now) {
  for (auto& [id, window] : windows_) {
    if (now >= window.controlsDeadline) {
      window.controlsDeadline = kNever;
      checkWindow(window);
    }
  }
}

void ControlsMonitor::checkWindow(Window& window) {
  auto offeredControls = windowManager_.readOfferedControls(window.id);
  if (!offeredControls) {
    return;
  }
  // While resizing is allowed, our hints do not remove the control for resizing. But for some
  // window managers, `readOfferedControls` always assumes that hints have removed it.
  if (window.style->isResizingAllowed()) {
    *offeredControls |= NSWindowStyleMaskResizable;
  }
  const NSWindowStyleMask remainingControls = *offeredControls & window.style->removedControls();
  if (window.reportedRemainingControls != remainingControls) {
    window.reportedRemainingControls = remainingControls;
    const WindowHandle handle = window.handle();
    reports_.add(handle, [handle, remainingControls](WindowSystemDelegate& delegate) {
      delegate.remainingControlsDetected(handle, remainingControls);
    });
  }
}

}  // namespace vel::x11
