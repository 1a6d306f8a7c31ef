#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Deletes the _MOTIF_WM_HINTS that we have written on adopted windows, if the owner has set no
/// such property. Some window managers ignore the deletion. So `WindowStyle::restore` first writes
/// a value that allows everything. This class deletes the property when the window manager has read
/// that value, but after `kWindowManagerDelay` at the latest. Without a window manager, it deletes
/// the property immediately.
class StyleRestorer final : public NonCopyable {
 public:
  StyleRestorer(Connection& connection, WindowManager& windowManager, WindowTable& windows);

  /// Schedules the deletion if it is needed. Call this after each call that may restore the
  /// window's style.
  void begin(Window& window);
  /// Processes an event that may show that the window manager has read the hints.
  void handle(const xcb_generic_event_t& event);
  /// The time at which `check` has work to do; `kNever` if it has none.
  [[nodiscard]] Nanoseconds deadline() const;
  /// Deletes _MOTIF_WM_HINTS of each window whose deadline has passed.
  void check(Nanoseconds now);
  /// Completes a scheduled deletion. Blocks until the window manager has read the hints, but at
  /// most until `kWindowManagerDelay` after `begin`.
  void finish(Window& window);

 private:
  // Returns true if the event shows that the window manager has read the restored hints.
  [[nodiscard]] bool showsThatHintsWereRead(const Window& window,
                                            const xcb_generic_event_t& event) const;

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
};

}  // namespace vel::x11
