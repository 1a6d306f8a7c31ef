#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Lets the owner of an adopted window maximise the window or make it fullscreen while the window's
/// hints are overridden. Without the function for resizing, most window managers refuse to maximise
/// the window, and some give a fullscreen window a wrong size afterwards. An owner sends its
/// request, a _NET_WM_STATE message, through the root window, so this class receives a copy.
/// This class then restores the functions for resizing and maximising, and sends the request again.
/// So the window manager receives the new hints before the second request.
class StateRequestRelay final : public NonCopyable {
 public:
  StateRequestRelay(Connection& connection, WindowManager& windowManager, WindowTable& windows);

  /// Starts receiving requests. Call this before overriding the hints of an adopted window.
  void start();
  /// Stops receiving requests if no window's hints are overridden. While the relay receives
  /// requests, the server also sends events about every top-level window.
  void stopIfUnused();
  /// Processes a ClientMessage event.
  void handle(const xcb_client_message_event_t& message);

 private:
  [[nodiscard]] bool needsResizing(const xcb_client_message_event_t& message) const;

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
};

}  // namespace vel::x11
