#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Completes the restoration of _MOTIF_WM_HINTS of an adopted window: a window that another program
/// or the host created. The creator is the owner of the window. The property can contain a set of
/// functions and a set of decorations. If a set is missing in a new value, some window managers
/// continue to apply the previous set. So if a set is missing in the owner's value, the restoration
/// can take two steps:
///
/// 1. `WindowStyle::restore` writes a value with both sets.
/// 2. This class writes the owner's value. It first waits until the window manager has read the
///    value with both sets, or until a time limit has passed. Without a window manager, this class
///    does not wait.
///
/// On request, most window managers write _NET_FRAME_EXTENTS on a window. A window manager
/// processes events in order. So after step 1, this class requests the property for a new window,
/// the probe. When the probe has the property, the window manager has read the value with both
/// sets.
///
/// Some window managers do not reply to such a request. With such a window manager, this class
/// sends a ConfigureWindow request for the adopted window. It then waits until the window manager
/// sends a ConfigureNotify or changes certain properties of the window. These events can have
/// another cause, so the time limit is shorter.
class StyleRestorer final : public NonCopyable {
 public:
  StyleRestorer(Connection& connection, WindowManager& windowManager, WindowTable& windows);

  /// Schedules step 2 if it is needed. Cancels a scheduled step 2 if the hints are overridden
  /// again. Call this after each call that may override or restore the window's style.
  void begin(Window& window);
  /// Processes an event. If the event shows that the window manager has read the value with both
  /// sets, the next `check` takes step 2.
  void handle(const xcb_generic_event_t& event);
  /// The time of the earliest scheduled step 2; `kNever` if no step 2 is scheduled.
  [[nodiscard]] Nanoseconds deadline() const;
  /// Takes step 2 for each window whose deadline has passed.
  void check(Nanoseconds now);
  /// If step 2 is scheduled, blocks until the window manager has read the value with both sets or
  /// the time limit has passed, and then takes step 2.
  void finish(Window& window);
  /// Cancels a scheduled step 2. Call this when the window is destroyed.
  void cancel(Window& window);

 private:
  void startWaiting(Window& window);
  [[nodiscard]] bool showsThatHintsWereRead(const Window& window,
                                            const xcb_generic_event_t& event) const;

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
};

}  // namespace vel::x11
