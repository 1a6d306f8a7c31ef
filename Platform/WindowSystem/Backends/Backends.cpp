// Only this file knows which back ends the build includes.
#include "Platform/WindowSystem/Backends/Backends.h"

#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"
#ifdef VEL_HAS_X11
#include "Platform/WindowSystem/X11/X11WindowSystem.h"
#endif

namespace vel {

namespace {

std::unique_ptr<WindowSystem> makeX11([[maybe_unused]] const std::string& displayName,
                                      std::string& error) {
#ifdef VEL_HAS_X11
  return X11WindowSystem::open(displayName, error);
#else
  error = "the X11 display is not built in";
  return nullptr;
#endif
}

}  // namespace

std::unique_ptr<WindowSystem> makeWindowSystem(std::string_view name,
                                               const std::string& displayName, std::string& error) {
  if (name == "x11") {
    return makeX11(displayName, error);
  }
  if (name == "auto") {
    std::string ignoredError;
    if (auto x11 = makeX11(displayName, ignoredError)) {
      return x11;
    }
  }
  if (name == "headless" || name == "auto") {
    return std::make_unique<HeadlessWindowSystem>();
  }
  error = "no such display: " + std::string(name);
  return nullptr;
}

}  // namespace vel
