#include "Platform/WindowSystem/X11/FocusTracker.h"

#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

FocusChange focusChange(const xcb_generic_event_t& event) {
  const auto focus = eventAs<xcb_focus_in_event_t>(event);
  if (focus.mode == XCB_NOTIFY_MODE_GRAB || focus.mode == XCB_NOTIFY_MODE_UNGRAB) {
    return FocusChange::None;
  }
  switch (focus.detail) {
    case XCB_NOTIFY_DETAIL_ANCESTOR:
    case XCB_NOTIFY_DETAIL_VIRTUAL:
    case XCB_NOTIFY_DETAIL_NONLINEAR:
    case XCB_NOTIFY_DETAIL_NONLINEAR_VIRTUAL:
      return typeOf(event) == XCB_FOCUS_IN ? FocusChange::In : FocusChange::Out;
    default:  // Inferior, Pointer, PointerRoot, None
      return FocusChange::None;
  }
}

FocusTracker::FocusTracker(Connection& connection, WindowManager& windowManager,
                           WindowTable& windows, ReportQueue& reports)
    : connection_(connection),
      windowManager_(windowManager),
      windows_(windows),
      reports_(reports) {}

void FocusTracker::handle(const xcb_generic_event_t& event) {
  const xcb_window_t id = eventAs<xcb_focus_in_event_t>(event).event;
  switch (focusChange(event)) {
    case FocusChange::In:
      if (windows_.find(id) != nullptr) {
        focus_ = id;
      }
      break;
    case FocusChange::Out:
      mayHaveLostFocus_ = true;
      if (focus_ == id) {
        focus_ = XCB_WINDOW_NONE;
      }
      break;
    case FocusChange::None:
      break;
  }
}

void FocusTracker::windowManagerChanged() { hasWindowManagerEnded_ = !windowManager_.isPresent(); }

void FocusTracker::windowAdopted(xcb_window_t window, bool hasFocus) {
  if (!hasFocus) {
    // The application starts as active. `reportChanges` must deactivate it if no window of the back
    // end has the focus.
    mayHaveLostFocus_ = hasPendingChanges_ = true;
    return;
  }
  focus_ = reportedFocus_ = window;
  focusTime_ = connection_.serverTime();
  if (!std::exchange(isActive_, true)) {
    reports_.add([handle = static_cast<WindowHandle>(window)](WindowSystemDelegate& delegate) {
      delegate.applicationActivated(handle);
    });
  }
}

// Clears `reportedFocus_` too: the back end itself withdrew the window, so `reportChanges` must not
// report that the window has lost the focus.
void FocusTracker::windowWithdrawn(xcb_window_t window) {
  if (focus_ == window) {
    focus_ = reportedFocus_ = XCB_WINDOW_NONE;
  }
}

void FocusTracker::windowRemoved(xcb_window_t window) {
  if (focus_ == window || reportedFocus_ == window) {
    // `reportChanges` must check whether another window of the back end has received the focus.
    mayHaveLostFocus_ = hasPendingChanges_ = true;
  }
  if (focus_ == window) {
    focus_ = XCB_WINDOW_NONE;
  }
  if (reportedFocus_ == window) {
    reportedFocus_ = XCB_WINDOW_NONE;
  }
}

void FocusTracker::reset() { focus_ = reportedFocus_ = XCB_WINDOW_NONE; }

bool FocusTracker::requestFocus(Window& window) {
  if (focus_ == window.id) {
    // The back end promises `focusMoved` after a request, but no FocusIn event will come.
    const WindowHandle handle = window.handle();
    reports_.add(handle, [handle](WindowSystemDelegate& delegate) { delegate.focusMoved(handle); });
    return false;
  }
  if (windowManager_.supportsActivation()) {
    // While the application is inactive, send the time at which it last received the focus. The
    // window manager may then refuse to take the focus from another application.
    const bool usesLastFocusTime = !isActive_ && focusTime_ != XCB_CURRENT_TIME;
    windowManager_.requestActivation(window.id,
                                     usesLastFocusTime ? focusTime_ : connection_.serverTime());
    return false;
  }
  for (auto& [id, other] : windows_) {
    other.wantsFocus = false;  // the latest request replaces earlier requests
  }
  window.wantsFocus = true;
  return true;
}

void FocusTracker::reportChanges(const HandleEvents& handleEvents) {
  hasPendingChanges_ = false;
  const bool mayHaveLostFocus = std::exchange(mayHaveLostFocus_, false);
  if (mayHaveLostFocus && focus_ == XCB_WINDOW_NONE) {
    findFocusAfterLoss(handleEvents);  // may set `focus_`
  }
  if (mayHaveLostFocus && focus_ == XCB_WINDOW_NONE && isActive_) {
    isActive_ = false;
    reports_.add([](WindowSystemDelegate& delegate) { delegate.applicationDeactivated(); });
  }
  if (focus_ == reportedFocus_) {
    return;
  }
  reportedFocus_ = focus_;
  const auto focusedWindow = static_cast<WindowHandle>(focus_);
  reports_.add(focusedWindow, [focusedWindow](WindowSystemDelegate& delegate) {
    delegate.focusMoved(focusedWindow);
  });
  if (focusedWindow == WindowHandle::None) {
    return;
  }
  focusTime_ = connection_.serverTime();
  if (!std::exchange(isActive_, true)) {
    reports_.add([focusedWindow](WindowSystemDelegate& delegate) {
      delegate.applicationActivated(focusedWindow);
    });
  }
}

void FocusTracker::findFocusAfterLoss(const HandleEvents& handleEvents) {
  // When the focus moves between two windows of the back end, the server sends the FocusOut and the
  // matching FocusIn together. So the FocusIn has arrived when `queryInputFocus` returns.
  const auto inputFocus = queryInputFocus(connection_);
  // The handled events may have changed windows. The caller of `reportChanges` must then update the
  // windows and call `reportChanges` again.
  hasPendingChanges_ = handleEvents();
  // When a window manager ends, the server may set the focus to the root window, PointerRoot or
  // None. We then return the focus to the window that had it.
  Window* const previousWindow = windows_.find(reportedFocus_);
  const bool isFocusOnRootOrNone =
      inputFocus != nullptr && (inputFocus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT ||
                                inputFocus->focus == connection_.root());
  if (std::exchange(hasWindowManagerEnded_, false) && previousWindow != nullptr &&
      isFocusOnRootOrNone) {
    previousWindow->wantsFocus = previousWindow->hasStateChanges = hasPendingChanges_ = true;
  }
}

}  // namespace vel::x11
