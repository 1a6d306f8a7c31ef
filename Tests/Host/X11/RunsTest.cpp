// Complete runs of `launchscreen show` on an X11 display.
#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>

#include "Tests/Host/X11/ShowProcess.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

/// Returns the text of each printed step. Leaves out log lines and the countdown.
std::vector<std::string> stepsPrintedBy(const ShowProcess& show) {
  std::istringstream lines(show.output());
  std::vector<std::string> steps;
  for (std::string line; std::getline(lines, line);) {
    // A step is printed as the time in eight characters, " s  " and the text.
    if (line.find(" s  ") == 8 && !line.ends_with(" s left")) {
      steps.push_back(line.substr(12));
    }
  }
  return steps;
}

/// Without `--window`, `launchscreen show` opens a player window and covers it.
class X11Player : public X11Test {
 protected:
  X11Player() : X11Test(Manager::Metacity) {}
  void TearDown() override { std::filesystem::remove(screenshot); }
  xcb_window_t player() { return client.findWindow("PlayerWindow"); }

  const std::string screenshot =
      (std::filesystem::temp_directory_path() / ("screenshot" + server.display() + ".png"))
          .string();
};

TEST_F(X11Player, ThePlayerIsWhiteWhileCoveredAndShowsItsAnimationAfterwards) {
  ShowProcess show(server, {"--duration", "1", "--content-controller", "--size", "640x480",
                            "--screenshot", screenshot});
  ASSERT_TRUE(show.waitForOutput("uncovered")) << show.output();
  // Without SIGSTOP, the program could end before the test takes the picture.
  show.sendSignal(SIGSTOP);
  Picture animation;
  EXPECT_TRUE(eventually([&] {
    animation = client.screenPicture(player());
    return animation.colors().size() == 2 && animation.colors().count(kWhite) == 0;
  }));
  animation.save("player");
  show.sendSignal(SIGCONT);
  EXPECT_EQ(show.wait(), 0) << show.output();
  const Picture screenshotWhileCovered = Picture::readPng(screenshot);
  EXPECT_EQ(screenshotWhileCovered.width, 640);
  EXPECT_EQ(screenshotWhileCovered.height, 480);
  EXPECT_TRUE(screenshotWhileCovered.isAll(kWhite));
}

TEST_F(X11Player, TheModalWindowHasASpinnerInTheMiddle) {
  ShowProcess show(server, {"--duration", "1", "--present", "modal", "--indicator", "--size",
                            "960x540", "--screenshot", screenshot});
  EXPECT_TRUE(show.waitForOutput("covered"));
  // The modal window is 480 by 270 pixels, in the middle of the player. The spinner moves.
  const auto pictureOfModalWindow = [&] {
    const PixelRect area = client.areaOnScreen(player());
    return client.screenPicture({area.x + 240, area.y + 135, 480, 270});
  };
  const auto showsSpinner = [](const Picture& picture) {
    const PixelRect bounds = picture.boundsOfPixelsExcept(kWhite);
    return picture.width == 480 && bounds.width > 0 && bounds.width <= 32 && bounds.height <= 32;
  };
  Picture first;
  EXPECT_TRUE(eventually([&] {
    first = pictureOfModalWindow();
    return showsSpinner(first);
  }));
  EXPECT_TRUE(eventually([&] {
    const Picture picture = pictureOfModalWindow();
    return showsSpinner(picture) && picture != first;
  }));
  EXPECT_EQ(show.wait(), 0) << show.output();
  const Picture modalScreenshot = Picture::readPng(screenshot);
  modalScreenshot.save("modal");
  EXPECT_NE(modalScreenshot.at(5, 5), kWhite);
  EXPECT_NE(modalScreenshot.at(239, 134), kWhite);
  EXPECT_EQ(modalScreenshot.at(240, 135), kWhite);
  EXPECT_EQ(modalScreenshot.at(719, 404), kWhite);
  EXPECT_NE(modalScreenshot.at(720, 405), kWhite);
  EXPECT_EQ(modalScreenshot.at(480, 270), kWhite);
  int spinnerPixels = 0;
  for (int x = 480 - 16; x < 480 + 16; ++x) {
    spinnerPixels += modalScreenshot.at(x, 270) == kWhite ? 0 : 1;
  }
  EXPECT_GT(spinnerPixels, 4);
}

TEST_F(X11Player, ShowRunsHeadlessIfTheX11DisplayDoesNotExist) {
  const std::vector<std::string> commandWithoutDisplayOption{
      LAUNCHSCREEN, "show", "--mode", "skip", "--skip-after", "0.4", "--content-controller"};
  // Only a run on the X11 display prints the controls that the window manager keeps.
  EXPECT_THAT(runProgram(commandWithoutDisplayOption, server.display()),
              HasSubstr("controls kept"));
  const std::string headlessOutput = runProgram(commandWithoutDisplayOption, ":9999");
  EXPECT_THAT(headlessOutput, HasSubstr("uncovered"));
  EXPECT_THAT(headlessOutput, Not(HasSubstr("controls kept")));
}

TEST_F(X11Player, ShowReportsAScreenshotThatCannotBeWritten) {
  ShowProcess show(server, {"--duration", "0.2", "--screenshot", "/nonexistent/picture.png"});
  EXPECT_EQ(show.wait(), 1);
  EXPECT_THAT(show.output(), HasSubstr("launchscreen: no screenshot: /nonexistent/picture.png: "));
}

struct Run {
  Manager manager;
  const char* presentation;
  // The text after "controls kept by the window manager: ". Empty if the program does not print
  // this line.
  const char* remainingControls;

  [[nodiscard]] bool removesControls() const {
    return std::string_view(presentation) == "embedded";
  }
  [[nodiscard]] std::string name() const {
    return std::string(presentation) + (manager == Manager::None ? "" : "Under") + nameOf(manager);
  }
  friend void PrintTo(const Run& run, std::ostream* out) { *out << run.name(); }
};

class X11Runs : public X11Test, public testing::WithParamInterface<Run> {
 protected:
  X11Runs() : X11Test(GetParam().manager) {}
};

TEST_P(X11Runs, PrintEachStepInOrder) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  ASSERT_TRUE(eventually([&] { return client.isViewable(game); }));
  ShowProcess show(server, {"--window", std::to_string(game), "--duration", "1.5", "--present",
                            GetParam().presentation, "--content-controller"});
  ASSERT_TRUE(show.waitForOutput("covered"));
  EXPECT_TRUE(eventually([&] { return client.screenPicture(game).colors().count(kWhite) == 1; }));
  EXPECT_EQ(show.wait(), 0);
  std::vector<std::string> expectedSteps{"content loaded", "covered"};
  if (GetParam().removesControls()) {
    expectedSteps.emplace_back("controls removed");
    if (featuresOf(GetParam().manager).publishesAllowedActions) {
      expectedSteps.push_back("controls kept by the window manager: " +
                              std::string(GetParam().remainingControls));
    }
    expectedSteps.emplace_back("controls restored");
  }
  expectedSteps.insert(expectedSteps.end(),
                       {"dismissed", "uncovered", "event recorded: launch_end"});
  EXPECT_EQ(stepsPrintedBy(show), expectedSteps);
  EXPECT_TRUE(eventually([&] { return client.screenPicture(game).isAll(kGreen); }));
}

std::vector<Run> allRuns() {
  std::vector<Run> runs{{Manager::None, "embedded", "none"},
                        {Manager::None, "modal", ""},
                        {Manager::None, "sheet", ""},
                        {Manager::Metacity, "embedded", "resize"},
                        {Manager::Metacity, "modal", ""},
                        {Manager::Metacity, "sheet", ""},
                        {Manager::Openbox, "embedded", "close, miniaturise"},
                        {Manager::Openbox, "modal", ""}};
  for (const Manager compositor : withXwayland({})) {
    runs.push_back({compositor, "embedded", ""});
    runs.push_back({compositor, "modal", ""});
  }
  return runs;
}

INSTANTIATE_TEST_SUITE_P(X11Show, X11Runs, testing::ValuesIn(allRuns()),
                         [](const testing::TestParamInfo<Run>& testInfo) {
                           return testInfo.param.name();
                         });

class X11ShowFocus : public X11Test, public testing::WithParamInterface<Manager> {
 protected:
  X11ShowFocus() : X11Test(GetParam()) {}
};

TEST_P(X11ShowFocus, TheCountdownIsPausedWhileAnotherProgramHasTheFocus) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  const Process xterm = server.start({"xterm", "-T", "other", "-geometry", "40x10+900+600"});
  xcb_window_t otherWindow = 0;
  ASSERT_TRUE(eventually([&] {
    otherWindow = client.findWindow("XTerm");
    return client.isViewable(game) && otherWindow != 0 && client.isViewable(otherWindow);
  }));
  // On a busy machine, a compositor may need seconds to change the focus.
  const double duration = compositor == nullptr ? 3 : 8;
  ShowProcess show(server, {"--window", std::to_string(game), "--duration",
                            std::to_string(duration), "--content-controller"});
  ASSERT_TRUE(show.waitForOutput("covered"));
  if (compositor != nullptr) {
    // weston may give the focus to xterm even though `show` has requested the focus for the game.
    giveFocus(game, "A game");
  }
  ASSERT_TRUE(eventually([&] { return client.focusedWindow() == game; }));
  giveFocus(otherWindow, "other");
  ASSERT_TRUE(show.waitForOutput("paused: not in front")) << show.output();
  // Waits for a second: a headless run takes as long as its duration.
  runProgram({LAUNCHSCREEN, "show", "--display", "headless", "--duration", "1"}, server.display());
  giveFocus(game, "A game");
  ASSERT_TRUE(show.waitForOutput("resumed: in front again")) << show.output();
  EXPECT_EQ(show.wait(), 0);
  const double pausedSeconds =
      show.timeOf("resumed: in front again") - show.timeOf("paused: not in front");
  EXPECT_GT(pausedSeconds, 1);
  EXPECT_GT(show.timeOf("dismissed") - show.timeOf("covered"), duration - 0.05 + pausedSeconds);
  EXPECT_THAT(show.output(), HasSubstr("event recorded: launch_end"));
}

INSTANTIATE_TEST_SUITE_P(X11Show, X11ShowFocus,
                         testing::ValuesIn(withXwayland({Manager::Metacity})), nameOfManager);

}  // namespace
}  // namespace vel::test
