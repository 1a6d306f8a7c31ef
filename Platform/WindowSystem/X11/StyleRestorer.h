#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Finishes restoring the hints of adopted windows that had no _MOTIF_WM_HINTS. Some window
/// managers ignore the deletion of the property. So `WindowStyle::restore` writes a value that
/// allows everything, and this class deletes the property when the window manager has read the
/// value, or after `kWindowManagerDelay`. Without a window manager it deletes the property at once.
class StyleRestorer final : public NonCopyable {
 public:
  StyleRestorer(Connection& connection, WindowManager& windowManager, WindowTable& windows);

  /// Call this after each call that may restore the window's style.
  void begin(Window& window);
  /// Processes an event that may show that the window manager has read the hints.
  void handle(const xcb_generic_event_t& event);
  /// The time at which `check` has work to do; `kNever` if it has none.
  [[nodiscard]] Nanoseconds deadline() const;
  /// Deletes the property of each window whose deadline has come.
  void check(Nanoseconds now);
  /// Deletes the window's property if it must still be deleted. Blocks until the window manager has
  /// read the hints, or for `kWindowManagerDelay` after `begin`.
  void finish(Window& window);

 private:
  [[nodiscard]] bool isReply(const Window& window, const xcb_generic_event_t& event) const;

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
};

}  // namespace vel::x11
