#include "Tests/Support/X11/Xwayland.h"

namespace vel::test {

bool hasXwayland() { return true; }

std::unique_ptr<Compositor> startXwayland(Manager manager) {
  return startCompositorWithXwayland(manager == Manager::XwaylandSway ? CompositorKind::Sway
                                                                      : CompositorKind::Weston);
}

}  // namespace vel::test
