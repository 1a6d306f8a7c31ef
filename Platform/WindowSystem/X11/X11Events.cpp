// What the server tells, and the reports that follow from it.
#include <algorithm>
#include <utility>

#include "Platform/WindowSystem/X11/Focus.h"
#include "Platform/WindowSystem/X11/Requests.h"
#include "Platform/WindowSystem/X11/X11WindowSystem.h"

namespace vel {

using x11::Atom;
using x11::Event;
using x11::eventAs;
using x11::PixelRect;
using x11::RequestBatch;
using x11::typeOf;
using x11::Window;

bool X11WindowSystem::deliverEvents() {
  bool came = false;
  // Most frames bring nothing: they cost one look at the connection.
  if (!lost_ && (connection_->hasEvents() || nextDeadline() <= x11::steadyNow())) {
    came = readEvents();
    checkConnection();
  }
  return deliverReports() || came;
}

// What is told may end this object: nothing of it is touched afterwards.
bool X11WindowSystem::deliverReports() {
  if (reports_.empty()) {
    return false;
  }
  const std::weak_ptr<int> alive = alive_;
  bool any = false;
  while (!alive.expired() && !reports_.empty()) {
    const Report report = std::move(reports_.front());
    reports_.pop_front();
    if (delegate_ != nullptr) {
      report.tell(*delegate_);
    }
    any = true;
  }
  return any;
}

Nanoseconds X11WindowSystem::nextDeadline() const {
  if (!reports_.empty()) {
    return 0;
  }
  if (lost_) {
    return kNever;
  }
  if (unsettled_ || connection_->hasQueuedEvents() || connection_->hasErrors() ||
      connection_->isBroken()) {
    return 0;
  }
  Nanoseconds next = isAnimated() ? nextPicture_ : kNever;
  for (const auto& [handle, window] : windows_) {
    next = std::min(next, window.controlsDue);
  }
  return std::min(next, orderDue_);
}

bool X11WindowSystem::readEvents() {
  const RequestBatch batch(*connection_);
  bool came = false;
  do {
    while (const Event event = connection_->nextEvent()) {
      came = true;
      handle(*event);
    }
    settle();
  } while (unsettled_ || connection_->hasQueuedEvents());
  const Nanoseconds now = x11::steadyNow();
  for (auto& [handle, window] : windows_) {
    settleControls(window, now);
  }
  settleOrder(now);
  animate(now);
  if (!connection_->hasQueuedEvents()) {  // one may be of the end that explains an error
    connection_->logErrors();
  }
  return came;
}

void X11WindowSystem::checkConnection() {
  if (!connection_->isBroken()) {
    return;
  }
  lost_ = true;
  windows_.clear();
  focus_ = focusTold_ = XCB_WINDOW_NONE;
  drag_ = {};
  report([](WindowSystemDelegate& delegate) {
    delegate.displayLost("the X11 display does not answer any more");
  });
}

// The window itself, or the one that has it as a part of its cover.
Window* X11WindowSystem::findShown(xcb_window_t window) {
  for (auto& [handle, shown] : windows_) {
    if (shown.id == window || shown.cover->owns(window)) {
      return &shown;
    }
  }
  return nullptr;
}

void X11WindowSystem::handle(const xcb_generic_event_t& event) {
  for (auto& [handle, window] : windows_) {
    if (window.cover->isOvertakenBy(event)) {
      window.cover->raise();
    }
  }
  if (coordinates_.handle(event)) {
    for (const auto& [handle, window] : windows_) {
      report(handle, [handle = handle, frame = coordinates_.points(window.frame)](
                         WindowSystemDelegate& delegate) { delegate.frameChanged(handle, frame); });
    }
  }
  if (windowManager_.handle(event)) {
    windowManagerLeft_ = !windowManager_.isPresent();
    lookAtOrderLater();
    for (auto& [handle, window] : windows_) {
      if (window.controlsTold) {  // another one may think otherwise
        window.controlsDue = x11::steadyNow() + x11::kTimeForWindowManager;
      }
    }
  }
  handleOrder(event);
  const auto changed = [this](xcb_window_t id) {
    if (Window* const window = find(static_cast<WindowHandle>(id))) {
      window->changed = true;
    }
  };
  switch (typeOf(event)) {
    case XCB_CLIENT_MESSAGE:
      return handleMessage(eventAs<xcb_client_message_event_t>(event));
    case XCB_PROPERTY_NOTIFY:
      return handleProperty(eventAs<xcb_property_notify_event_t>(event));
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
      return handleFocus(event);
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
    case XCB_MOTION_NOTIFY:
      return handlePointer(event);
    case XCB_CONFIGURE_NOTIFY:
      return changed(eventAs<xcb_configure_notify_event_t>(event).window);
    case XCB_MAP_NOTIFY:
      return changed(eventAs<xcb_map_notify_event_t>(event).window);
    case XCB_UNMAP_NOTIFY:
      return changed(eventAs<xcb_unmap_notify_event_t>(event).window);
    case XCB_REPARENT_NOTIFY:
      return changed(eventAs<xcb_reparent_notify_event_t>(event).window);
    case XCB_DESTROY_NOTIFY:
      return windowEnded(eventAs<xcb_destroy_notify_event_t>(event).window);
    default:
      return;
  }
}

void X11WindowSystem::handleMessage(const xcb_client_message_event_t& message) {
  const auto handle = static_cast<WindowHandle>(message.window);
  const Window* const window = find(handle);
  if (window != nullptr && window->isOwn() &&
      message.type == connection_->atom(Atom::WmProtocols) && message.format == 32 &&
      message.data.data32[0] == connection_->atom(Atom::WmDeleteWindow) &&
      (window->style->mask() & NSWindowStyleMaskClosable) != 0) {
    report(handle, [handle](WindowSystemDelegate& delegate) { delegate.closeRequested(handle); });
  }
}

void X11WindowSystem::handleProperty(const xcb_property_notify_event_t& notice) {
  Window* const window = find(static_cast<WindowHandle>(notice.window));
  if (window == nullptr) {
    return;
  }
  if (notice.atom == connection_->atom(Atom::WmState)) {
    window->changed = true;
  } else if (notice.atom == connection_->atom(Atom::MotifWmHints) ||
             notice.atom == XCB_ATOM_WM_NORMAL_HINTS) {
    window->hintsChanged = true;
  } else if (notice.atom == connection_->atom(Atom::NetWmAllowedActions) && window->controlsTold) {
    window->controlsDue = 0;
  }
}

void X11WindowSystem::handleFocus(const xcb_generic_event_t& event) {
  const xcb_window_t id = eventAs<xcb_focus_in_event_t>(event).event;
  switch (x11::focusChange(event)) {
    case x11::FocusChange::Came:
      if (find(static_cast<WindowHandle>(id)) != nullptr) {
        focus_ = id;
      }
      break;
    case x11::FocusChange::Left:
      focusLeft_ = true;
      if (focus_ == id) {
        focus_ = XCB_WINDOW_NONE;
      }
      break;
    case x11::FocusChange::None:
      break;
  }
}

// Button and motion events have the same layout.
void X11WindowSystem::handlePointer(const xcb_generic_event_t& event) {
  const auto pointer = eventAs<xcb_button_press_event_t>(event);
  if (typeOf(event) == XCB_MOTION_NOTIFY) {
    drag_.pointerX = pointer.root_x;
    drag_.pointerY = pointer.root_y;
    drag_.moved = true;
    return;
  }
  if (pointer.detail != XCB_BUTTON_INDEX_1) {
    return;
  }
  settleDrag();
  drag_ = {};
  const Window* const window = findShown(pointer.event);
  if (typeOf(event) == XCB_BUTTON_PRESS && window != nullptr && window->movableByBackground) {
    drag_.window = window->id;
    drag_.grabX = pointer.root_x - window->frame.x;
    drag_.grabY = pointer.root_y - window->frame.y;
  }
}

void X11WindowSystem::settleDrag() {
  Window* const window = find(static_cast<WindowHandle>(drag_.window));
  if (std::exchange(drag_.moved, false) && window != nullptr) {
    PixelRect frame = window->frame;
    frame.x = drag_.pointerX - drag_.grabX;
    frame.y = drag_.pointerY - drag_.grabY;
    if (frame != window->frame) {
      moveTo(*window, frame);
      report(window->handle(),
             [handle = window->handle(), points = coordinates_.points(frame)](
                 WindowSystemDelegate& delegate) { delegate.frameChanged(handle, points); });
    }
  }
}

void X11WindowSystem::windowEnded(xcb_window_t id) {
  connection_->markDestroyed(id);
  const auto handle = static_cast<WindowHandle>(id);
  const auto ended = windows_.find(handle);
  if (ended == windows_.end()) {
    return;
  }
  ended->second.cover->windowEnded();
  windows_.erase(ended);
  focusLost(id);
  report(handle, [handle](WindowSystemDelegate& delegate) { delegate.windowDestroyed(handle); });
}

// By a window that takes part no longer. Another one may have it already, and is still to be told.
void X11WindowSystem::focusLost(xcb_window_t id) {
  if (focus_ == id || focusTold_ == id) {
    focusLeft_ = unsettled_ = true;
  }
  focus_ = focus_ == id ? xcb_window_t{XCB_WINDOW_NONE} : focus_;
  focusTold_ = focusTold_ == id ? xcb_window_t{XCB_WINDOW_NONE} : focusTold_;
}

void X11WindowSystem::settle() {
  unsettled_ = false;
  settleDrag();
  for (auto& [handle, window] : windows_) {
    if (std::exchange(window.hintsChanged, false)) {
      window.style->hintsChanged(window.frame);
      reportOwnersStyle(window);
    }
    if (std::exchange(window.changed, false)) {
      settleWindow(window);
    }
  }
  settleFocus();
}

void X11WindowSystem::reportOwnersStyle(const Window& window) {
  if (!window.style->unreportedOwnersMask()) {
    return;
  }
  report(window.handle(), [this, handle = window.handle()](WindowSystemDelegate& delegate) {
    const Window* const changed = find(handle);
    const auto styleMask = changed == nullptr
                               ? std::nullopt
                               : changed->style->unreportedOwnersMask();  // it may be ours by now
    if (styleMask) {
      changed->style->markOwnersMaskReported();
      delegate.styleMaskChanged(handle, *styleMask);
    }
  });
}

void X11WindowSystem::settleWindow(Window& window) {
  window.appears = false;
  const auto state = connection_->requestProperty(window.id, connection_->atom(Atom::WmState));
  const Looks looks = lookAt(window.id);
  const bool iconic = x11::WindowManager::isIconic(connection_->readProperty(state, window.id));
  if (!looks.areComplete()) {
    return;  // it has ended, and an event will say so
  }
  const WindowHandle handle = window.handle();
  if (const PixelRect frame = looks.frame(); frame != window.frame) {
    window.frame = frame;
    if (!window.isOwn()) {  // of ours this may be a size that setFrame has left behind already
      window.style->sizeChanged(frame);
    }
    report(handle, [handle, points = coordinates_.points(frame)](WindowSystemDelegate& delegate) {
      delegate.frameChanged(handle, points);
    });
  }
  const std::uint8_t mapping = looks.attributes->map_state;
  const bool miniaturized = iconic || (!window.isOwn() && mapping == XCB_MAP_STATE_UNMAPPED);
  if (window.ordered && miniaturized != window.miniaturized) {
    window.miniaturized = miniaturized;
    if (!miniaturized) {
      putInFront(handle);
    }
    report(handle, [handle, miniaturized](WindowSystemDelegate& delegate) {
      delegate.miniaturizedChanged(handle, miniaturized);
    });
  }
  if (window.wantsFocus && mapping == XCB_MAP_STATE_VIEWABLE) {
    window.wantsFocus = false;
    setInputFocus(*connection_, window.id);
  }
}

void X11WindowSystem::settleFocus() {
  const bool left = std::exchange(focusLeft_, false);
  if (left && focus_ == XCB_WINDOW_NONE) {
    // A window that loses the focus and the one that gets it are told of it together: once the
    // server has answered, the other half has come, too.
    const auto focus = connection_->waitForReply(xcb_get_input_focus_reply,
                                                 xcb_get_input_focus(connection_->get()),
                                                 "GetInputFocus", connection_->root());
    while (const Event event = connection_->nextEvent()) {
      handle(*event);
      unsettled_ = true;
    }
    // A window manager that ends leaves the keyboard to nobody.
    Window* const former = find(static_cast<WindowHandle>(focusTold_));
    const bool nobodys = focus != nullptr && (focus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT ||
                                              focus->focus == connection_->root());
    if (std::exchange(windowManagerLeft_, false) && former != nullptr && nobodys) {
      former->wantsFocus = former->changed = unsettled_ = true;
    }
  }
  if (left && focus_ == XCB_WINDOW_NONE && active_) {
    active_ = false;
    report([](WindowSystemDelegate& delegate) { delegate.applicationDeactivated(); });
  }
  if (focus_ == focusTold_) {
    return;
  }
  focusTold_ = focus_;
  const auto focused = static_cast<WindowHandle>(focus_);
  report(focused, [focused](WindowSystemDelegate& delegate) { delegate.focusMoved(focused); });
  if (focused != WindowHandle::None) {
    timeOfFocus_ = connection_->serverTime();
    if (!std::exchange(active_, true)) {
      report([focused](WindowSystemDelegate& delegate) { delegate.applicationActivated(focused); });
    }
  }
}

void X11WindowSystem::settleControls(Window& window, Nanoseconds now) {
  if (now < window.controlsDue) {
    return;
  }
  window.controlsDue = kNever;
  const auto offered = windowManager_.controlsOffered(window.id);
  if (!offered) {
    return;
  }
  const NSWindowStyleMask kept = *offered & window.style->removedControls();
  if (window.controlsTold != kept) {
    window.controlsTold = kept;
    report(window.handle(), [handle = window.handle(), kept](WindowSystemDelegate& delegate) {
      delegate.controlsKept(handle, kept);
    });
  }
}

bool X11WindowSystem::isAnimated() const {
  return std::ranges::any_of(windows_, [](const auto& entry) {
    const Window& window = entry.second;
    return window.ordered && !window.miniaturized && window.cover->isAnimated();
  });
}

void X11WindowSystem::animate(Nanoseconds now) {
  if (now < nextPicture_ || !isAnimated()) {
    return;
  }
  for (auto& [handle, window] : windows_) {
    if (window.ordered && !window.miniaturized) {
      window.cover->animate(now);
    }
  }
  constexpr Nanoseconds kStep = x11::Spinner::kTimeForSpoke;
  nextPicture_ = (now / kStep + 1) * kStep;
}

}  // namespace vel
