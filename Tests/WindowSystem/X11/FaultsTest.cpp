// What the back end does when the X server, the window manager or the game's window disappears, and
// after an X11 error.
#include <gmock/gmock.h>

#include <csignal>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

class X11Faults : public X11Test {
 protected:
  WindowHandle openCoveredGame() {
    game = client.openGameWindow(kGameFrame, kGreen);
    EXPECT_TRUE(waitFor([&] { return client.isViewable(game); }));
    const AdoptedWindow adoptedWindow = adopt(game);
    system().setScene(adoptedWindow.handle, whiteSceneWithSpinner(adoptedWindow.frame.size));
    system().setStyleMask(adoptedWindow.handle, NSWindowStyleMaskTitled);
    deliver();
    return adoptedWindow.handle;
  }
  /// Calls the operations of WindowSystem that change an existing window, except `releaseWindow`.
  void callEveryOperation(WindowHandle window) {
    system().orderFront(window);
    system().requestFocus(window);
    system().requestMiniaturized(window, true);
    system().requestMiniaturized(window, false);
    system().setFrame(window, CGRectMake(1, 2, 3, 4));
    system().setTitle(window, "New title");
    system().setStyleMask(window, 1);
    system().setStyleMask(window, 15);
    system().setMovableByBackground(window, true);
    system().setScene(window, whiteSceneWithSpinner({100, 100}));
    system().setModalWindow(window);
    system().setScene(window, {});
    system().setModalWindow(WindowHandle::None);
    system().orderOut(window);
  }

  xcb_window_t game = 0;
};

TEST_F(X11Faults, EveryOperationIsSafeAfterTheServerEnds) {
  const WindowHandle handle = openCoveredGame();
  server.kill();
  callEveryOperation(handle);
  EXPECT_EQ(system().createWindow({.className = "Late", .title = "", .frame = {{}, {1, 1}}}),
            WindowHandle::None);
  EXPECT_TRUE(waitFor([&] { return reports.contains("display lost"); }));
  EXPECT_EQ(reports.count("display lost"), 1);
  callEveryOperation(handle);
  std::string error;
  EXPECT_FALSE(system().adoptWindow(X11WindowId{game}, error).has_value());
  EXPECT_FALSE(system().deliverEvents());
  EXPECT_EQ(reports.count("display lost"), 1);
  EXPECT_EQ(system().nextDeadline(), kNever);
}

TEST_F(X11Faults, TheEndOfTheServerIsReportedEvenIfTheBackEndSendsNoRequest) {
  openCoveredGame();
  server.kill();
  EXPECT_TRUE(waitFor([&] { return reports.contains("display lost"); }));
}

TEST_F(X11Faults, ABrokenConnectionLeavesNoSigpipePendingOrBlocked) {
  const WindowHandle handle = openCoveredGame();
  server.kill();
  callEveryOperation(handle);
  sigset_t pendingSignals;
  sigpending(&pendingSignals);
  EXPECT_EQ(sigismember(&pendingSignals, SIGPIPE), 0);
  sigset_t blockedSignals;
  pthread_sigmask(SIG_SETMASK, nullptr, &blockedSignals);
  EXPECT_EQ(sigismember(&blockedSignals, SIGPIPE), 0);
}

TEST_F(X11Faults, TheDelegateMayDestroyTheBackEndDuringAWindowDestroyedReport) {
  const WindowHandle handle = openCoveredGame();
  class DestroyingDelegate final : public WindowSystemDelegate {
   public:
    explicit DestroyingDelegate(std::unique_ptr<X11WindowSystem>& system) : system_(system) {}
    void focusMoved(WindowHandle /*window*/) override {}
    void applicationActivated(WindowHandle /*window*/) override {}
    void applicationDeactivated() override {}
    void closeRequested(WindowHandle /*window*/) override {}
    void windowDestroyed(WindowHandle /*window*/) override { system_ = nullptr; }
    void frameChanged(WindowHandle /*window*/, CGRect /*frame*/) override {}
    void miniaturizedChanged(WindowHandle /*window*/, bool /*miniaturized*/) override {}
    void styleMaskChanged(WindowHandle /*window*/, NSWindowStyleMask /*styleMask*/) override {}
    void orderChanged(const std::vector<WindowHandle>& /*windows*/) override {}
    void remainingControlsDetected(WindowHandle /*window*/,
                                   NSWindowStyleMask /*controls*/) override {}
    void displayLost(std::string_view /*reason*/) override {}

   private:
    std::unique_ptr<X11WindowSystem>& system_;
  };
  std::unique_ptr<X11WindowSystem> ownedSystem = takeSystem();
  DestroyingDelegate delegate(ownedSystem);
  ownedSystem->setDelegate(&delegate);
  ASSERT_EQ(idOf(handle), game);
  client.destroy(game);
  while (ownedSystem != nullptr) {
    ownedSystem->deliverEvents();
  }
}

TEST_F(X11Faults, TheCoverIsVisibleAfterTheGameUnmapsAndMapsItsWindow) {
  const WindowHandle handle = openCoveredGame();
  client.unmap(game);
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("miniaturized", handle)); }));
  client.map(game);
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("deminiaturized", handle)); }));
  EXPECT_EQ(client.screenPicture(game).at(5, 5), kWhite);
}

TEST_F(X11Faults, TheDestructionOfACoveredWindowIsReportedAndCausesNoLoggedError) {
  const WindowHandle handle = openCoveredGame();
  client.destroy(game);
  callEveryOperation(handle);
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("destroyed", handle)); }));
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11Faults, AnErrorIsLoggedWithTheRequestThatCausedIt) {
  const WindowHandle ownWindow =
      openOwnWindow({.className = "Ours", .title = "", .frame = {{0, 0}, {10, 10}}});
  // Only one client can select ButtonPress on a window, so the back end cannot select it.
  client.selectEvents(idOf(ownWindow), XCB_EVENT_MASK_BUTTON_PRESS);
  system().setMovableByBackground(ownWindow, true);
  deliver();
  EXPECT_THAT(log, ElementsAre("X11: ChangeWindowAttributes for window " +
                               std::to_string(idOf(ownWindow)) + " failed: BadAccess"));
}

TEST_F(X11Faults, TheGameIsFocusedAndCoveredAfterTheWindowManagerCrashes) {
  startManager(Manager::Metacity);
  const WindowHandle handle = openCoveredGame();
  system().requestFocus(handle);
  ASSERT_TRUE(waitFor([&] { return reports.contains(reportLine("focus", handle)); }));
  reports.lines.clear();
  managerProcess.kill();
  // After the crash, no window has the focus. The back end sets the focus to the game again.
  EXPECT_TRUE(waitFor([&] { return client.focusedWindow() == game && client.isViewable(game); }));
  deliver();
  // If the back end has reported the loss of the focus, it must also report the new focus.
  if (reports.contains("deactivated")) {
    EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("activated", handle)); }));
  }
  EXPECT_EQ(client.screenPicture(game).at(5, 5), kWhite);
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11Faults, TheRemainingControlsAreReportedAgainUnderANewWindowManager) {
  startManager(Manager::Metacity);
  const WindowHandle handle = openCoveredGame();
  // The style mask excludes all controls, but Metacity still allows resizing (8).
  ASSERT_TRUE(
      waitFor([&] { return reports.contains(reportLine("remaining controls", handle) + " 8"); }));
  managerProcess.end();
  startManager(Manager::Openbox);
  // Openbox still allows closing (2) and miniaturising (4).
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(reportLine("remaining controls", handle) + " 6"); }));
  system().requestFocus(handle);
  EXPECT_TRUE(waitFor([&] { return client.focusedWindow() == game; }));
  EXPECT_EQ(client.screenPicture(game).at(5, 5), kWhite);
  EXPECT_THAT(log, IsEmpty());
}

TEST(X11Opening, OpeningADisplayThatDoesNotExistFailsWithAReason) {
  std::string error;
  EXPECT_EQ(X11WindowSystem::open(":9999", error), nullptr);
  EXPECT_EQ(error, "cannot open the X11 display \":9999\": it does not answer");
  EXPECT_EQ(X11WindowSystem::open("no display", error), nullptr);
  EXPECT_EQ(error, "cannot open the X11 display \"no display\": its name is malformed");
}

}  // namespace
}  // namespace vel::test
