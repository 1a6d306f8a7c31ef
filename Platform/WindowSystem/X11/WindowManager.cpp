#include "Platform/WindowSystem/X11/WindowManager.h"

#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

constexpr std::uint32_t kAskedByApplication = 1;

}  // namespace

WindowManager::WindowManager(Connection& connection) : connection_(connection) {
  // Each program selects a window's events once: these are all that matter of the root window,
  // those for the monitors included.
  selectEvents(connection_, connection_.root(),
               XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  ask();
}

void WindowManager::ask() {
  const xcb_window_t root = connection_.root();
  asked_ = {connection_.requestProperty(root, connection_.atom(Atom::NetSupportingWmCheck)),
            connection_.requestProperty(root, connection_.atom(Atom::NetSupported))};
}

// The root window names a window that the window manager keeps, and which names itself. A name left
// by one that is gone leads to no such window, or to somebody else's: of that, our choice of events
// is left as it is.
void WindowManager::takeAnswers() {
  const auto asked = std::exchange(asked_, std::nullopt);
  if (!asked) {
    return;
  }
  check_ = XCB_WINDOW_NONE;
  supported_.clear();
  const auto named = connection_.readProperty(asked->check, connection_.root());
  const auto supported = connection_.readProperty(asked->supported, connection_.root());
  if (!named || named->numbers().empty()) {
    return;
  }
  const xcb_window_t window = named->numbers().front();
  if (!namesItself(window)) {
    return;
  }
  selectEvents(connection_, window, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  if (!namesItself(window)) {  // it has ended just now, and would not say so
    connection_.markDestroyed(window);
    return;
  }
  check_ = window;
  if (supported) {
    supported_ = supported->numbers();
  }
}

bool WindowManager::namesItself(xcb_window_t window) {
  const auto named =
      connection_.readPropertyIfExists(window, connection_.atom(Atom::NetSupportingWmCheck));
  return named && named->numbers() == std::vector{window};
}

bool WindowManager::handle(const xcb_generic_event_t& event) {
  takeAnswers();
  if (typeOf(event) == XCB_DESTROY_NOTIFY) {
    const auto notice = eventAs<xcb_destroy_notify_event_t>(event);
    if (notice.window != check_ || check_ == XCB_WINDOW_NONE) {
      return false;
    }
    connection_.markDestroyed(check_);
    ask();
    takeAnswers();
    return true;
  }
  if (typeOf(event) != XCB_PROPERTY_NOTIFY) {
    return false;
  }
  const auto notice = eventAs<xcb_property_notify_event_t>(event);
  if (notice.window != connection_.root() ||
      (notice.atom != connection_.atom(Atom::NetSupportingWmCheck) &&
       notice.atom != connection_.atom(Atom::NetSupported))) {
    return false;
  }
  const xcb_window_t before = check_;
  ask();
  takeAnswers();
  return check_ != before;
}

bool WindowManager::supports(Atom feature) const {
  return std::ranges::find(supported_, connection_.atom(feature)) != supported_.end();
}

bool WindowManager::isPresent() {
  takeAnswers();
  return check_ != XCB_WINDOW_NONE;
}

bool WindowManager::activatesWindows() { return isPresent() && supports(Atom::NetActiveWindow); }

bool WindowManager::hasOrdered(const xcb_generic_event_t& event) const {
  if (typeOf(event) != XCB_PROPERTY_NOTIFY) {
    return false;
  }
  const auto notice = eventAs<xcb_property_notify_event_t>(event);
  return notice.window == connection_.root() &&
         notice.atom == connection_.atom(Atom::NetClientListStacking);
}

std::optional<std::vector<xcb_window_t>> WindowManager::order() {
  const Atom name = Atom::NetClientListStacking;
  const auto order = isPresent() && supports(name)
                         ? connection_.readProperty(connection_.root(), connection_.atom(name))
                         : std::nullopt;
  return order ? std::optional(order->numbers()) : std::nullopt;
}

void WindowManager::askToActivate(xcb_window_t window, xcb_timestamp_t time) {
  sendToWindowManager(connection_, window, Atom::NetActiveWindow, {kAskedByApplication, time});
}

void WindowManager::askToIconify(xcb_window_t window) {
  sendToWindowManager(connection_, window, Atom::WmChangeState, {XCB_ICCCM_WM_STATE_ICONIC});
}

bool WindowManager::isIconic(const std::optional<Property>& state) {
  const std::vector<std::uint32_t> numbers =
      state ? state->numbers() : std::vector<std::uint32_t>();
  return !numbers.empty() && numbers.front() == XCB_ICCCM_WM_STATE_ICONIC;
}

std::optional<NSWindowStyleMask> WindowManager::controlsOffered(xcb_window_t window) {
  if (!isPresent()) {
    return NSWindowStyleMaskBorderless;  // nobody offers any
  }
  if (!supports(Atom::NetWmAllowedActions)) {
    return std::nullopt;
  }
  const auto actions =
      connection_.readProperty(window, connection_.atom(Atom::NetWmAllowedActions));
  const std::vector<std::uint32_t> allowed =
      actions ? actions->numbers() : std::vector<std::uint32_t>();
  NSWindowStyleMask controls = NSWindowStyleMaskBorderless;
  constexpr std::array kActions{
      std::pair{Atom::NetWmActionClose, NSWindowStyleMaskClosable},
      std::pair{Atom::NetWmActionMinimize, NSWindowStyleMaskMiniaturizable},
      std::pair{Atom::NetWmActionResize, NSWindowStyleMaskResizable}};
  for (const auto& [action, control] : kActions) {
    if (std::ranges::find(allowed, connection_.atom(action)) != allowed.end()) {
      controls |= control;
    }
  }
  return controls;
}

}  // namespace vel::x11
