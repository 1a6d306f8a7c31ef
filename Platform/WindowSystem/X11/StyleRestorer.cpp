#include "Platform/WindowSystem/X11/StyleRestorer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// Returns true if `begin` was called less than `kWindowManagerDelay` after we overrode the hints.
// An event may then be the window manager's reaction to the override, not to the restored hints.
// `window` must not have a `restorationProbe`. `begin` has set the deadline of such a window to
// `kWindowManagerDelay` after the call.
bool isOverrideRecent(const Window& window) {
  const Nanoseconds beginTime = window.restorationDeadline - kWindowManagerDelay;
  return window.style->overrideTime() + kWindowManagerDelay > beginTime;
}

}  // namespace

StyleRestorer::StyleRestorer(Connection& connection, WindowManager& windowManager,
                             WindowTable& windows)
    : connection_(connection), windowManager_(windowManager), windows_(windows) {}

void StyleRestorer::begin(Window& window) {
  if (!window.style->isRestoring()) {
    cancel(window);
  } else if (!windowManager_.isPresent()) {
    window.style->finishRestoring();
  } else if (window.restorationDeadline == kNever) {
    startWaiting(window);
  }
}

void StyleRestorer::startWaiting(Window& window) {
  if (!windowManager_.repliesToFrameExtentsRequests()) {
    // A ConfigureWindow request without values changes nothing. A window manager receives it as a
    // ConfigureRequest after the PropertyNotify of the hints, and replies with a ConfigureNotify.
    configureWindow(connection_, window.id, 0, {});
    window.restorationDeadline = steadyNow() + kWindowManagerDelay;
    return;
  }
  // The window manager replies to _NET_REQUEST_FRAME_EXTENTS by setting a property of the probe.
  window.restorationProbe = connection_.makeId();
  createWindow(connection_,
               {.id = window.restorationProbe, .parent = connection_.root(), .frame = {0, 0, 1, 1}},
               XCB_CW_EVENT_MASK, {XCB_EVENT_MASK_PROPERTY_CHANGE});
  sendToWindowManager(connection_, window.restorationProbe, Atom::NetRequestFrameExtents, {});
  window.restorationDeadline = steadyNow() + kWindowManagerReplyTimeLimit;
}

void StyleRestorer::cancel(Window& window) {
  window.restorationDeadline = kNever;
  if (window.restorationProbe != XCB_WINDOW_NONE) {
    destroyWindow(connection_, std::exchange(window.restorationProbe, XCB_WINDOW_NONE));
  }
}

void StyleRestorer::handle(const xcb_generic_event_t& event) {
  for (auto& [id, window] : windows_) {
    if (window.restorationDeadline != kNever && showsThatHintsWereRead(window, event)) {
      window.restorationDeadline = 0;  // the next `check` finishes the restoration
    }
  }
}

Nanoseconds StyleRestorer::deadline() const {
  Nanoseconds deadline = kNever;
  for (const auto& [id, window] : windows_) {
    deadline = std::min(deadline, window.restorationDeadline);
  }
  return deadline;
}

void StyleRestorer::check(Nanoseconds now) {
  for (auto& [id, window] : windows_) {
    if (now >= window.restorationDeadline) {
      cancel(window);
      window.style->finishRestoring();
    }
  }
}

void StyleRestorer::finish(Window& window) {
  if (window.restorationDeadline == kNever) {
    return;
  }
  connection_.waitForEvent(
      [&](const xcb_generic_event_t& event) { return showsThatHintsWereRead(window, event); },
      window.restorationDeadline);
  cancel(window);
  window.style->finishRestoring();
}

// Returns true if `event` shows that the window manager has read the restored hints.
bool StyleRestorer::showsThatHintsWereRead(const Window& window,
                                           const xcb_generic_event_t& event) const {
  if (window.restorationProbe != XCB_WINDOW_NONE) {
    return typeOf(event) == XCB_PROPERTY_NOTIFY &&
           eventAs<xcb_property_notify_event_t>(event).window == window.restorationProbe;
  }
  if (isOverrideRecent(window)) {
    return false;
  }
  if (typeOf(event) == XCB_CONFIGURE_NOTIFY) {
    return isSentByClient(event) &&
           eventAs<xcb_configure_notify_event_t>(event).window == window.id;
  }
  if (typeOf(event) != XCB_PROPERTY_NOTIFY) {
    return false;
  }
  constexpr std::array kWrittenByWindowManager{Atom::NetWmAllowedActions, Atom::NetWmState,
                                               Atom::NetFrameExtents};
  const auto notice = eventAs<xcb_property_notify_event_t>(event);
  return notice.window == window.id && std::ranges::any_of(kWrittenByWindowManager, [&](Atom name) {
           return notice.atom == connection_.atom(name);
         });
}

}  // namespace vel::x11
