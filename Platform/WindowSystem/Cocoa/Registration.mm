// Lets `makeWindowSystem` open the AppKit back end in every program that links this file.
#include <utility>

#include "Platform/WindowSystem/Backends/Backends.h"
#include "Platform/WindowSystem/Cocoa/CocoaWindowSystem.h"

namespace vel {

namespace {

std::unique_ptr<WindowSystem> openCocoa(const std::string& /*displayName*/, std::string& error) {
  return CocoaWindowSystem::open(error);
}

void connectHostLoop(WindowSystem& windowSystem, std::function<void()> runPass) {
  if (auto* const cocoa = dynamic_cast<CocoaWindowSystem*>(&windowSystem)) {
    cocoa->runPassesInHostLoop(std::move(runPass));
  }
}

struct Registration {
  Registration() { addWindowSystem("cocoa", openCocoa, connectHostLoop); }
};
[[maybe_unused]] const Registration kRegistration;

}  // namespace

}  // namespace vel
