#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Reports the remaining controls: the controls (close, miniaturise, resize) that the window
/// manager still offers although a window's style mask excludes them. A check reads the controls
/// that the window manager offers for one window.
class ControlsMonitor final : public NonCopyable {
 public:
  ControlsMonitor(Connection& connection, WindowManager& windowManager, WindowTable& windows,
                  ReportQueue& reports);

  /// Processes an event that may announce a change of the offered controls.
  void handle(const xcb_generic_event_t& event);
  /// Call this when the window manager has ended, or another window manager has started. Schedules
  /// a check of each window that has had a report since its style mask was last set.
  void windowManagerChanged();
  /// Call this after the window's style mask has been set. Schedules a check, which reports the
  /// remaining controls even if they have not changed.
  static void styleMaskChanged(Window& window);
  /// Call this after the window's hints have changed. Schedules a check after
  /// `kWindowManagerDelay`, when the window manager has had time to act. The check reports the
  /// remaining controls only if they have changed.
  static void scheduleCheck(Window& window);

  /// The time of the earliest scheduled check; `kNever` if no check is scheduled.
  [[nodiscard]] Nanoseconds deadline() const;
  /// Performs each scheduled check whose time has passed. May block for round trips.
  void check(Nanoseconds now);

 private:
  void checkWindow(Window& window);

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
  ReportQueue& reports_;
};

}  // namespace vel::x11
