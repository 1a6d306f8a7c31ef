#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

/// Opens a window system on a display. On failure, sets `error` to the reason and returns null.
using WindowSystemOpener = std::unique_ptr<WindowSystem> (*)(const std::string& displayName,
                                                             std::string& error);
/// Makes the host's native event loop call `runPass`, as `runPassesInHostLoop` describes. Does
/// nothing if `windowSystem` has no native event loop.
using HostLoopConnector = void (*)(WindowSystem& windowSystem, std::function<void()> runPass);

/// Lets `makeWindowSystem` open a window system of another library. The other library calls this
/// function when it is loaded.
VEL_EXPORT void addWindowSystem(std::string_view name, WindowSystemOpener open,
                                HostLoopConnector connectHostLoop);

/// Sets the function that runs one pass of the run loop; an empty function removes it. If
/// `windowSystem` has a native event loop, which the host runs, this loop calls the function when
/// the run loop has something to do. Such a host does not have to run passes. The function may end
/// the application. Does nothing for other window systems.
VEL_EXPORT void runPassesInHostLoop(WindowSystem& windowSystem,
                                    const std::function<void()>& runPass);

/// Opens a window system by name: "headless", "x11" or "wayland" (if the build includes them),
/// "cocoa" (if the program links it), or "auto". An empty `displayName` means the display that the
/// environment names.
///
/// `hostWindow` is the window that the caller will adopt, if any. If it is a Wayland surface,
/// "wayland" and "auto" use the connection of the surface. Otherwise "auto" opens the first of
/// these window systems that works:
/// - Wayland, if `WAYLAND_DISPLAY` names a compositor, `displayName` is empty and there is no
///   `hostWindow`
/// - Cocoa on macOS, X11 elsewhere
/// - "headless"
///
/// On failure, sets `error` to the reason and returns null.
VEL_EXPORT std::unique_ptr<WindowSystem> makeWindowSystem(
    std::string_view name, const std::string& displayName, std::string& error,
    const std::optional<NativeWindow>& hostWindow = std::nullopt);

/// Returns true if the window system can keep a modal window or a sheet in front of `window`.
bool canOwnWindows(const WindowSystem& windowSystem, const NativeWindow& window);

}  // namespace vel
