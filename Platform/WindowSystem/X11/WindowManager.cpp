#include "Platform/WindowSystem/X11/WindowManager.h"

#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"
#include "Platform/WindowSystem/X11/StyleHints.h"

namespace vel::x11 {

namespace {

constexpr std::uint32_t kRootEvents =
    XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;

/// A window manager whose _NET_WM_ALLOWED_ACTIONS does not show which controls a window has.
/// `removableControls` are the controls that the window manager removes if the window's
/// _MOTIF_WM_HINTS excludes them. `removableControls` is 0 (NSWindowStyleMaskBorderless) if the
/// window manager never removes a control. We tried the buttons, keys and drags of each window
/// manager to find its `removableControls`.
struct UnreliableWindowManager {
  std::string_view namePrefix;
  NSWindowStyleMask removableControls;
};
constexpr std::array kUnreliableWindowManagers{
    UnreliableWindowManager{"Xfwm4", NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable},
    UnreliableWindowManager{"IceWM", kControls},
    UnreliableWindowManager{"KWin", NSWindowStyleMaskClosable | NSWindowStyleMaskResizable},
    UnreliableWindowManager{"Fluxbox", NSWindowStyleMaskResizable},
    UnreliableWindowManager{"i3", NSWindowStyleMaskBorderless},
    UnreliableWindowManager{"awesome", NSWindowStyleMaskBorderless}};

}  // namespace

// A connection has only one event mask for each window. So `kRootEvents` also selects the events
// that ScreenCoordinates needs.
WindowManager::WindowManager(Connection& connection) : connection_(connection) {
  selectEvents(connection_, connection_.root(), kRootEvents);
  requestProperties();
}

// A state request is a _NET_WM_STATE message that a client sends to the window manager. The server
// also delivers the message to each client that has selected SubstructureNotify on the root window.
void WindowManager::setReceivesStateRequests(bool receivesStateRequests) {
  if (std::exchange(receivesStateRequests_, receivesStateRequests) != receivesStateRequests) {
    selectEvents(
        connection_, connection_.root(),
        receivesStateRequests ? kRootEvents | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY : kRootEvents);
  }
}

void WindowManager::requestProperties() {
  const xcb_window_t root = connection_.root();
  pendingReplies_ = {
      connection_.requestProperty(root, connection_.atom(Atom::NetSupportingWmCheck)),
      connection_.requestProperty(root, connection_.atom(Atom::NetSupported))};
}

// When a window manager has ended, _NET_SUPPORTING_WM_CHECK may remain on the root window. The id
// in the property may then belong to no window, or to another client's window. So this function
// checks the window before selecting events on the window.
void WindowManager::readReplies() {
  const auto cookies = std::exchange(pendingReplies_, std::nullopt);
  if (!cookies) {
    return;
  }
  checkWindow_ = XCB_WINDOW_NONE;
  name_.clear();
  supportedAtoms_.clear();
  const auto supportingWmCheck =
      connection_.readProperty(cookies->supportingWmCheck, connection_.root());
  const auto supportedAtoms = connection_.readProperty(cookies->supportedAtoms, connection_.root());
  if (!supportingWmCheck || supportingWmCheck->numbers().empty()) {
    return;
  }
  const xcb_window_t window = supportingWmCheck->numbers().front();
  if (!isSupportingWmCheckWindow(window)) {
    return;
  }
  selectEvents(connection_, window, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  if (!isSupportingWmCheckWindow(window)) {  // destroyed before the events were selected
    connection_.markDestroyed(window);
    return;
  }
  checkWindow_ = window;
  if (supportedAtoms) {
    supportedAtoms_ = supportedAtoms->numbers();
  }
}

// A window manager sets _NET_SUPPORTING_WM_CHECK on the root window and on a window of its own.
// Both values are the id of its own window.
bool WindowManager::isSupportingWmCheckWindow(xcb_window_t window) {
  const auto check =
      connection_.readPropertyIfWindowExists(window, connection_.atom(Atom::NetSupportingWmCheck));
  return check && check->numbers() == std::vector{window};
}

bool WindowManager::handle(const xcb_generic_event_t& event) {
  readReplies();
  if (typeOf(event) == XCB_DESTROY_NOTIFY) {
    const auto notice = eventAs<xcb_destroy_notify_event_t>(event);
    if (notice.window != checkWindow_ || checkWindow_ == XCB_WINDOW_NONE) {
      return false;
    }
    connection_.markDestroyed(checkWindow_);
    requestProperties();
    readReplies();
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
  const xcb_window_t previousWindow = checkWindow_;
  requestProperties();
  readReplies();
  return checkWindow_ != previousWindow;
}

bool WindowManager::supports(Atom feature) const {
  return std::ranges::find(supportedAtoms_, connection_.atom(feature)) != supportedAtoms_.end();
}

bool WindowManager::isPresent() {
  readReplies();
  return checkWindow_ != XCB_WINDOW_NONE;
}

bool WindowManager::supportsActivation() { return isPresent() && supports(Atom::NetActiveWindow); }

bool WindowManager::isStackingChange(const xcb_generic_event_t& event) const {
  if (typeOf(event) != XCB_PROPERTY_NOTIFY) {
    return false;
  }
  const auto notice = eventAs<xcb_property_notify_event_t>(event);
  return notice.window == connection_.root() &&
         notice.atom == connection_.atom(Atom::NetClientListStacking);
}

std::optional<std::vector<xcb_window_t>> WindowManager::readStackingOrder() {
  if (!isPresent() || !supports(Atom::NetClientListStacking)) {
    return std::nullopt;
  }
  const auto order =
      connection_.readProperty(connection_.root(), connection_.atom(Atom::NetClientListStacking));
  return order ? std::optional(order->numbers()) : std::nullopt;
}

void WindowManager::requestActivation(xcb_window_t window, xcb_timestamp_t time) {
  sendToWindowManager(connection_, window, Atom::NetActiveWindow, {kSourceApplication, time});
}

void WindowManager::requestIconify(xcb_window_t window) {
  sendToWindowManager(connection_, window, Atom::WmChangeState, {XCB_ICCCM_WM_STATE_ICONIC});
}

// A window manager may set its name after it has announced itself. So this function reads the name
// again while the name is empty.
const std::string& WindowManager::name() {
  if (name_.empty()) {
    if (const auto property = connection_.readPropertyIfWindowExists(
            checkWindow_, connection_.atom(Atom::NetWmName))) {
      name_ = property->text();
    }
  }
  return name_;
}

// Fluxbox announces support for _NET_REQUEST_FRAME_EXTENTS, but sends no reply.
bool WindowManager::repliesToFrameExtentsRequests() {
  return isPresent() && supports(Atom::NetRequestFrameExtents) && !name().starts_with("Fluxbox");
}

std::optional<NSWindowStyleMask> WindowManager::readOfferedControls(xcb_window_t window) {
  if (!isPresent()) {
    return NSWindowStyleMaskBorderless;  // 0: no controls
  }
  const std::string& managerName = name();
  for (const auto& [namePrefix, removableControls] : kUnreliableWindowManagers) {
    if (managerName.starts_with(namePrefix)) {
      return kControls & ~removableControls;
    }
  }
  if (!supports(Atom::NetWmAllowedActions)) {
    return std::nullopt;
  }
  const auto actions =
      connection_.readProperty(window, connection_.atom(Atom::NetWmAllowedActions));
  const std::vector<std::uint32_t> allowed =
      actions ? actions->numbers() : std::vector<std::uint32_t>();
  NSWindowStyleMask controls = NSWindowStyleMaskBorderless;  // 0: no controls
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
