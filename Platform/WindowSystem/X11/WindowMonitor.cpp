#include "Platform/WindowSystem/X11/WindowMonitor.h"

#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

WindowMonitor::WindowMonitor(Connection& connection, ScreenCoordinates& coordinates,
                             StackingOrder& order, WindowTable& windows, ReportQueue& reports)
    : connection_(connection),
      coordinates_(coordinates),
      order_(order),
      windows_(windows),
      reports_(reports),
      inspector_(connection) {}

void WindowMonitor::handle(const xcb_generic_event_t& event) {
  switch (typeOf(event)) {
    case XCB_PROPERTY_NOTIFY:
      return handleProperty(eventAs<xcb_property_notify_event_t>(event));
    case XCB_CONFIGURE_NOTIFY:
      return markChanged(eventAs<xcb_configure_notify_event_t>(event).window);
    case XCB_MAP_NOTIFY:
      return markChanged(eventAs<xcb_map_notify_event_t>(event).window);
    case XCB_UNMAP_NOTIFY:
      return markChanged(eventAs<xcb_unmap_notify_event_t>(event).window);
    case XCB_REPARENT_NOTIFY:
      return markChanged(eventAs<xcb_reparent_notify_event_t>(event).window);
    default:
      return;
  }
}

void WindowMonitor::handleProperty(const xcb_property_notify_event_t& notice) {
  if (notice.atom == connection_.atom(Atom::WmState)) {
    markChanged(notice.window);
  } else if (notice.atom == connection_.atom(Atom::NetWmState)) {
    // `update` uses this property only for adopted windows: the windows that the back end has not
    // created.
    const Window* const window = windows_.find(notice.window);
    if (window != nullptr && window->isAdopted()) {
      markChanged(notice.window);
    }
  } else if (notice.atom == connection_.atom(Atom::MotifWmHints) ||
             notice.atom == XCB_ATOM_WM_NORMAL_HINTS) {
    if (Window* const window = windows_.find(notice.window)) {
      window->hasHintChanges = true;
    }
  }
}

void WindowMonitor::markChanged(xcb_window_t id) {
  if (Window* const window = windows_.find(id)) {
    window->hasStateChanges = true;
  }
}

void WindowMonitor::updateChangedWindows() {
  for (auto& [id, window] : windows_) {
    if (std::exchange(window.hasHintChanges, false)) {
      window.style->handleHintChange();
      reportOwnersStyleMask(window);
    }
    if (std::exchange(window.hasStateChanges, false)) {
      update(window);
    }
  }
}

void WindowMonitor::update(Window& window) {
  window.isBeingMapped = false;
  const WindowState state = inspector_.readState(window.id);
  if (!state.isComplete()) {
    return;  // the window is destroyed, and DestroyNotify follows
  }
  if (const PixelRect frame = state.frame(); frame != window.frame) {
    window.frame = frame;
    reportFrame(window);
  }
  window.isMaximizedOrFullscreen = window.isAdopted() && inspector_.isMaximizedOrFullscreen(state);
  updateMiniaturized(window, state);
  if (window.wantsFocus && state.isViewable()) {
    window.wantsFocus = false;
    setInputFocus(connection_, window.id);
  }
}

// The owner of an adopted window may unmap the window without iconifying it. We report such a
// window as miniaturised.
void WindowMonitor::updateMiniaturized(Window& window, const WindowState& state) {
  const bool isMiniaturized = state.isIconic() || (window.isAdopted() && state.isUnmapped());
  if (!window.isOrderedIn || isMiniaturized == window.isMiniaturized) {
    return;
  }
  window.isMiniaturized = isMiniaturized;
  const WindowHandle handle = window.handle();
  if (!isMiniaturized) {
    order_.assumeInFront(handle);
  }
  reports_.add(handle, [handle, isMiniaturized](WindowSystemDelegate& delegate) {
    delegate.miniaturizedChanged(handle, isMiniaturized);
  });
}

// The lambda runs when the report is delivered. It checks the style again, because the back end may
// have overridden the style since the report was added.
void WindowMonitor::reportOwnersStyleMask(const Window& window) {
  if (!window.style->unreportedOwnersStyleMask()) {
    return;
  }
  reports_.add(window.handle(), [this, handle = window.handle()](WindowSystemDelegate& delegate) {
    const Window* const target = windows_.find(handle);
    const auto styleMask =
        target == nullptr ? std::nullopt : target->style->unreportedOwnersStyleMask();
    if (styleMask) {
      target->style->markOwnersStyleMaskReported();
      delegate.styleMaskChanged(handle, *styleMask);
    }
  });
}

// The lambda runs when the report is delivered. It reads the frame again, because the frame may
// have changed since the report was added. With the old frame, the delegate could draw a scene that
// is smaller than the window.
void WindowMonitor::reportFrame(const Window& window) {
  reports_.add(window.handle(), [this, handle = window.handle()](WindowSystemDelegate& delegate) {
    if (const Window* const target = windows_.find(handle)) {
      delegate.frameChanged(handle, coordinates_.points(target->frame));
    }
  });
}

void WindowMonitor::reportFrames() {
  for (const auto& [id, window] : windows_) {
    reportFrame(window);
  }
}

}  // namespace vel::x11
