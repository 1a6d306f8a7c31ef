// Screen coordinates and covers on a display with two monitors.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::IsEmpty;

constexpr std::uint32_t kGreen = 0x208040;

/// Two monitors of different heights, side by side, with aligned upper edges. The left monitor is
/// the first one. Neither is the primary monitor.
class X11Monitors : public X11Test {
 protected:
  X11Monitors() {
    addMonitor("left", "640/169x800/212+0+0", "screen");
    addMonitor("right", "640/169x960/254+640+0", "none");
  }
  /// `geometry` has the format of `xrandr --setmonitor`: sizes in pixels/millimetres, then the
  /// position. `output` is the RandR output of the monitor, or "none".
  void addMonitor(const std::string& name, const std::string& geometry, const std::string& output) {
    const auto listMonitors = [this] {
      return runProgram({"xrandr", "--listmonitors"}, server.display());
    };
    runProgram({"xrandr", "--setmonitor", name, geometry, output}, server.display());
    ASSERT_THAT(listMonitors(), testing::HasSubstr(name));
  }
};

TEST_F(X11Monitors, TheOriginIsTheLowerLeftCornerOfTheFirstMonitorIfNoneIsPrimary) {
  const AdoptedWindow leftWindow = adopt(client.openGameWindow({100, 300, 200, 160}, kGreen));
  const AdoptedWindow rightWindow = adopt(client.openGameWindow({700, 100, 200, 160}, kGreen));
  EXPECT_EQ(leftWindow.frame, CGRectMake(100, 340, 200, 160));
  EXPECT_EQ(rightWindow.frame, CGRectMake(700, 540, 200, 160));
}

TEST_F(X11Monitors, AWindowOpensOnTheMonitorThatContainsItsFrame) {
  const WindowHandle rightWindow =
      openOwnWindow({.className = "Any", .title = "", .frame = CGRectMake(700, 540, 200, 160)});
  EXPECT_EQ(client.areaOnScreen(idOf(rightWindow)), (PixelRect{700, 100, 200, 160}));
}

TEST_F(X11Monitors, ACoverFollowsItsWindowToAnotherMonitor) {
  const xcb_window_t game = client.openGameWindow({100, 300, 200, 160}, kGreen);
  const AdoptedWindow adoptedWindow = adopt(game);
  system().setScene(adoptedWindow.handle, whiteScene(adoptedWindow.frame.size));
  deliver();
  client.configure(game, {700, 100, 500, 300});
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  deliver();
  EXPECT_EQ(reports.lastFrame, CGRectMake(700, 400, 500, 300));
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11Monitors, AFrameIsReportedAgainWhenAnotherMonitorBecomesPrimary) {
  const AdoptedWindow adoptedWindow = adopt(client.openGameWindow({100, 300, 200, 160}, kGreen));
  ASSERT_EQ(adoptedWindow.frame, CGRectMake(100, 340, 200, 160));
  // The asterisk makes the new monitor the primary monitor.
  addMonitor("*other", "640/169x960/254+0+0", "none");
  EXPECT_TRUE(waitFor([this] { return reports.lastFrame == CGRectMake(100, 500, 200, 160); }));
}

}  // namespace
}  // namespace vel::test
