#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Completes the restoration of the _MOTIF_WM_HINTS of an adopted window: a window that another
/// program or the host created. The property can contain a set of functions and a set of
/// decorations. If a new value does not contain one of these sets, some window managers continue to
/// apply this set of the previous value. So if the owner's value is missing or does not contain
/// both sets, the restoration takes two steps. In the first step, `WindowStyle::restore` writes a
/// value with both sets. In the second step, this class writes the owner's value. The second step
/// waits until the window manager has read the value with both sets, or until a time limit has
/// passed. Without a window manager, the second step follows immediately.
///
/// A window manager processes events in order. So after the first step, this class asks the window
/// manager to write _NET_FRAME_EXTENTS on a new window, the probe. When the probe has the property,
/// the window manager has read the value with both sets.
///
/// A few window managers do not write this property. For these window managers, this class asks for
/// a ConfigureNotify of the adopted window, and also accepts other signs that the window manager
/// has updated the window. These signs can have another cause, so the time limit is short.
class StyleRestorer final : public NonCopyable {
 public:
  StyleRestorer(Connection& connection, WindowManager& windowManager, WindowTable& windows);

  /// Schedules the second step if it is needed. Cancels a scheduled second step if the hints are
  /// overridden again. Call this after each call that may override or restore the window's style.
  void begin(Window& window);
  /// Processes an event that may show that the window manager has read the hints.
  void handle(const xcb_generic_event_t& event);
  /// The time of the earliest scheduled second step; `kNever` if no second step is scheduled.
  [[nodiscard]] Nanoseconds deadline() const;
  /// Takes the second step for each window whose deadline has passed.
  void check(Nanoseconds now);
  /// If a second step is scheduled, blocks until the window manager has read the hints or the time
  /// limit has passed, and then takes the step.
  void finish(Window& window);
  /// Cancels a scheduled second step. Call this when the window is destroyed.
  void cancel(Window& window);

 private:
  void startWaiting(Window& window);
  // Returns true if the event shows that the window manager has read the value with both sets.
  [[nodiscard]] bool showsThatHintsWereRead(const Window& window,
                                            const xcb_generic_event_t& event) const;

  Connection& connection_;
  WindowManager& windowManager_;
  WindowTable& windows_;
};

}  // namespace vel::x11
