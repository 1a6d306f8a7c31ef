#include "Tests/Support/Wayland/Compositor.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "Tests/Support/Wayland/Sway.h"
#include "Tests/Support/Wayland/Weston.h"

namespace vel::test {

namespace {

std::filesystem::path makeFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "wayland-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  }
  return name;
}

}  // namespace

// The compositor and `user_`, which simulates the user, are clients of the X server `server_`.
Compositor::Compositor(const std::vector<std::string>& serverArguments)
    : server_(serverArguments), user_(server_.display()), folder_(makeFolder()) {}

Compositor::~Compositor() {
  process_.end();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void Compositor::start(std::vector<std::string> command) {
  process_ = Process(std::move(command), server_.display());
}

void Compositor::drag(int fromX, int fromY, int toX, int toY) {
  user_.movePointer(fromX, fromY);
  user_.pressButton();
  user_.movePointer(toX, toY);
  user_.releaseButton();
}

std::unique_ptr<Compositor> startCompositor(CompositorKind kind) {
  if (kind == CompositorKind::Weston) {
    return std::make_unique<Weston>();
  }
  return std::make_unique<Sway>();
}

std::unique_ptr<Compositor> startCompositorWithXwayland(CompositorKind kind) {
  if (kind == CompositorKind::Weston) {
    return std::make_unique<Weston>(Weston::Options{.hasXwayland = true});
  }
  return std::make_unique<Sway>(Sway::Options{.hasXwayland = true});
}

std::string nameOf(CompositorKind kind) {
  return kind == CompositorKind::Weston ? "Weston" : "Sway";
}

}  // namespace vel::test
