// What goes wrong on the display while `launchscreen show` runs.
#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <memory>

#include "Tests/Support/X11/X11Test.h"
#include "Tests/Host/X11/LaunchedShow.h"

namespace vel::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

class X11ShowFaults : public X11Test {
 protected:
  /// A game, and a launch screen over it that is on until something happens or, in forced mode, its
  /// time is up.
  void cover(Manager managed, const std::vector<std::string>& arguments) {
    startManager(managed);
    game = user.openGame(kGame, kGreen);
    ASSERT_TRUE(eventually([this] { return user.isViewable(game); }));
    std::vector<std::string> all{"--window", std::to_string(game), "--content-controller"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    show = std::make_unique<LaunchedShow>(server, all);
    ASSERT_TRUE(show->prints("covered")) << show->output();
    ASSERT_TRUE(eventually([this] { return user.picture(game).isAll(kWhite); }));
  }
  /// The window has the focus, and the program knows.
  bool isInFront() {
    return eventually([this] { return user.focused() == game; });
  }
  void expectGivenBack() {
    EXPECT_TRUE(eventually([this] { return user.picture(game).isAll(kGreen); }));
    EXPECT_EQ(user.property(game, "_MOTIF_WM_HINTS"), std::nullopt);
  }

  xcb_window_t game = 0;
  std::unique_ptr<LaunchedShow> show;
};

TEST_F(X11ShowFaults, AWindowThatEndsUnderItsCoverEndsTheLaunchScreen) {
  cover(Manager::None, {"--duration", "600"});
  ASSERT_TRUE(isInFront());
  user.destroy(game);
  // With its event, where the end came in front.
  EXPECT_EQ(show->wait(), 0) << show->output();
  EXPECT_THAT(show->output(), HasSubstr("uncovered"));
  EXPECT_THAT(show->output(), HasSubstr("event recorded"));
  EXPECT_THAT(show->output(), Not(HasSubstr("X11:")));
}

TEST_F(X11ShowFaults, AnUnmappedWindowStopsTheCountdownUntilItIsBack) {
  cover(Manager::Metacity, {"--duration", "5"});
  ASSERT_TRUE(isInFront());
  user.iconify(game);
  EXPECT_TRUE(show->prints("paused: not in front")) << show->output();
  user.map(game);
  EXPECT_TRUE(eventually([this] { return user.isViewable(game); }));
  outputOf({"xdotool", "windowactivate", "--sync", std::to_string(game)}, server.display());
  EXPECT_TRUE(show->prints("goes on: in front again")) << show->output();
  EXPECT_EQ(show->wait(), 0) << show->output();
  expectGivenBack();
}

TEST_F(X11ShowFaults, AWindowManagerThatExitsDoesNotStopIt) {
  cover(Manager::Metacity, {"--duration", "3"});
  manager.kill();
  // The server hands its windows back when it is gone there too.
  EXPECT_TRUE(eventually([this] {
    const auto windows = user.children(user.root());
    return std::ranges::find(windows, game) != windows.end();
  }));
  EXPECT_TRUE(eventually([this] { return user.picture(game).isAll(kWhite); }));
  EXPECT_EQ(show->wait(), 0) << show->output();
  EXPECT_THAT(show->output(), HasSubstr("event recorded"));
  expectGivenBack();
}

TEST_F(X11ShowFaults, AnotherWindowManagerIsAskedForTheSame) {
  cover(Manager::Metacity, {"--mode", "skip", "--duration", "600"});
  ASSERT_TRUE(show->prints("controls kept by the window manager: none")) << show->output();
  manager.end();
  startManager(Manager::Openbox);
  EXPECT_TRUE(show->prints("controls kept by the window manager: close, miniaturise"))
      << show->output();
  EXPECT_TRUE(eventually([this] { return user.picture(game).isAll(kWhite); }));
  show->signal(SIGINT);
  EXPECT_EQ(show->wait(), 128 + SIGINT) << show->output();
  expectGivenBack();
}

TEST_F(X11ShowFaults, ALostDisplayIsOneLine) {
  cover(Manager::None, {"--duration", "600"});
  server.kill();
  EXPECT_EQ(show->wait(), 1);
  const std::string& output = show->output();
  EXPECT_THAT(
      output,
      EndsWith("\nlaunchscreen: the display is lost: the X11 display does not answer any more\n"));
  EXPECT_EQ(output.find("launchscreen: "), output.rfind("launchscreen: "));
}

TEST_F(X11ShowFaults, AProgramThatEndsItselfGivesTheWindowBack) {
  cover(Manager::None, {"--duration", "600"});
  show->signal(SIGTERM);
  EXPECT_EQ(show->wait(), 128 + SIGTERM);
  expectGivenBack();
}

TEST_F(X11ShowFaults, AProgramThatIsKilledTakesItsCoverWithIt) {
  cover(Manager::None, {"--duration", "600"});
  show->signal(SIGKILL);
  show->wait();
  EXPECT_TRUE(eventually([this] { return user.picture(game).isAll(kGreen); }));
}

TEST_F(X11ShowFaults, AWindowThatCannotBeCoveredIsOneLine) {
  const xcb_window_t hidden = user.makeWindow(kGame, kGreen);
  const auto refusal = [this](const std::string& window) {
    LaunchedShow refused(server, {"--window", window});
    EXPECT_EQ(refused.wait(), 1);
    return refused.output();
  };
  EXPECT_EQ(refusal("0x99999"), "launchscreen: window 0x99999: there is no such window\n");
  EXPECT_EQ(refusal("0"), "launchscreen: window 0x0: that is no X11 window's id\n");
  EXPECT_EQ(refusal("99999999999"),
            "launchscreen: window 0x174876e7ff: that is no X11 window's id\n");
  EXPECT_THAT(refusal(std::to_string(user.root())), HasSubstr("it is the root window\n"));
  EXPECT_EQ(refusal(std::to_string(hidden)), "launchscreen: the window is not on the screen\n");
}

TEST_F(X11ShowFaults, ADisplayThatDoesNotAnswerIsOneLine) {
  server.kill();
  LaunchedShow refused(server, {});
  EXPECT_EQ(refused.wait(), 1);
  EXPECT_EQ(refused.output(), "launchscreen: cannot open the X11 display \"" + server.display() +
                                  "\": it does not answer\n");
}

}  // namespace
}  // namespace vel::test
