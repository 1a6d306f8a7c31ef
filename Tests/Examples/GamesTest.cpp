// The examples on a display with a window manager, as a user has them.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "Tests/Examples/HostProcess.h"
#include "Tests/WindowSystem/X11/Support/X11Test.h"

namespace vel::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

constexpr std::uint32_t kSky = 0x204080;   // what the games draw
constexpr std::uint32_t kBall = 0xFFB020;  // on it
constexpr std::size_t kMoreFrames = 60;
// Milliseconds: far longer than a pump takes also on a busy machine, far shorter than one that
// waited for the launch screen.
constexpr double kStalled = 1000;

auto hasControls() {
  return AllOf(Contains("_NET_WM_ACTION_CLOSE"), Contains("_NET_WM_ACTION_MINIMIZE"),
               Contains("_NET_WM_ACTION_RESIZE"));
}

auto hasNoControls() {
  return AllOf(Not(Contains("_NET_WM_ACTION_CLOSE")), Not(Contains("_NET_WM_ACTION_MINIMIZE")),
               Not(Contains("_NET_WM_ACTION_RESIZE")));
}

class GameExample : public X11TestWithManager, public testing::WithParamInterface<const char*> {
 protected:
  GameExample() {
    std::filesystem::remove(events_);
    // Under the address sanitizer: some of what SDL loads is never freed, and is unloaded before
    // it could be named as such. The examples without windows are looked at for leaks.
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  }
  ~GameExample() override { std::filesystem::remove(events_); }

  bool waitForLine(HostProcess& host, std::string_view beginning) {
    return waitFor([&] { return host.hasPrinted(beginning); });
  }
  std::vector<std::string> actions(xcb_window_t window) {
    return user.atomNames(window, "_NET_WM_ALLOWED_ACTIONS");
  }
  // Whether the game is to be seen, ball and all.
  bool isDrawn(xcb_window_t window) {
    const auto colors = user.picture(window).colors();
    return colors.contains(kSky) && colors.contains(kBall) && !colors.contains(kWhite);
  }
  // What the window manager has put above the window: its title and its buttons.
  Picture titleBar(xcb_window_t window) {
    constexpr int kHeight = 30;
    const PixelRect frame = user.frameOf(window);
    return user.picture(PixelRect{frame.x, frame.y - kHeight, frame.width, kHeight});
  }
  // The user turns to something else, and back.
  xcb_window_t turnAway() {
    const xcb_window_t other = user.openGame({1020, 100, 200, 150}, 0);
    EXPECT_TRUE(waitFor([&] { return user.isViewable(other); }));
    user.focus(other);
    EXPECT_TRUE(waitFor([&] { return user.focused() == other; }));
    return other;
  }
  void turnBack(xcb_window_t from, xcb_window_t window) {
    user.destroy(from);
    user.focus(window);
  }
  void keepPicture(std::string_view moment) {
    user.picture({0, 0, 1280, 960}).keep(std::string(GetParam()).append("-").append(moment));
  }
  std::string recorded() {
    std::ostringstream text;
    text << std::ifstream(events_).rdbuf();
    return text.str();
  }

  std::string events_ = testing::TempDir() + GetParam() + "-events-" + std::to_string(getpid());
};

TEST_P(GameExample, GoesOnUnderItsLaunchScreen) {
  HostProcess game({exampleFile(GetParam()), events_, "3", "120"}, server.display());
  xcb_window_t window = 0;
  ASSERT_TRUE(waitFor([&] {
    window = user.find("PlayerWindow");
    return window != 0 && user.focused() == window && isDrawn(window);
  }));
  const Picture titleBarBefore = titleBar(window);
  keepPicture("before");

  ASSERT_TRUE(waitForLine(game, "covered"));
  const xcb_window_t other = turnAway();  // so that the time stands still while we look
  ASSERT_TRUE(waitFor([&] { return user.picture(window).isAll(kWhite); }));
  EXPECT_TRUE(waitForLine(game, "no controls kept"));
  EXPECT_THAT(actions(window), hasNoControls());
  EXPECT_NE(titleBar(window), titleBarBefore);
  const auto framesCovered = [&] {
    return std::ranges::count_if(game.lines(),
                                 [](const auto& line) { return line.ends_with("frames covered"); });
  };
  const auto before = framesCovered();
  EXPECT_TRUE(waitFor([&] { return framesCovered() >= before + 2; }));
  EXPECT_TRUE(user.picture(window).isAll(kWhite));
  EXPECT_EQ(recorded(), "");
  keepPicture("during");

  turnBack(other, window);
  ASSERT_TRUE(waitForLine(game, "event"));
  EXPECT_EQ(recorded(), "launch_end\n");
  ASSERT_TRUE(waitForLine(game, "uncovered"));
  EXPECT_TRUE(waitFor([&] { return isDrawn(window); }));
  EXPECT_TRUE(waitFor([&] { return testing::Matches(hasControls())(actions(window)); }));
  // This window manager draws its buttons anew when the focus moves, not when they change.
  turnBack(turnAway(), window);
  EXPECT_TRUE(waitFor([&] { return titleBar(window) == titleBarBefore; }));
  keepPicture("after");

  user.closeByManager(window);
  EXPECT_EQ(game.wait(), 0);
  int frames = 0;
  int covered = 0;
  double longestPump = kStalled;
  ASSERT_EQ(
      std::sscanf(game.lines().back().c_str(), "%d frames, %d of them covered, longest pump %lf ms",
                  &frames, &covered, &longestPump),
      3);
  EXPECT_GE(covered, kMoreFrames);
  EXPECT_GT(frames, covered);
  EXPECT_LT(longestPump, kStalled);
  std::cout << GetParam() << ": " << game.lines().back() << '\n';
}

TEST_P(GameExample, EndsCleanlyWhenItIsClosedUnderItsLaunchScreen) {
  HostProcess game({exampleFile(GetParam()), events_, "3600"}, server.display());
  ASSERT_TRUE(waitForLine(game, "covered"));
  // Without its control it can still be asked to close, by its own program for instance.
  user.sendProtocol(user.find("PlayerWindow"), "WM_DELETE_WINDOW");
  EXPECT_EQ(game.wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Examples, GameExample, testing::Values("sdl2-game", "c-host"),
                         nameOfExample);

#ifdef VEL_PYTHON_CAN_LOAD

class PythonHostOnADisplay : public X11TestWithManager {};

TEST_F(PythonHostOnADisplay, IsCalledBack) {
  HostProcess host(pythonHost({"--display", "x11", "--seconds", "0.5"}), server.display());
  ASSERT_TRUE(waitFor([&] { return host.hasPrinted("ended"); }));
  EXPECT_EQ(host.wait(), 0);
  std::vector<std::string> lines = host.lines();
  // The window manager answers when it likes.
  EXPECT_GE(std::erase(lines, "controls_kept 0"), 1U);
  EXPECT_THAT(lines, ElementsAre("state_changed 3 None", StartsWith("log_line LaunchScreenContent"),
                                 "will_appear", "may_disappear", "did_disappear",
                                 "record_event launch_end", "ended"));
}

TEST_F(PythonHostOnADisplay, HearsOfTheDisplaysEnd) {
  HostProcess host(pythonHost({"--display", "x11", "--seconds", "3600"}), server.display());
  ASSERT_TRUE(waitFor([&] { return host.hasPrinted("controls_kept 0"); }));
  server.kill();
  EXPECT_EQ(host.wait(), 0);
  EXPECT_TRUE(host.hasPrinted("display_lost"));
}

#endif

}  // namespace
}  // namespace vel::test
