// Functions that write the window properties for the window manager, except the style hints (see
// `WindowStyle`).
#pragma once

#include <string_view>

#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

/// Writes the properties of a new window. `transientFor` is the value of WM_TRANSIENT_FOR. If it is
/// None, the new window does not get this property.
void writeProperties(Connection& connection, xcb_window_t window,
                     const WindowDescription& description, xcb_window_t transientFor);
/// Writes _NET_WM_NAME and WM_NAME.
void writeTitle(Connection& connection, xcb_window_t window, std::string_view title);
/// Writes _NET_WM_STATE, so that window managers treat the window as modal. Call this before each
/// request to map the window: a window manager removes the property from a withdrawn window.
void writeModalState(Connection& connection, xcb_window_t window);

}  // namespace vel::x11
