#pragma once

#include <cstdint>
#include <variant>

#include "Platform/Foundation/Geometry.h"

// The types of libwayland-client. Only the Wayland back end includes the headers of Wayland.
struct wl_display;
struct wl_surface;
struct xdg_toplevel;

namespace vel {

/// A window of any program on an X11 display.
struct X11WindowId {
  std::uint64_t id = 0;
};

/// A window of this process on macOS. The back end uses `number` if `window` is null.
struct CocoaWindow {
  /// The NSWindow of Cocoa.
  void* window = nullptr;
  /// The `windowNumber` of the NSWindow.
  std::int64_t number = 0;
};

/// A surface of this process on Wayland. The owner must keep the objects valid until the back end
/// has released the window.
struct WaylandSurface {
  wl_display* display = nullptr;
  wl_surface* surface = nullptr;
  /// The size in surface coordinates. A Wayland client cannot ask for the size of a surface.
  CGSize size;
  /// The role of the surface; null if the owner does not provide it.
  xdg_toplevel* toplevel = nullptr;
};

/// A window that another program or the host has opened. A back end adopts the windows of its own
/// window system and refuses all other windows.
using NativeWindow = std::variant<X11WindowId, CocoaWindow, WaylandSurface>;

}  // namespace vel
