#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Reports the controls that the window manager still offers although a window's style mask
/// excludes them.
class ControlsMonitor final : public NonCopyable {
 public:
  ControlsMonitor(Connection& connection, WindowManager& windowManager, WindowTable& windows,
                  ReportQueue& reports);

  /// Processes an event that may announce a change of the offered controls.
  void handle(const xcb_generic_event_t& event);
  /// Another window manager may offer other controls: checks all windows that have a report.
  void windowManagerChanged();
  /// The window's style mask is set: checks the window when the window manager has had time to act.
  static void styleMaskChanged(Window& window);
  /// The window's hints have changed: checks the window when the window manager has had time to
  /// act, and reports only other controls than before.
  static void scheduleCheck(Window& window);

  /// When `check` has work to do; `kNever` if it has none.
  [[nodiscard]] Nanoseconds deadline() const;
  /// Checks each window whose deadline has come. Blocks for a round trip for each of them.
  void check(Nanoseconds now);

 private:
  void checkWindow(Window& window);

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
  ReportQueue& reports_;
};

}  // namespace vel::x11
