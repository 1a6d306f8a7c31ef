// Every back end must pass the conformance tests. This file runs them on the X11 back end, with and
// without a window manager.
#include <stdexcept>

#include "Tests/Support/X11/X11Test.h"
#include "Tests/WindowSystem/Conformance.h"

namespace vel::test {
namespace {

class X11Display final : public TestDisplay {
 public:
  explicit X11Display(Manager manager)
      : client_(server_.display()), manager_(startManager(manager, server_, client_)) {
    otherApplicationsWindow_ = openVisibleWindow({900, 600, 100, 100});
    std::string error;
    system_ = X11WindowSystem::open(server_.display(), error);
    if (system_ == nullptr) {
      throw std::runtime_error(error);
    }
  }

  WindowSystem& system() override { return *system_; }
  void userGoesToAnotherApplication() override { client_.focus(otherApplicationsWindow_); }
  void userComesBackTo(WindowHandle window) override { client_.focus(idOf(window)); }
  void userClosesWindow(WindowHandle window) override {
    client_.sendProtocolMessage(idOf(window), "WM_DELETE_WINDOW");
    client_.waitForServer();
  }
  void otherProgramResizes(WindowHandle window, CGSize size) override {
    PixelRect frame = client_.areaOnScreen(idOf(window));
    frame.width = static_cast<int>(size.width);
    frame.height = static_cast<int>(size.height);
    client_.configure(idOf(window), frame);
  }
  void otherProgramRaises(WindowHandle window, WindowHandle /*sibling*/) override {
    client_.raise(idOf(window));
    client_.requestActivation(idOf(window));
  }
  void ownerDestroysWindow(WindowHandle window) override { client_.destroy(idOf(window)); }
  void serverClosesConnection() override { server_.kill(); }
  std::optional<NativeWindow> openForeignWindow() override {
    return X11WindowId{openVisibleWindow({100, 100, 200, 160})};
  }

 private:
  static xcb_window_t idOf(WindowHandle window) { return static_cast<xcb_window_t>(window); }
  xcb_window_t openVisibleWindow(PixelRect frame) {
    const xcb_window_t window = client_.openGameWindow(frame, 0);
    eventually([this, window] { return client_.isViewable(window); });
    return window;
  }

  XServer server_;
  XClient client_;
  Process manager_;
  xcb_window_t otherApplicationsWindow_ = 0;
  std::unique_ptr<X11WindowSystem> system_;
};

template <Manager kManager>
std::unique_ptr<TestDisplay> openDisplay() {
  return std::make_unique<X11Display>(kManager);
}

Backend x11Backend(const char* name, std::unique_ptr<TestDisplay> (*open)(), bool hasManager) {
  return {.name = name,
          .open = open,
          .adoptsWindows = true,
          .capturesWindows = true,
          .miniaturizes = hasManager,
          .reportsOrder = true,
          .reportsDestruction = true,
          .reportsRemainingControls = true,
          .reportsLostDisplay = true};
}

INSTANTIATE_TEST_SUITE_P(
    X11, Conformance,
    testing::Values(x11Backend("WithoutAManager", openDisplay<Manager::None>, false),
                    x11Backend("UnderMetacity", openDisplay<Manager::Metacity>, true),
                    x11Backend("UnderOpenbox", openDisplay<Manager::Openbox>, true)),
    nameOfBackend);

}  // namespace
}  // namespace vel::test
