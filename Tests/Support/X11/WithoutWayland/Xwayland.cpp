// Only builds without the Wayland back end compile this file.
#include "Tests/Support/X11/Xwayland.h"

namespace vel::test {

bool canStartXwayland() { return false; }

std::unique_ptr<Compositor> startXwayland(Manager /*compositor*/) { return nullptr; }

}  // namespace vel::test
