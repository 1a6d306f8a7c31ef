#pragma once

#include <map>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// The owner of an adopted window is the program that created the window. This class lets the owner
/// maximise the window or make it fullscreen while we override the window's hints. Our value of
/// _MOTIF_WM_HINTS may remove two functions: resizing and maximising. Without these functions, most
/// window managers refuse to maximise the window, and some give the window a wrong size when its
/// fullscreen state ends.
///
/// An owner requests a state with a _NET_WM_STATE message to the root window. This class selects
/// SubstructureNotify on the root window, so we receive the message too. The owner may revoke the
/// request in a later message, so this class waits until all events that have arrived have been
/// processed. Then this class restores the two functions and repeats the request. So the window
/// manager receives the new hints before the repeated request.
///
/// Some window managers also end the maximised or fullscreen state of a window that loses these
/// functions. So we do not remove the functions from a window that already has such a state.
class StateRequestRelay final : public NonCopyable {
 public:
  StateRequestRelay(Connection& connection, WindowManager& windowManager, WindowTable& windows);

  /// Starts receiving requests. If the window is already maximised or fullscreen, also ensures that
  /// `styleMask` does not remove the two functions. Call this before setting the style mask of an
  /// adopted window.
  void prepareOverride(Window& window, NSWindowStyleMask styleMask);
  /// Stops receiving requests if no window's hints are overridden. Call this after each operation
  /// that may restore hints. Receiving requests is expensive: the server then also sends events
  /// about every top-level window.
  void stopIfUnused();
  /// Restores the two functions of each window that has become maximised or fullscreen. Call this
  /// after `WindowMonitor::updateChangedWindows`.
  void allowResizingOfMaximizedAndFullscreenWindows();
  /// Processes a ClientMessage event.
  void handle(const xcb_client_message_event_t& message);
  /// Repeats the requests that the owners have not revoked. Call this when all events that have
  /// arrived have been processed.
  void repeatRequests();

 private:
  static void allowResizing(Window& window);
  // Requests one or two states. `secondState` may be XCB_ATOM_NONE.
  void requestStates(xcb_window_t window, xcb_atom_t state, xcb_atom_t secondState);
  [[nodiscard]] bool isOwnersStateRequest(const xcb_client_message_event_t& message) const;

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
  // For each window, the states that the owner has requested, and not revoked, since the last
  // `repeatRequests`.
  std::map<xcb_window_t, std::vector<xcb_atom_t>> requestedStates_;
};

}  // namespace vel::x11
