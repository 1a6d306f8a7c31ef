#include "Platform/WindowSystem/X11/StateRequestRelay.h"

#include <algorithm>
#include <utility>

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
  windowManager_.setReceivesStateRequests(true);
  // Some window managers end the maximised or fullscreen state of a window that cannot be resized.
  if (window.isMaximizedOrFullscreen && (styleMask & NSWindowStyleMaskResizable) == 0) {
    window.style->allowResizing();
  }
}

void StateRequestRelay::stopIfUnused() {
  const bool isUsed = std::ranges::any_of(
      windows_, [](const auto& entry) { return entry.second.style->isOverridden(); });
  if (!isUsed) {
    windowManager_.setReceivesStateRequests(false);
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

void StateRequestRelay::handle(const xcb_client_message_event_t& message) {
  const Window* const window = windows_.find(message.window);
  if (window == nullptr || !window->style->preventsResizing() || !isOwnersStateRequest(message)) {
    return;
  }
  const auto& data = message.data.data32;
  std::vector<xcb_atom_t>& states = requestedStates_[window->id];
  for (const Atom name : kMaximizedAndFullscreenStates) {
    const xcb_atom_t state = connection_.atom(name);
    if (data[1] != state && data[2] != state) {
      continue;
    }
    // A maximised or fullscreen window may always be resized, so this window has neither state. The
    // first toggle requests the state, and the second toggle revokes the request.
    const bool wasRequested = std::erase(states, state) > 0;
    if (data[0] == kActionAdd || (data[0] == kActionToggle && !wasRequested)) {
      states.push_back(state);
    }
  }
}

void StateRequestRelay::repeatRequests() {
  for (auto& [id, states] : std::exchange(requestedStates_, {})) {
    Window* const window = windows_.find(id);
    if (window == nullptr || states.empty() || !windowManager_.isPresent()) {
      continue;
    }
    // `handle` also receives the requests sent below. It ignores them, because this call makes
    // `preventsResizing` false.
    allowResizing(*window);
    const xcb_atom_t fullscreen = connection_.atom(Atom::NetWmStateFullscreen);
    if (std::erase(states, fullscreen) > 0) {
      requestStates(id, fullscreen, XCB_ATOM_NONE);
    }
    // One message requests horizontal and vertical maximising, so that the window is maximised in
    // one step.
    states.resize(2, XCB_ATOM_NONE);
    if (states[0] != XCB_ATOM_NONE) {
      requestStates(id, states[0], states[1]);
    }
  }
}

void StateRequestRelay::requestStates(xcb_window_t window, xcb_atom_t state,
                                      xcb_atom_t secondState) {
  // The window manager may have accepted the owner's request already. Then toggling would end
  // the state, but adding has no effect.
  sendToWindowManager(connection_, window, Atom::NetWmState,
                      {kActionAdd, state, secondState, kSourceApplication});
}

// Returns false for a pager's request: a pager sends requests for the user, not for the owner.
bool StateRequestRelay::isOwnersStateRequest(const xcb_client_message_event_t& message) const {
  return message.type == connection_.atom(Atom::NetWmState) && message.format == 32 &&
         message.data.data32[3] != kSourcePager;
}

}  // namespace vel::x11
