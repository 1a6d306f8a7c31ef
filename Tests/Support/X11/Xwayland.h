#pragma once

#include <memory>

#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {

/// Returns true if the build contains the Wayland back end.
bool canStartXwayland();

/// Starts a compositor and its Xwayland server. `compositor` must be `XwaylandSway` or
/// `XwaylandWeston`. Call this only if `canStartXwayland` returns true.
std::unique_ptr<Compositor> startXwayland(Manager compositor);

}  // namespace vel::test
