#pragma once

#include <functional>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

enum class FocusChange : std::uint8_t { None, In, Out };

/// Returns the meaning of a FocusIn or FocusOut event: the event window gained the input focus,
/// lost it, or neither. Three kinds of events mean no change: a move of the focus between the
/// window and its children, a keyboard grab, and a focus that follows the pointer.
[[nodiscard]] FocusChange focusChange(const xcb_generic_event_t& event);

/// Follows the input focus, requests it, and reports its changes. The application is active while
/// one of the back end's windows has the focus.
class FocusTracker final : public NonCopyable {
 public:
  /// Handles the events that have already arrived. Returns true if there were any.
  using HandleEvents = std::function<bool()>;

  FocusTracker(Connection& connection, WindowManager& windowManager, WindowTable& windows,
               ReportQueue& reports);

  /// Processes a FocusIn or FocusOut event.
  void handle(const xcb_generic_event_t& event);
  /// Call this when the window manager has ended, or another window manager has started.
  void windowManagerChanged();
  /// Call this when the back end has adopted a window that it did not create. `hasFocus` is true if
  /// the window has the focus. May block for a round trip.
  void windowAdopted(xcb_window_t window, bool hasFocus);
  /// Call this when `orderOut` has unmapped the window.
  void windowWithdrawn(xcb_window_t window);
  /// Call this when the window has been released or destroyed.
  void windowRemoved(xcb_window_t window);
  /// Call this when the connection is lost.
  void reset();

  /// Requests the focus for a window on screen. Returns true if the back end must set the focus
  /// itself. `Window::wantsFocus` is then true, and `WindowMonitor::update` sets the focus when the
  /// window is viewable. Returns false if the window already has the focus, or if the window
  /// manager processes the request. May block for a round trip.
  bool requestFocus(Window& window);

  /// Returns true if `reportChanges` must be called even if no event arrives.
  [[nodiscard]] bool hasPendingChanges() const { return hasPendingChanges_; }
  /// Reports the changes since the previous call. Before reporting that the application has lost
  /// the focus, calls `handleEvents`: a FocusIn event may show that another window of the back end
  /// has the focus. Blocks for round trips if the focus may have moved.
  void reportChanges(const HandleEvents& handleEvents);

 private:
  void findFocusAfterLoss(const HandleEvents& handleEvents);

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
  ReportQueue& reports_;
  xcb_window_t focus_ = XCB_WINDOW_NONE;  // None if no window of the back end has the focus
  xcb_window_t reportedFocus_ = XCB_WINDOW_NONE;
  // True if the focus may have left the application since the last call of `reportChanges`.
  bool mayHaveLostFocus_ = false;
  // True after the window manager has ended: the server may then have moved the focus to the root
  // window. The next check for a lost focus returns the focus to its window and clears this flag.
  bool hasWindowManagerEnded_ = false;
  bool hasPendingChanges_ = false;
  // True even before the first window gets the focus, because NSApplication starts active.
  bool isActive_ = true;
  // The server time at which a window of the back end last got the focus. FocusIn events contain no
  // time, so the time is requested after the event.
  xcb_timestamp_t focusTime_ = XCB_CURRENT_TIME;
};

}  // namespace vel::x11
