#include "Platform/WindowSystem/X11/StyleRestorer.h"

#include <algorithm>
#include <array>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// Returns true if the window manager may still have been processing the overridden hints when
// `begin` was called. The window manager's events then do not show that it has read the restored
// hints.
bool isOverrideRecent(const Window& window) {
  const Nanoseconds beginTime = window.restorationDeadline - kWindowManagerDelay;
  return window.style->overrideTime() + kWindowManagerDelay > beginTime;
}

}  // namespace

StyleRestorer::StyleRestorer(Connection& connection, WindowManager& windowManager,
                             WindowTable& windows)
    : connection_(connection), windowManager_(windowManager), windows_(windows) {}

// A ConfigureWindow request without values changes nothing. A window manager receives it as a
// ConfigureRequest after the PropertyNotify, and replies with a ConfigureNotify.
void StyleRestorer::begin(Window& window) {
  if (!window.style->isRestoring()) {
    window.restorationDeadline = kNever;
  } else if (!windowManager_.isPresent()) {
    window.style->finishRestoring();
  } else if (window.restorationDeadline == kNever) {
    configureWindow(connection_, window.id, 0, {});
    window.restorationDeadline = steadyNow() + kWindowManagerDelay;
  }
}

void StyleRestorer::handle(const xcb_generic_event_t& event) {
  for (auto& [id, window] : windows_) {
    if (window.restorationDeadline != kNever && showsThatHintsWereRead(window, event)) {
      window.restorationDeadline = 0;
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
      window.restorationDeadline = kNever;
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
  window.restorationDeadline = kNever;
  window.style->finishRestoring();
}

bool StyleRestorer::showsThatHintsWereRead(const Window& window,
                                           const xcb_generic_event_t& event) const {
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
