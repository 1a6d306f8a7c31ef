#pragma once

#include <memory>

#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {

/// Returns true if the build contains the compositors.
bool hasXwayland();

/// Starts the compositor `manager` with Xwayland. Call this only if `hasXwayland` returns true.
std::unique_ptr<Compositor> startXwayland(Manager manager);

}  // namespace vel::test
