#include "Platform/WindowSystem/X11/StateRequestRelay.h"

#include <algorithm>

#include "Platform/WindowSystem/X11/ControlsMonitor.h"
#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// Values in a _NET_WM_STATE message. The message contains an action, two states and a source
// indication.
constexpr std::uint32_t kActionAdd = 1;
constexpr std::uint32_t kActionToggle = 2;
constexpr std::uint32_t kSourcePager = 2;

}  // namespace

StateRequestRelay::StateRequestRelay(Connection& connection, WindowManager& windowManager,
                                     WindowTable& windows)
    : connection_(connection), windowManager_(windowManager), windows_(windows) {}

void StateRequestRelay::prepareOverride(Window& window, NSWindowStyleMask styleMask) {
  windowManager_.selectStateRequests(WindowManager::StateRequests::Received);
  if (window.isMaximizedOrFullscreen && (styleMask & NSWindowStyleMaskResizable) == 0) {
    window.style->allowResizing();
  }
}

void StateRequestRelay::stopIfUnused() {
  const bool isUsed = std::ranges::any_of(
      windows_, [](const auto& entry) { return entry.second.style->isOverridden(); });
  if (!isUsed) {
    windowManager_.selectStateRequests(WindowManager::StateRequests::Ignored);
  }
}

void StateRequestRelay::allowResizingOfMaximizedAndFullscreenWindows() {
  for (auto& [id, window] : windows_) {
    if (window.isMaximizedOrFullscreen && window.style->preventsResizing()) {
      allowResizing(window);
    }
  }
}

void StateRequestRelay::allowResizing(Window& window) {
  window.style->allowResizing();
  ControlsMonitor::scheduleCheck(window);
}

// The request that we send also comes back as an event. `preventsResizing` is then false, so we
// ignore the event. If the window manager has already accepted the owner's request, our request has
// no effect, because our request always adds the states. An owner that asks to toggle the states
// also wants to add them: if the window had one of the states, `preventsResizing` would be false.
void StateRequestRelay::handle(const xcb_client_message_event_t& message) {
  Window* const window = windows_.find(message.window);
  if (window == nullptr || !window->style->preventsResizing() || !needsResizing(message) ||
      !windowManager_.isPresent()) {
    return;
  }
  allowResizing(*window);
  const auto& data = message.data.data32;
  sendToWindowManager(connection_, window->id, Atom::NetWmState,
                      {kActionAdd, data[1], data[2], data[3], data[4]});
}

// Ignores the requests of pagers: a pager sends them for the user, not for the owner.
bool StateRequestRelay::needsResizing(const xcb_client_message_event_t& message) const {
  const auto& data = message.data.data32;
  if (message.type != connection_.atom(Atom::NetWmState) || message.format != 32 ||
      (data[0] != kActionAdd && data[0] != kActionToggle) || data[3] == kSourcePager) {
    return false;
  }
  return std::ranges::any_of(kMaximizedAndFullscreenStates, [&](Atom state) {
    return data[1] == connection_.atom(state) || data[2] == connection_.atom(state);
  });
}

}  // namespace vel::x11
