#pragma once

#include <memory>
#include <optional>

#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Cover.h"
#include "Platform/WindowSystem/X11/PixelRect.h"
#include "Platform/WindowSystem/X11/Timing.h"
#include "Platform/WindowSystem/X11/WindowStyle.h"

namespace vel::x11 {

enum class WindowOrigin : std::uint8_t { Created, Adopted };

/// One window of the back end, and its state. The window's handle is its X id.
struct Window {
  xcb_window_t id = XCB_WINDOW_NONE;
  WindowOrigin origin = WindowOrigin::Created;
  WindowKind kind = WindowKind::Plain;
  bool isMovableByBackground = false;
  /// The frame of the content, in pixels of the root window.
  PixelRect frame;
  /// For a window that this back end has created: true from `orderFront` until `orderOut`, even
  /// while the window is miniaturised. For an adopted window: always true.
  bool isOrderedIn = false;
  bool isMiniaturized = false;
  /// True for an adopted window that is fullscreen, or maximised in at least one direction.
  bool isMaximizedOrFullscreen = false;
  /// True from the MapWindow request of `orderFront` until `WindowMonitor` next reads the window's
  /// state, or until `orderOut`.
  bool isBeingMapped = false;
  /// True if the window gets the input focus as soon as it is viewable.
  bool wantsFocus = false;
  /// The sibling directly below this window, from ConfigureNotify.
  xcb_window_t siblingBelow = XCB_WINDOW_NONE;
  /// True if `WindowMonitor` must read the window's frame, map state, WM_STATE and _NET_WM_STATE
  /// from the server again.
  bool hasStateChanges = false;
  /// True if `WindowMonitor` must read _MOTIF_WM_HINTS and WM_NORMAL_HINTS from the server again.
  bool hasHintChanges = false;
  /// The time at which `ControlsMonitor` checks which controls (close, miniaturise, resize) the
  /// window manager offers. `kNever` if no check is scheduled.
  Nanoseconds controlsDeadline = kNever;
  /// The controls in the last `remainingControlsDetected` report: the controls that the window
  /// manager still offers although the style mask excludes them. No value if there has been no
  /// report since the style mask was last set.
  std::optional<NSWindowStyleMask> reportedRemainingControls = std::nullopt;
  /// The latest time at which `StyleRestorer` calls `WindowStyle::finishRestoring`. `kNever` if
  /// `StyleRestorer` has not scheduled this call.
  Nanoseconds restorationDeadline = kNever;
  /// The probe: a window on which `StyleRestorer` asks the window manager to write a property. When
  /// the probe has the property, the window manager has read the hints that `WindowStyle::restore`
  /// wrote. None if there is no probe.
  xcb_window_t restorationProbe = XCB_WINDOW_NONE;
  std::unique_ptr<WindowStyle> style = nullptr;
  std::unique_ptr<Cover> cover = nullptr;

  [[nodiscard]] bool isAdopted() const { return origin == WindowOrigin::Adopted; }
  [[nodiscard]] bool isOnScreen() const { return isOrderedIn && !isMiniaturized; }
  [[nodiscard]] WindowHandle handle() const { return static_cast<WindowHandle>(id); }
};

}  // namespace vel::x11
