#pragma once

#include <map>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Lets the owner of an adopted window maximise the window or make it fullscreen while we override
/// the window's hints. The owner is the program that created the window.
///
/// Our value of _MOTIF_WM_HINTS may prevent resizing and maximising. Most window managers then
/// refuse to maximise the window. Some window managers give the window a wrong size when its
/// fullscreen state ends. So when the owner requests one of these states, this class first writes
/// hints that allow resizing and maximising, and then repeats the owner's request.
///
/// Some window managers end a window's maximised or fullscreen state when the hints prevent
/// resizing. So we always allow resizing of a window that has such a state.
class StateRequestRelay final : public NonCopyable {
 public:
  StateRequestRelay(Connection& connection, WindowManager& windowManager, WindowTable& windows);

  /// Starts receiving the _NET_WM_STATE messages that owners send to the root window. If the window
  /// is maximised or fullscreen, ensures that our hints for `styleMask` allow resizing. Call this
  /// before setting the style mask of an adopted window.
  void prepareOverride(Window& window, NSWindowStyleMask styleMask);
  /// Stops receiving the messages if no window's hints are overridden. Call this after each
  /// operation that may restore hints. Receiving the messages is expensive: the server then sends
  /// events about every top-level window.
  void stopIfUnused();
  /// Call this after `WindowMonitor::updateChangedWindows`.
  void allowResizingOfMaximizedAndFullscreenWindows();
  /// Processes a ClientMessage event.
  void handle(const xcb_client_message_event_t& message);
  /// Repeats the requests that the owners have not revoked. Process all events that have arrived
  /// before calling this: a later message may revoke a request.
  void repeatRequests();

 private:
  static void allowResizing(Window& window);
  // Requests one or two states. `secondState` may be XCB_ATOM_NONE.
  void requestStates(xcb_window_t window, xcb_atom_t state, xcb_atom_t secondState);
  [[nodiscard]] bool isOwnersStateRequest(const xcb_client_message_event_t& message) const;

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
  // For each window, the states that the owner has requested since the last `repeatRequests`. Does
  // not contain revoked requests.
  std::map<xcb_window_t, std::vector<xcb_atom_t>> requestedStates_;
};

}  // namespace vel::x11
