// Runs the conformance suite on the X11 back end, with and without a window manager.
#include <stdexcept>

#include "Tests/Support/X11/X11Test.h"
#include "Tests/WindowSystem/Conformance.h"

namespace vel::test {
namespace {

class X11Display final : public TestDisplay {
 public:
  explicit X11Display(Manager manager)
      : client_(server_.display()), manager_(startManager(manager, server_, client_)) {
    otherWindow_ = openVisibleGameWindow({900, 600, 100, 100});
    std::string error;
    system_ = X11WindowSystem::open(server_.display(), error);
    if (system_ == nullptr) {
      throw std::runtime_error(error);
    }
  }

  WindowSystem& system() override { return *system_; }
  void userGoesToAnotherApplication() override { client_.focus(otherWindow_); }
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
    return X11WindowId{openVisibleGameWindow({100, 100, 200, 160})};
  }

 private:
  static xcb_window_t idOf(WindowHandle window) { return static_cast<xcb_window_t>(window); }
  xcb_window_t openVisibleGameWindow(PixelRect frame) {
    const xcb_window_t game = client_.openGameWindow(frame, 0);
    eventually([this, game] { return client_.isViewable(game); });
    return game;
  }

  XServer server_;
  XClient client_;
  Process manager_;
  xcb_window_t otherWindow_ = 0;  // gets the focus when the user leaves the application
  std::unique_ptr<X11WindowSystem> system_;
};

template <Manager kManager>
std::unique_ptr<TestDisplay> openDisplay() {
  return std::make_unique<X11Display>(kManager);
}

Backend backendWith(const char* name, std::unique_ptr<TestDisplay> (*open)(), bool hasManager) {
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
    testing::Values(backendWith("WithoutAManager", openDisplay<Manager::None>, false),
                    backendWith("UnderMetacity", openDisplay<Manager::Metacity>, true),
                    backendWith("UnderOpenbox", openDisplay<Manager::Openbox>, true)),
    nameOfBackend);

}  // namespace
}  // namespace vel::test
