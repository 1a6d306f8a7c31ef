// Only builds with the Wayland back end compile this file.
#include "Tests/Support/X11/Xwayland.h"

namespace vel::test {

bool canStartXwayland() { return true; }

std::unique_ptr<Compositor> startXwayland(Manager compositor) {
  return startCompositorWithXwayland(compositor == Manager::XwaylandSway ? CompositorKind::Sway
                                                                         : CompositorKind::Weston);
}

}  // namespace vel::test
