#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

/// The running window manager. This class ignores a window manager that does not support the
/// extended window manager hints (EWMH). A window manager may start, end and be replaced at any
/// time. The constructor only requests the window manager's properties. The replies are read when
/// they are first needed, so that opening the display does not block for a round trip.
class WindowManager final : public NonCopyable {
 public:
  explicit WindowManager(Connection& connection);

  /// Processes an event. Returns true if a window manager has started or ended.
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

  /// Asks the window manager to give `window` the focus. `time` is the server time in the request.
  /// A window manager may refuse the request if `time` is old.
  void requestActivation(xcb_window_t window, xcb_timestamp_t time);
  void requestIconify(xcb_window_t window);

  /// Returns the controls (close, miniaturise, resize) that the window manager offers for `window`.
  /// Returns 0 if no window manager is running. If the _NET_WM_ALLOWED_ACTIONS of the window
  /// manager is known to be unreliable, returns the controls that the window manager never removes.
  /// Otherwise returns no value if the window manager does not support this property. May block for
  /// round trips.
  std::optional<NSWindowStyleMask> readOfferedControls(xcb_window_t window);

  /// Returns true if the window manager replies to _NET_REQUEST_FRAME_EXTENTS. May block for a
  /// round trip.
  [[nodiscard]] bool repliesToFrameExtentsRequests();

  /// Whether we receive copies of the state requests: the _NET_WM_STATE messages that clients send
  /// to the window manager.
  enum class StateRequests : std::uint8_t { Ignored, Received };
  void selectStateRequests(StateRequests stateRequests);

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
  xcb_window_t checkWindow_ = XCB_WINDOW_NONE;  // None if no window manager is running
  std::string name_;                            // empty until it has been read
  std::vector<std::uint32_t> supportedAtoms_;   // the value of _NET_SUPPORTED
  StateRequests stateRequests_ = StateRequests::Ignored;
};

}  // namespace vel::x11
