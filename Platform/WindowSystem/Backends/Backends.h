#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

/// Opens a window system by name: "headless", "x11" (if the build includes it), or "auto" for X11
/// with "headless" as the fallback. An empty `displayName` means the display that the environment
/// names. On failure, sets `error` to the reason and returns null.
VEL_EXPORT std::unique_ptr<WindowSystem> makeWindowSystem(std::string_view name,
                                                          const std::string& displayName,
                                                          std::string& error);

}  // namespace vel
