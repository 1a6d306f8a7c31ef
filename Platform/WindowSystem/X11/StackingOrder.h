#pragma once

#include <optional>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Reports changes in the stacking order of the windows on screen. A check reads the order and
/// reports a change. A window manager publishes the order in a property. Without a window manager,
/// the windows are children of the root window, and the server sends a ConfigureNotify for each
/// change.
class StackingOrder final : public NonCopyable {
 public:
  StackingOrder(Connection& connection, WindowManager& windowManager, WindowTable& windows,
                ReportQueue& reports);

  /// Processes an event that may announce a change of the order.
  void handle(const xcb_generic_event_t& event);
  /// Call this when the `WindowSystemDelegate` assumes that `window` is in front. Schedules a
  /// check, because the window manager may decide otherwise.
  void assumeInFront(WindowHandle window);
  /// Schedules a check after `kWindowManagerDelay`, which gives the window manager time to act.
  void scheduleCheck();
  /// The time of the scheduled check; `kNever` if no check is scheduled.
  [[nodiscard]] Nanoseconds deadline() const { return deadline_; }
  /// Performs the scheduled check if its time has passed. May block for a round trip.
  void check(Nanoseconds now);

 private:
  [[nodiscard]] bool hasSeveralWindows() const;
  std::vector<WindowHandle> readOrder();
  std::vector<xcb_window_t> readRootChildren();

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
  ReportQueue& reports_;
  Nanoseconds deadline_ = kNever;
  // Front to back: the last reported order, updated by `assumeInFront`.
  std::vector<WindowHandle> reportedOrder_;
};

}  // namespace vel::x11
