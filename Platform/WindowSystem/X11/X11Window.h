#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Cover.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Platform/WindowSystem/X11/WindowStyle.h"

namespace vel::x11 {

/// How long a window manager is given to act on hints before its word is taken.
inline constexpr Nanoseconds kTimeForWindowManager = kNanosecondsPerSecond / 5;

[[nodiscard]] inline Nanoseconds steadyNow() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

enum class WindowOrigin : std::uint8_t { Own, Adopted };

/// What the back end knows of one window. Its handle is its X id.
struct Window {
  xcb_window_t id = XCB_WINDOW_NONE;
  WindowOrigin origin = WindowOrigin::Own;
  WindowKind kind = WindowKind::Plain;
  bool movableByBackground = false;
  /// The content, on the screen.
  PixelRect frame;
  /// Of a window of ours: whether it has been put on screen, miniaturised or not. Somebody else's
  /// always counts as that.
  bool ordered = false;
  bool miniaturized = false;
  /// Of a window of ours: whether it has been put on screen just now, and an event will say so.
  bool appears = false;
  /// It is to have the focus as soon as it can.
  bool wantsFocus = false;
  /// The window just below it, among those that lie beside it.
  xcb_window_t above = XCB_WINDOW_NONE;
  /// Events say that its frame, its mapping or its state is another; or that its hints are.
  bool changed = false;
  bool hintsChanged = false;
  /// When to see which controls the window manager has left, and what was reported last.
  Nanoseconds controlsDue = kNever;
  std::optional<NSWindowStyleMask> controlsTold;
  std::unique_ptr<WindowStyle> style;
  std::unique_ptr<Cover> cover;

  [[nodiscard]] bool isOwn() const { return origin == WindowOrigin::Own; }
  [[nodiscard]] WindowHandle handle() const { return static_cast<WindowHandle>(id); }
};

}  // namespace vel::x11
