// Faults and signals while `launchscreen show` runs, and windows and displays that it refuses.
#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <memory>

#include "Tests/Host/X11/ShowProcess.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

class X11ShowFaults : public X11Test {
 protected:
  explicit X11ShowFaults(Manager xwaylandCompositor = Manager::None)
      : X11Test(xwaylandCompositor) {}

  /// Opens the game's window, covers it with `launchscreen show`, and waits until the window is
  /// white.
  void cover(Manager windowManager, const std::vector<std::string>& arguments) {
    startManager(windowManager);
    game = client.openGameWindow(kGameFrame, kGreen);
    ASSERT_TRUE(eventually([this] { return client.isViewable(game); }));
    std::vector<std::string> allArguments{"--window", std::to_string(game), "--content-controller"};
    allArguments.insert(allArguments.end(), arguments.begin(), arguments.end());
    show = std::make_unique<ShowProcess>(server, allArguments);
    ASSERT_TRUE(show->waitForOutput("covered")) << show->output();
    ASSERT_TRUE(eventually([this] { return client.screenPicture(game).isAll(kWhite); }));
  }
  bool gameGetsFocus() {
    return eventually([this] { return client.focusedWindow() == game; });
  }
  void expectRestored() {
    EXPECT_TRUE(eventually([this] { return client.screenPicture(game).isAll(kGreen); }));
    EXPECT_EQ(client.property(game, "_MOTIF_WM_HINTS"), std::nullopt);
  }

  xcb_window_t game = 0;
  std::unique_ptr<ShowProcess> show;
};

/// Each test runs on an X server without a window manager, and on the Xwayland of each compositor.
class X11ShowFaultsOnEachServer : public X11ShowFaults,
                                  public testing::WithParamInterface<Manager> {
 protected:
  X11ShowFaultsOnEachServer() : X11ShowFaults(GetParam()) {}
};

TEST_P(X11ShowFaultsOnEachServer, DestroyingTheGamesWindowEndsTheLaunchScreen) {
  cover(Manager::None, {"--duration", "600"});
  ASSERT_TRUE(gameGetsFocus());
  client.destroy(game);
  EXPECT_EQ(show->wait(), 0) << show->output();
  EXPECT_THAT(show->output(), HasSubstr("uncovered"));
  // Without the focus before the destruction, no event would be recorded.
  EXPECT_THAT(show->output(), HasSubstr("event recorded"));
  EXPECT_THAT(show->output(), Not(HasSubstr("X11:")));  // the prefix of an X error
}

TEST_F(X11ShowFaults, MiniaturizingTheGamesWindowPausesTheCountdown) {
  cover(Manager::Metacity, {"--duration", "5"});
  ASSERT_TRUE(gameGetsFocus());
  client.requestIconify(game);
  EXPECT_TRUE(show->waitForOutput("paused: not in front")) << show->output();
  client.map(game);
  EXPECT_TRUE(eventually([this] { return client.isViewable(game); }));
  runProgram({"xdotool", "windowactivate", "--sync", std::to_string(game)}, server.display());
  EXPECT_TRUE(show->waitForOutput("resumed: in front again")) << show->output();
  EXPECT_EQ(show->wait(), 0) << show->output();
  expectRestored();
}

TEST_F(X11ShowFaults, TheLaunchScreenRunsToItsEndAfterTheWindowManagerCrashes) {
  cover(Manager::Metacity, {"--duration", "3"});
  managerProcess.kill();
  // When the manager's connection is closed, the server reparents the game to the root window.
  EXPECT_TRUE(eventually([this] {
    const auto windows = client.children(client.root());
    return std::ranges::find(windows, game) != windows.end();
  }));
  EXPECT_TRUE(eventually([this] { return client.screenPicture(game).isAll(kWhite); }));
  EXPECT_EQ(show->wait(), 0) << show->output();
  EXPECT_THAT(show->output(), HasSubstr("event recorded"));
  expectRestored();
}

TEST_F(X11ShowFaults, ShowReportsTheControlsThatANewWindowManagerKeeps) {
  cover(Manager::Metacity, {"--mode", "skip", "--duration", "600"});
  ASSERT_TRUE(show->waitForOutput("controls kept by the window manager: resize")) << show->output();
  managerProcess.end();
  startManager(Manager::Openbox);
  EXPECT_TRUE(show->waitForOutput("controls kept by the window manager: close, miniaturise"))
      << show->output();
  EXPECT_TRUE(eventually([this] { return client.screenPicture(game).isAll(kWhite); }));
  show->sendSignal(SIGINT);
  EXPECT_EQ(show->wait(), 128 + SIGINT) << show->output();
  expectRestored();
}

// The test acts as the window manager. The modal window stays unmapped until the test maps it.
class X11ShowUnmappedModal : public X11ShowFaults {
 protected:
  void SetUp() override {
    client.selectEvents(client.root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT);
    game = client.openGameWindow(kGameFrame, kGreen);
    show = std::make_unique<ShowProcess>(
        server, std::vector<std::string>{"--window", std::to_string(game), "--present", "modal",
                                         "--mode", "skip", "--duration", "600"});
    ASSERT_TRUE(show->waitForOutput("s left")) << show->output();
    modal = client.findWindow("NSWindow");
    ASSERT_NE(modal, 0U);
    EXPECT_THAT(show->output(), Not(HasSubstr("covered")));
  }

  xcb_window_t modal = 0;
};

TEST_F(X11ShowUnmappedModal, ShowReportsTheCoverOnlyWhenTheModalWindowIsWhite) {
  client.map(modal);
  ASSERT_TRUE(show->waitForOutput("covered")) << show->output();
  EXPECT_TRUE(client.screenPicture(modal).isAll(kWhite));
  show->sendSignal(SIGTERM);
  EXPECT_EQ(show->wait(), 128 + SIGTERM) << show->output();
  EXPECT_THAT(show->output(), HasSubstr("uncovered\n"));
}

TEST_F(X11ShowUnmappedModal, ShowReportsAModalWindowThatWasNeverMapped) {
  show->sendSignal(SIGTERM);
  EXPECT_EQ(show->wait(), 128 + SIGTERM) << show->output();
  EXPECT_THAT(show->output(), Not(HasSubstr("covered")));
  EXPECT_THAT(show->output(), HasSubstr("closed before it was on the screen\n"));
}

TEST_F(X11ShowFaults, ShowPrintsOneErrorLineIfTheDisplayIsLost) {
  cover(Manager::None, {"--duration", "600"});
  server.kill();
  EXPECT_EQ(show->wait(), 1);
  const std::string& output = show->output();
  EXPECT_THAT(
      output,
      EndsWith("\nlaunchscreen: the display is lost: the X11 display does not answer any more\n"));
  EXPECT_EQ(output.find("launchscreen: "), output.rfind("launchscreen: "));
}

TEST_P(X11ShowFaultsOnEachServer, SigtermRestoresTheWindow) {
  cover(Manager::None, {"--duration", "600"});
  show->sendSignal(SIGTERM);
  EXPECT_EQ(show->wait(), 128 + SIGTERM);
  expectRestored();
}

TEST_P(X11ShowFaultsOnEachServer, SigkillRemovesTheCover) {
  cover(Manager::None, {"--duration", "600"});
  show->sendSignal(SIGKILL);
  show->wait();
  EXPECT_TRUE(eventually([this] { return client.screenPicture(game).isAll(kGreen); }));
}

INSTANTIATE_TEST_SUITE_P(X11Show, X11ShowFaultsOnEachServer,
                         testing::ValuesIn(withXwayland({Manager::None})), nameOfManager);

TEST_F(X11ShowFaults, ShowPrintsOneErrorLineIfTheWindowCannotBeCovered) {
  const xcb_window_t unmappedWindow = client.makeWindow(kGameFrame, kGreen);
  const auto outputOfRefusal = [this](const std::string& window) {
    ShowProcess refusedShow(server, {"--window", window});
    EXPECT_EQ(refusedShow.wait(), 1);
    return refusedShow.output();
  };
  EXPECT_EQ(outputOfRefusal("0x99999"), "launchscreen: window 0x99999: there is no such window\n");
  EXPECT_EQ(outputOfRefusal("0"), "launchscreen: window 0x0: that is no X11 window's id\n");
  EXPECT_EQ(outputOfRefusal("99999999999"),
            "launchscreen: window 0x174876e7ff: that is no X11 window's id\n");
  EXPECT_THAT(outputOfRefusal(std::to_string(client.root())), HasSubstr("it is the root window\n"));
  EXPECT_EQ(outputOfRefusal(std::to_string(unmappedWindow)),
            "launchscreen: the window is not on the screen\n");
}

TEST_F(X11ShowFaults, ShowPrintsOneErrorLineIfTheDisplayDoesNotExist) {
  const std::string display = ":2147483647";  // no X server has this number
  ShowProcess refusedShow(display, {});
  EXPECT_EQ(refusedShow.wait(), 1);
  EXPECT_EQ(refusedShow.output(),
            "launchscreen: cannot open the X11 display \"" + display + "\": it does not answer\n");
}

}  // namespace
}  // namespace vel::test
