// Runs the conformance suite on the Wayland back end.
#include <stdexcept>

#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/WindowSystem/Conformance.h"

namespace vel::test {
namespace {

/// The back end works on the connection of a host in the same process.
class WaylandDisplay final : public TestDisplay {
 public:
  explicit WaylandDisplay(CompositorKind kind) : compositor_(startCompositor(kind)) {
    std::string error;
    system_ = WaylandWindowSystem::share(host_.display(), error);
    if (system_ == nullptr) {
      throw std::runtime_error(error);
    }
  }

  WindowSystem& system() override { return *system_; }
  void userGoesToAnotherApplication() override { compositor_->focusWindow("other"); }
  void userComesBackTo(WindowHandle window) override {
    compositor_->focusWindow(nameWindow(window));
  }
  void userClosesWindow(WindowHandle window) override {
    compositor_->closeWindow(nameWindow(window));
  }
  void otherProgramResizes(WindowHandle window, CGSize size) override {
    compositor_->resizeWindow(nameWindow(window), static_cast<int>(size.width),
                              static_cast<int>(size.height));
  }
  void otherProgramRaises(WindowHandle window, WindowHandle /*sibling*/) override {
    compositor_->focusWindow(nameWindow(window));
  }
  void ownerDestroysWindow(WindowHandle /*window*/) override {}
  void serverClosesConnection() override { compositor_->kill(); }
  std::optional<NativeWindow> openForeignWindow() override { return host_.window(); }

 private:
  // Gives the window a unique title and returns the title.
  std::string nameWindow(WindowHandle window) {
    std::string title = "window " + nameOf(window);
    system_->setTitle(window, title);
    return title;
  }

  std::unique_ptr<Compositor> compositor_;
  SurfaceHost other_{compositor_->display(), "other", {100, 100}, 0x804020};
  SurfaceHost host_{compositor_->display(), "game", {200, 160}, 0x208040};
  std::unique_ptr<WaylandWindowSystem> system_;
};

template <CompositorKind kKind>
std::unique_ptr<TestDisplay> openDisplay() {
  return std::make_unique<WaylandDisplay>(kKind);
}

Backend backendWith(const char* name, std::unique_ptr<TestDisplay> (*open)()) {
  return {.name = name,
          .open = open,
          .adoptsWindows = true,
          .hasScreen = false,
          .miniaturizes = false,
          .reportsOrder = false,
          .reportsDestruction = false,
          .reportsControlsKept = true,
          .reportsLostDisplay = true};
}

INSTANTIATE_TEST_SUITE_P(
    Wayland, Conformance,
    testing::Values(backendWith("UnderSway", openDisplay<CompositorKind::Sway>),
                    backendWith("UnderWeston", openDisplay<CompositorKind::Weston>)),
    nameOfBackend);

}  // namespace
}  // namespace vel::test
