#pragma once

#include <memory>
#include <optional>

#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Cover.h"
#include "Platform/WindowSystem/X11/PixelRect.h"
#include "Platform/WindowSystem/X11/Timing.h"
#include "Platform/WindowSystem/X11/WindowStyle.h"

namespace vel::x11 {

/// The back end created the window, or adopted a window that another client created.
enum class WindowOrigin : std::uint8_t { Created, Adopted };

/// A window that the back end created or adopted.
struct Window {
  xcb_window_t id = XCB_WINDOW_NONE;
  WindowOrigin origin = WindowOrigin::Created;
  WindowKind kind = WindowKind::Plain;
  bool isMovableByBackground = false;
  /// The frame of the content, in pixels from the upper left corner of the root window.
  PixelRect frame;
  /// For a window that this back end has created: true from `orderFront` until `orderOut`, even
  /// while the window is miniaturised. For an adopted window: always true.
  bool isOrderedIn = false;
  bool isMiniaturized = false;
  /// True for an adopted window that is fullscreen, or maximised in at least one direction.
  bool isMaximizedOrFullscreen = false;
  /// `orderFront` sets this when it requests MapWindow. `WindowMonitor::update` and `orderOut`
  /// clear it.
  bool isBeingMapped = false;
  /// True if `WindowMonitor` must give the window the input focus when the window is viewable.
  bool wantsFocus = false;
  /// The sibling directly below this window, according to the last ConfigureNotify event.
  xcb_window_t siblingBelow = XCB_WINDOW_NONE;
  /// True if `WindowMonitor` must read the window's frame, map state, WM_STATE and _NET_WM_STATE
  /// from the server again.
  bool hasStateChanges = false;
  /// True if `WindowMonitor` must read _MOTIF_WM_HINTS and WM_NORMAL_HINTS from the server again.
  bool hasHintChanges = false;
  /// The time at which `ControlsMonitor` checks which controls (close, miniaturise, resize) the
  /// window manager offers. `kNever` if no check is scheduled.
  Nanoseconds controlsDeadline = kNever;
  /// The controls that the window manager still offers although the style mask excludes them, as
  /// last reported by `remainingControlsDetected`. A change of the style mask removes the value.
  std::optional<NSWindowStyleMask> reportedRemainingControls = std::nullopt;
  /// `StyleRestorer` calls `WindowStyle::finishRestoring` at this time or earlier. `kNever` if no
  /// call is scheduled.
  Nanoseconds restorationDeadline = kNever;
  /// A window that `StyleRestorer` has created. The window manager sets a property of this window
  /// after reading the hints that `WindowStyle::restore` wrote. None if there is no such window.
  xcb_window_t restorationProbe = XCB_WINDOW_NONE;
  std::unique_ptr<WindowStyle> style = nullptr;
  std::unique_ptr<Cover> cover = nullptr;

  [[nodiscard]] bool isAdopted() const { return origin == WindowOrigin::Adopted; }
  [[nodiscard]] bool isOnScreen() const { return isOrderedIn && !isMiniaturized; }
  [[nodiscard]] WindowHandle handle() const { return static_cast<WindowHandle>(id); }
};

}  // namespace vel::x11
