#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

/// Opens a window system by name: "headless", "x11" where it is built in, or "auto" for the best
/// one that answers. `displayName` names the display, empty for the environment's. None, with the
/// reason in `error`, where it cannot be had.
VEL_EXPORT std::unique_ptr<WindowSystem> makeWindowSystem(std::string_view name,
                                                          const std::string& displayName,
                                                          std::string& error);

}  // namespace vel
