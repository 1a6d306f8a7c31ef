#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

/// The running window manager. It may start, end or be replaced at any time. A window manager that
/// does not support the extended window manager hints (EWMH) counts as not running.
class WindowManager final : public NonCopyable {
 public:
  /// Requests the window manager's properties, but does not block for the replies. The first
  /// operation that needs the replies blocks for them.
  explicit WindowManager(Connection& connection);

  /// Processes an event. Returns true if a window manager has started, ended or been replaced.
  bool handle(const xcb_generic_event_t& event);

  /// Returns true if a window manager is running.
  [[nodiscard]] bool isPresent();
  /// Returns true if the running window manager supports _NET_ACTIVE_WINDOW.
  [[nodiscard]] bool supportsActivation();

  /// Returns true if the event announces a change of the stacking order.
  [[nodiscard]] bool isStackingChange(const xcb_generic_event_t& event) const;
  /// Returns the managed windows, back to front; no value if the window manager does not publish
  /// the stacking order. Blocks for a round trip.
  [[nodiscard]] std::optional<std::vector<xcb_window_t>> readStackingOrder();

  /// Asks the window manager to give `window` the focus. The request contains `time`, a time of the
  /// server. A window manager may refuse the request if `time` is old.
  void requestActivation(xcb_window_t window, xcb_timestamp_t time);
  void requestIconify(xcb_window_t window);

  /// Returns the controls (close, miniaturise, resize) that the window manager offers for `window`.
  /// May block for round trips. Special cases:
  /// - No window manager is running: returns 0.
  /// - The window manager is known to write an unreliable _NET_WM_ALLOWED_ACTIONS: returns the
  ///   controls that the window manager never removes.
  /// - The window manager does not support _NET_WM_ALLOWED_ACTIONS: returns no value.
  std::optional<NSWindowStyleMask> readOfferedControls(xcb_window_t window);

  /// Returns true if the window manager replies to _NET_REQUEST_FRAME_EXTENTS. May block for a
  /// round trip.
  [[nodiscard]] bool repliesToFrameExtentsRequests();

  /// Sets whether we also receive the state requests: the _NET_WM_STATE messages that clients send
  /// to the window manager.
  void setReceivesStateRequests(bool receivesStateRequests);

 private:
  struct PendingReplies {
    xcb_get_property_cookie_t supportingWmCheck;
    xcb_get_property_cookie_t supportedAtoms;
  };

  void requestProperties();
  void readReplies();
  // Returns true if a window manager has created `window` to announce itself.
  bool isSupportingWmCheckWindow(xcb_window_t window);
  // Blocks for a round trip if the name has not been read yet.
  [[nodiscard]] const std::string& name();
  [[nodiscard]] bool supports(Atom feature) const;

  Connection& connection_;
  std::optional<PendingReplies> pendingReplies_;
  // The window that the running window manager has created to announce itself. None if no window
  // manager is running.
  xcb_window_t checkWindow_ = XCB_WINDOW_NONE;
  std::string name_;                           // empty until it has been read
  std::vector<std::uint32_t> supportedAtoms_;  // the value of _NET_SUPPORTED
  bool receivesStateRequests_ = false;
};

}  // namespace vel::x11
