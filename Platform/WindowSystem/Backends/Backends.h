#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

/// Opens a window system by name: "headless", "x11" or "wayland" (if the build includes them), or
/// "auto". An empty `displayName` means the display that the environment names.
///
/// `hostWindow` is the window that the caller will adopt, if any. If it is a Wayland surface,
/// "wayland" and "auto" use the connection of the surface. Otherwise "auto" opens the first of
/// these window systems that works:
/// - Wayland, if `WAYLAND_DISPLAY` names a compositor, `displayName` is empty and there is no
///   `hostWindow`
/// - X11
/// - "headless"
///
/// On failure, sets `error` to the reason and returns null.
VEL_EXPORT std::unique_ptr<WindowSystem> makeWindowSystem(
    std::string_view name, const std::string& displayName, std::string& error,
    const std::optional<NativeWindow>& hostWindow = std::nullopt);

}  // namespace vel
