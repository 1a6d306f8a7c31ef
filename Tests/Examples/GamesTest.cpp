// Tests of the examples on an X display with a window manager.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "Tests/Examples/HostProcess.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

constexpr std::uint32_t kBackgroundColor = 0x204080;
constexpr std::uint32_t kBallColor = 0xFFB020;
constexpr std::size_t kMinimumCoveredFrames = 60;
// Each call of vel_pump must take less than this time, in milliseconds. The limit allows for a busy
// machine. A call that blocked until the launch screen ends would take longer.
constexpr double kMaximumPumpTime = 1000;

auto hasEveryControl() {
  return AllOf(Contains("_NET_WM_ACTION_CLOSE"), Contains("_NET_WM_ACTION_MINIMIZE"),
               Contains("_NET_WM_ACTION_RESIZE"));
}

// Does not check resizing, because the window manager metacity still allows it.
auto hasNeitherCloseNorMinimize() {
  return AllOf(Not(Contains("_NET_WM_ACTION_CLOSE")), Not(Contains("_NET_WM_ACTION_MINIMIZE")));
}

class GameExample : public X11TestWithManager, public testing::WithParamInterface<const char*> {
 protected:
  GameExample() {
    std::filesystem::remove(eventsFile_);
    // SDL unloads a library that leaks memory. The address sanitizer cannot name the functions of
    // an unloaded library, so a suppression cannot match these leaks.
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  }
  ~GameExample() override { std::filesystem::remove(eventsFile_); }

  bool waitForLine(HostProcess& host, std::string_view beginning) {
    return waitFor([&] { return host.hasPrinted(beginning); });
  }
  std::vector<std::string> allowedActions(xcb_window_t window) {
    return client.atomNames(window, "_NET_WM_ALLOWED_ACTIONS");
  }
  // True if the game's drawing is on the screen and nothing in the window is white.
  bool isDrawn(xcb_window_t window) {
    const auto colors = client.screenPicture(window).colors();
    return colors.contains(kBackgroundColor) && colors.contains(kBallColor) &&
           !colors.contains(kWhite);
  }
  // The title bar with its buttons.
  Picture titleBar(xcb_window_t window) {
    constexpr int kHeight = 30;
    const PixelRect frame = client.areaOnScreen(window);
    return client.screenPicture(PixelRect{frame.x, frame.y - kHeight, frame.width, kHeight});
  }
  // Opens another window, focuses it and returns it.
  xcb_window_t switchAway() {
    const xcb_window_t otherWindow = client.openGameWindow({1020, 100, 200, 150}, 0);
    EXPECT_TRUE(waitFor([&] { return client.isViewable(otherWindow); }));
    client.focus(otherWindow);
    EXPECT_TRUE(waitFor([&] { return client.focusedWindow() == otherWindow; }));
    return otherWindow;
  }
  void switchBack(xcb_window_t otherWindow, xcb_window_t window) {
    client.destroy(otherWindow);
    client.focus(window);
  }
  void savePicture(std::string_view moment) {
    client.screenPicture({0, 0, 1280, 960})
        .save(std::string(GetParam()).append("-").append(moment));
  }
  std::string recordedEvents() {
    std::ostringstream text;
    text << std::ifstream(eventsFile_).rdbuf();
    return text.str();
  }

  std::string eventsFile_ = testing::TempDir() + GetParam() + "-events-" + std::to_string(getpid());
};

TEST_P(GameExample, KeepsDrawingUnderItsLaunchScreen) {
  // A launch screen of 3 seconds, after 120 frames.
  HostProcess game({examplePath(GetParam()), eventsFile_, "3", "120"}, server.display());
  xcb_window_t window = 0;
  ASSERT_TRUE(waitFor([&] {
    window = client.findWindow("PlayerWindow");
    return window != 0 && client.focusedWindow() == window && isDrawn(window);
  }));
  const Picture titleBarBefore = titleBar(window);
  savePicture("before");

  ASSERT_TRUE(waitForLine(game, "covered"));
  const xcb_window_t otherWindow = switchAway();  // pauses the countdown during the checks
  ASSERT_TRUE(waitFor([&] { return client.screenPicture(window).isAll(kWhite); }));
  EXPECT_TRUE(waitForLine(game, "controls kept"));  // metacity keeps the resize control
  EXPECT_THAT(allowedActions(window), hasNeitherCloseNorMinimize());
  EXPECT_NE(titleBar(window), titleBarBefore);
  const auto frameReportCount = [&] {
    return std::ranges::count_if(game.lines(),
                                 [](const auto& line) { return line.ends_with("frames covered"); });
  };
  const auto frameReportCountBefore = frameReportCount();
  EXPECT_TRUE(waitFor([&] { return frameReportCount() >= frameReportCountBefore + 2; }));
  EXPECT_TRUE(client.screenPicture(window).isAll(kWhite));
  EXPECT_EQ(recordedEvents(), "");
  savePicture("during");

  switchBack(otherWindow, window);
  ASSERT_TRUE(waitForLine(game, "event"));
  EXPECT_EQ(recordedEvents(), "launch_end\n");
  ASSERT_TRUE(waitForLine(game, "uncovered"));
  EXPECT_TRUE(waitFor([&] { return isDrawn(window); }));
  EXPECT_TRUE(waitFor([&] { return testing::Matches(hasEveryControl())(allowedActions(window)); }));
  // metacity redraws its buttons when the focus moves, not when the buttons change.
  switchBack(switchAway(), window);
  EXPECT_TRUE(waitFor([&] { return titleBar(window) == titleBarBefore; }));
  savePicture("after");

  client.requestClose(window);
  EXPECT_EQ(game.wait(), 0);
  int frameCount = 0;
  int coveredFrameCount = 0;
  double longestPumpTime = kMaximumPumpTime;
  ASSERT_EQ(
      std::sscanf(game.lines().back().c_str(), "%d frames, %d of them covered, longest pump %lf ms",
                  &frameCount, &coveredFrameCount, &longestPumpTime),
      3);
  EXPECT_GE(coveredFrameCount, kMinimumCoveredFrames);
  EXPECT_GT(frameCount, coveredFrameCount);
  EXPECT_LT(longestPumpTime, kMaximumPumpTime);
  std::cout << GetParam() << ": " << game.lines().back() << '\n';
}

TEST_P(GameExample, ExitsCleanlyIfItsWindowIsClosedWhileCovered) {
  HostProcess game({examplePath(GetParam()), eventsFile_, "3600"}, server.display());
  ASSERT_TRUE(waitForLine(game, "covered"));
  // The close control is disabled, but a program can still send WM_DELETE_WINDOW.
  client.sendProtocolMessage(client.findWindow("PlayerWindow"), "WM_DELETE_WINDOW");
  EXPECT_EQ(game.wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Examples, GameExample, testing::Values("sdl2-game", "c-host"),
                         nameOfExample);

#ifdef VEL_PYTHON_CAN_LOAD_LIBRARY

class PythonHostOnADisplay : public X11TestWithManager {};

TEST_F(PythonHostOnADisplay, PrintsEachCallback) {
  HostProcess host(pythonHostCommand({"--display", "x11", "--seconds", "0.5"}), server.display());
  ASSERT_TRUE(waitFor([&] { return host.hasPrinted("ended 1"); }));
  EXPECT_EQ(host.wait(), 0);
  std::vector<std::string> lines = host.lines();
  // The library calls `controls_kept` after it disables controls, and again after it restores them.
  // The host may exit before the second call.
  EXPECT_GE(std::erase(lines, "controls_kept 0"), 1U);
  EXPECT_THAT(lines, ElementsAre("state_changed 3 None", StartsWith("log_line LaunchScreenContent"),
                                 "will_appear", "may_disappear", "did_disappear",
                                 "record_event launch_end", "ended 1"));
}

TEST_F(PythonHostOnADisplay, PrintsThatTheDisplayIsLost) {
  HostProcess host(pythonHostCommand({"--display", "x11", "--seconds", "3600"}), server.display());
  ASSERT_TRUE(waitFor([&] { return host.hasPrinted("controls_kept 0"); }));
  server.kill();
  EXPECT_EQ(host.wait(), 0);
  EXPECT_TRUE(host.hasPrinted("display_lost"));
  EXPECT_TRUE(host.hasPrinted("ended 4"));
}

#endif

}  // namespace
}  // namespace vel::test
