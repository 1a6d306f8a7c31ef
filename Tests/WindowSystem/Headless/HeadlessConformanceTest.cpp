// Runs the conformance suite on the headless back end.
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"
#include "Tests/WindowSystem/Conformance.h"

namespace vel::test {
namespace {

class HeadlessDisplay final : public TestDisplay {
 public:
  WindowSystem& system() override { return system_; }
  void userGoesToAnotherApplication() override { system_.userDeactivatesApplication(); }
  void userComesBackTo(WindowHandle /*window*/) override { system_.userActivatesApplication(); }
  void userClosesWindow(WindowHandle window) override { system_.userClosesWindow(window); }
  void otherProgramResizes(WindowHandle window, CGSize size) override {
    system_.userResizesWindow(window, {system_.window(window)->description.frame.origin, size});
  }
  void otherProgramRaises(WindowHandle window, WindowHandle sibling) override {
    system_.userRestacksWindows({window, sibling});
  }
  void ownerDestroysWindow(WindowHandle window) override { system_.ownerDestroysWindow(window); }
  void serverClosesConnection() override { system_.serverClosesConnection("a test"); }
  std::optional<NativeWindow> openForeignWindow() override { return std::nullopt; }

 private:
  HeadlessWindowSystem system_;
};

std::unique_ptr<TestDisplay> open() { return std::make_unique<HeadlessDisplay>(); }

INSTANTIATE_TEST_SUITE_P(Headless, Conformance,
                         testing::Values(Backend{.name = "Headless",
                                                 .open = open,
                                                 .adoptsWindows = false,
                                                 .capturesWindows = false,
                                                 .miniaturizes = true,
                                                 .reportsOrder = true,
                                                 .reportsDestruction = true,
                                                 .reportsRemainingControls = false,
                                                 .reportsLostDisplay = true}),
                         nameOfBackend);

TEST(HeadlessWindowSystemTest, AnInvalidHandleDoesNotChangeTheModalWindow) {
  HeadlessWindowSystem system;
  const WindowDescription description{.className = "Any", .title = "", .frame = {{}, {10, 10}}};
  const WindowHandle closed = system.createWindow(description);
  system.releaseWindow(closed);
  system.setModalWindow(closed);
  EXPECT_EQ(system.modalWindow(), WindowHandle::None);
  const WindowHandle modal = system.createWindow(description);
  system.setModalWindow(modal);
  system.setModalWindow(closed);
  EXPECT_EQ(system.modalWindow(), modal);
}

}  // namespace
}  // namespace vel::test
