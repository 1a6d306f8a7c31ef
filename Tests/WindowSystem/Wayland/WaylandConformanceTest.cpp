// Runs the conformance suite on the Wayland back end.
#include <stdexcept>

#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/WindowSystem/Conformance.h"

namespace vel::test {
namespace {

/// The frame that libdecor draws has a title bar of this height.
constexpr int kTitleHeight = 24;

enum class ConnectionOwner : std::uint8_t { Host, BackEnd };

/// A compositor and the back end. The back end shares the connection of a host in this process, or
/// opens its own connection.
class WaylandDisplay final : public TestDisplay {
 public:
  WaylandDisplay(CompositorKind kind, ConnectionOwner owner) : compositor_(startCompositor(kind)) {
    std::string error;
    if (owner == ConnectionOwner::Host) {
      host_ =
          std::make_unique<SurfaceHost>(compositor_->display(), "game", CGSize{200, 160}, 0x208040);
      system_ = WaylandWindowSystem::share(host_->display(), error);
    } else {
      system_ = WaylandWindowSystem::open(compositor_->display(), error);
    }
    if (system_ == nullptr) {
      throw std::runtime_error(error);
    }
  }

  WindowSystem& system() override { return *system_; }
  void userGoesToAnotherApplication() override { compositor_->focusWindow("other"); }
  void userComesBackTo(WindowHandle window) override {
    compositor_->focusWindow(setUniqueTitle(window));
  }
  void userClosesWindow(WindowHandle window) override {
    compositor_->closeWindow(setUniqueTitle(window));
  }
  void otherProgramResizes(WindowHandle window, CGSize size) override {
    // The size that the compositor sets includes the title bar. On the connection of the host, the
    // back end draws no title bar.
    const int titleHeight = host_ == nullptr ? kTitleHeight : 0;
    compositor_->resizeWindow(setUniqueTitle(window), static_cast<int>(size.width),
                              static_cast<int>(size.height) + titleHeight);
  }
  void otherProgramRaises(WindowHandle window, WindowHandle /*sibling*/) override {
    compositor_->focusWindow(setUniqueTitle(window));
  }
  void ownerDestroysWindow(WindowHandle /*window*/) override {}
  void serverClosesConnection() override { compositor_->kill(); }
  std::optional<NativeWindow> openForeignWindow() override {
    return host_ == nullptr ? std::nullopt : std::optional<NativeWindow>(host_->window());
  }

 private:
  // Returns the new title.
  std::string setUniqueTitle(WindowHandle window) {
    std::string title = "window " + nameOf(window);
    system_->setTitle(window, title);
    return title;
  }

  std::unique_ptr<Compositor> compositor_;
  SurfaceHost other_{compositor_->display(), "other", {100, 100}, 0x804020};
  std::unique_ptr<SurfaceHost> host_;  // null if the back end has opened the connection
  std::unique_ptr<WaylandWindowSystem> system_;
};

template <CompositorKind kKind, ConnectionOwner kOwner>
std::unique_ptr<TestDisplay> openDisplay() {
  return std::make_unique<WaylandDisplay>(kKind, kOwner);
}

template <CompositorKind kKind, ConnectionOwner kOwner>
Backend backendNamed(const char* name) {
  return {.name = name,
          .open = openDisplay<kKind, kOwner>,
          .adoptsWindows = kOwner == ConnectionOwner::Host,
          .capturesWindows = false,
          .miniaturizes = false,
          .reportsOrder = false,
          .reportsDestruction = false,
          .reportsRemainingControls = true,
          .reportsLostDisplay = true};
}

INSTANTIATE_TEST_SUITE_P(
    Wayland, Conformance,
    testing::Values(
        backendNamed<CompositorKind::Sway, ConnectionOwner::Host>("UnderSway"),
        backendNamed<CompositorKind::Weston, ConnectionOwner::Host>("UnderWeston"),
        backendNamed<CompositorKind::Weston, ConnectionOwner::BackEnd>("UnderWestonWithFrames")),
    nameOfBackend);

}  // namespace
}  // namespace vel::test
