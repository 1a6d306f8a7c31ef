// Only this file knows which back ends the build includes.
#include "Platform/WindowSystem/Backends/Backends.h"

#include <cstdlib>
#include <functional>
#include <map>
#include <utility>

#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

#ifdef VEL_HAS_WAYLAND
#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#endif
#ifdef VEL_HAS_X11
#include "Platform/WindowSystem/X11/X11WindowSystem.h"
#endif

namespace vel {

namespace {

struct AddedWindowSystem {
  WindowSystemOpener open;
  HostLoopConnector connectHostLoop;
};
using AddedWindowSystems = std::map<std::string, AddedWindowSystem, std::less<>>;

// Other libraries add entries while the program is being loaded. The static objects of this file
// may not exist yet, so the first call of this function makes the map.
AddedWindowSystems& addedWindowSystems() {
  static AddedWindowSystems added;
  return added;
}

std::unique_ptr<WindowSystem> makeX11([[maybe_unused]] const std::string& displayName,
                                      std::string& error) {
#ifdef VEL_HAS_X11
  return X11WindowSystem::open(displayName, error);
#else
  error = "the X11 display is not built in";
  return nullptr;
#endif
}

std::unique_ptr<WindowSystem> makeWayland([[maybe_unused]] const std::string& displayName,
                                          [[maybe_unused]] const WaylandSurface* hostSurface,
                                          std::string& error) {
#ifdef VEL_HAS_WAYLAND
  return hostSurface != nullptr ? WaylandWindowSystem::share(hostSurface->display, error)
                                : WaylandWindowSystem::open(displayName, error);
#else
  error = "the Wayland display is not built in";
  return nullptr;
#endif
}

std::unique_ptr<WindowSystem> makeCocoa(const std::string& displayName, std::string& error) {
  const auto cocoa = addedWindowSystems().find("cocoa");
  if (cocoa == addedWindowSystems().end()) {
    error = "the Cocoa display is not built in";
    return nullptr;
  }
  return cocoa->second.open(displayName, error);
}

// Opens the kind of display that most programs on this operating system use.
std::unique_ptr<WindowSystem> makeUsual(const std::string& displayName, std::string& error) {
#ifdef __APPLE__
  return makeCocoa(displayName, error);
#else
  return makeX11(displayName, error);
#endif
}

}  // namespace

void addWindowSystem(std::string_view name, WindowSystemOpener open,
                     HostLoopConnector connectHostLoop) {
  addedWindowSystems().insert_or_assign(std::string(name),
                                        AddedWindowSystem{open, connectHostLoop});
}

void runPassesInHostLoop(WindowSystem& windowSystem, const std::function<void()>& runPass) {
  for (const auto& [name, added] : addedWindowSystems()) {
    added.connectHostLoop(windowSystem, runPass);
  }
}

std::unique_ptr<WindowSystem> makeWindowSystem(std::string_view name,
                                               const std::string& displayName, std::string& error,
                                               const std::optional<NativeWindow>& hostWindow) {
  const auto* const hostSurface = hostWindow ? std::get_if<WaylandSurface>(&*hostWindow) : nullptr;
  if (name == "wayland" || (name == "auto" && hostSurface != nullptr)) {
    return makeWayland(displayName, hostSurface, error);
  }
  if (name == "x11") {
    return makeX11(displayName, error);
  }
  if (name == "cocoa") {
    return makeCocoa(displayName, error);
  }
  if (name == "auto") {
    const char* const compositor = std::getenv("WAYLAND_DISPLAY");
    if (compositor != nullptr && *compositor != '\0' && displayName.empty() && !hostWindow) {
      std::string ignoredError;
      if (auto wayland = makeWayland({}, nullptr, ignoredError)) {
        return wayland;
      }
    }
    std::string ignoredError;
    if (auto usual = makeUsual(displayName, ignoredError)) {
      return usual;
    }
  }
  if (name == "headless" || name == "auto") {
    return std::make_unique<HeadlessWindowSystem>();
  }
  error = "no such display: " + std::string(name);
  return nullptr;
}

bool canOwnWindows([[maybe_unused]] const WindowSystem& windowSystem,
                   [[maybe_unused]] const NativeWindow& window) {
#ifdef VEL_HAS_WAYLAND
  const auto* const wayland = dynamic_cast<const WaylandWindowSystem*>(&windowSystem);
  const auto* const surface = std::get_if<WaylandSurface>(&window);
  if (wayland != nullptr && surface != nullptr) {
    return wayland->canOwnWindows(*surface);
  }
#endif
  return true;
}

}  // namespace vel
