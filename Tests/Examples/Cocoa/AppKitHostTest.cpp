// Tests of the Objective-C example `appkit-host` under a window manager. The example opens a blue
// window. A click into the window shows the launch screen.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "Tests/Examples/HostProcess.h"
#include "Tests/Support/Cocoa/AppKitEnvironment.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;

constexpr std::uint32_t kBlue = 0x0000FF;  // the host's window without the launch screen
// Presentation modes, as values of the host's option -mode.
constexpr const char* kEmbedded = "0";
constexpr const char* kSheet = "1";
constexpr const char* kModalWindow = "2";

// The destructor of `AppKitEnvironment` kills all child processes, so it must run after the X
// server has stopped. The first base class is destroyed last.
class AppKitHost : private AppKitEnvironment, public X11TestWithManager {
 protected:
  // Like `test::eventually`, but moves the pointer over the host's window before each check. The
  // free AppKit of GNUstep sometimes handles an X event only when another event arrives.
  bool eventually(const std::function<bool()>& condition) {
    int distance = 0;
    return test::eventually([&] {
      if (const xcb_window_t window = hostWindow(); window != 0) {
        distance = (distance + 1) % 50;
        const PixelRect area = client.areaOnScreen(window);
        client.movePointer(area.x + area.width / 2 + distance, area.y + area.height / 2);
      }
      return condition();
    });
  }
  void clickWindow() {
    ASSERT_TRUE(eventually([this] { return isAll(kBlue); }));
    const PixelRect area = client.areaOnScreen(hostWindow());
    client.click(area.x + area.width / 2, area.y + area.height / 2);
  }

  [[nodiscard]] xcb_window_t hostWindow() const { return client.findWindow("appkit-host"); }
  // True if all pixels of the host's window have this colour.
  [[nodiscard]] bool isAll(std::uint32_t color) const {
    const xcb_window_t window = hostWindow();
    return window != 0 && client.isViewable(window) && client.screenPicture(window).isAll(color);
  }
  [[nodiscard]] std::uint32_t middlePixel() const {
    const Picture picture = client.screenPicture(hostWindow());
    return picture.at(picture.width / 2, picture.height / 2);
  }
  void savePicture(const std::string& name) const {
    const PixelRect area = client.areaOnScreen(hostWindow());
    client.screenPicture({area.x - 20, area.y - 40, area.width + 40, area.height + 60})
        .save("objective-c-" + name);
  }
  [[nodiscard]] std::vector<std::uint32_t> sizeHints() const {
    return client.numbers(hostWindow(), "WM_NORMAL_HINTS");
  }
  // Checks a launch screen that the library shows in a window of its own.
  void checkLaunchScreenInItsOwnWindow(const char* mode, const std::string& pictureName) {
    HostProcess host({examplePath("appkit-host"), "-seconds", "1.5", "-mode", mode},
                     server.display());
    clickWindow();
    EXPECT_TRUE(eventually([this] { return middlePixel() == kWhite; }));
    savePicture(pictureName);
    EXPECT_TRUE(eventually([&] { return host.lines().size() == 4; }));
    EXPECT_TRUE(eventually([this] { return isAll(kBlue); }));
    EXPECT_THAT(host.lines(),
                ElementsAre(EndsWith(" loaded"), EndsWith(" will appear"),
                            EndsWith(" did disappear"), EndsWith(" event launch_end")));
  }
};

// Each line that the host prints begins with the seconds since the click.
double secondsOf(const std::string& line) { return std::atof(line.c_str()); }

TEST_F(AppKitHost, TheWindowIsWhiteDuringTheLaunchScreenAndThenBlueAgain) {
  HostProcess host({examplePath("appkit-host"), "-seconds", "1.5", "-mode", kEmbedded},
                   server.display());
  ASSERT_TRUE(eventually([this] { return isAll(kBlue); }));
  savePicture("before");
  clickWindow();
  EXPECT_TRUE(eventually([this] { return isAll(kWhite); }));
  savePicture("covered");
  EXPECT_TRUE(eventually([&] { return host.lines().size() == 4; }));
  EXPECT_TRUE(eventually([this] { return isAll(kBlue); }));
  savePicture("after");
  EXPECT_THAT(host.lines(), ElementsAre(EndsWith(" loaded"), EndsWith(" will appear"),
                                        EndsWith(" did disappear"), EndsWith(" event launch_end")));
}

TEST_F(AppKitHost, RecordsTheEventHalfASecondAfterTheLaunchScreenDisappears) {
  HostProcess host({examplePath("appkit-host"), "-seconds", "1", "-mode", kEmbedded},
                   server.display());
  clickWindow();
  ASSERT_TRUE(eventually([&] { return host.lines().size() == 4; }));
  const double disappearance = secondsOf(host.lines()[2]);
  const double event = secondsOf(host.lines()[3]);
  EXPECT_GT(disappearance, 0.9);
  EXPECT_GT(event - disappearance, 0.49);
  EXPECT_LT(event - disappearance, 5);  // a busy machine is late
}

// The free AppKit cannot remove the buttons of the title bar, because the window manager draws
// them. The library can only forbid resizing, which changes the size hints.
TEST_F(AppKitHost, TheLaunchScreenChangesTheSizeHintsAndThenRestoresThem) {
  HostProcess host({examplePath("appkit-host"), "-seconds", "1.5", "-mode", kEmbedded},
                   server.display());
  ASSERT_TRUE(eventually([this] { return isAll(kBlue); }));
  const auto hints = sizeHints();
  clickWindow();
  EXPECT_TRUE(eventually([this] { return isAll(kWhite); }));
  EXPECT_TRUE(eventually([&] { return sizeHints() != hints; }));
  EXPECT_TRUE(eventually([&] { return sizeHints() == hints; }));
}

TEST_F(AppKitHost, TheCountdownPausesWhileAnotherProgramHasTheFocus) {
  HostProcess host({examplePath("appkit-host"), "-seconds", "4", "-mode", kEmbedded},
                   server.display());
  clickWindow();
  ASSERT_TRUE(eventually([this] { return isAll(kWhite); }));
  const xcb_window_t other = client.openGameWindow({950, 700, 100, 100}, 0);
  ASSERT_TRUE(eventually([&] { return client.isViewable(other); }));
  client.focus(other);
  // Without a pause, the launch screen would end while the other program has the focus.
  constexpr Nanoseconds kPause = 6 * kNanosecondsPerSecond;
  const Nanoseconds start = steadyNow();
  EXPECT_TRUE(eventually([&] { return steadyNow() - start > kPause; }));
  EXPECT_TRUE(isAll(kWhite));
  EXPECT_EQ(host.lines().size(), 2U);
  client.requestActivation(hostWindow());
  EXPECT_TRUE(eventually([this] { return isAll(kBlue); }));
  EXPECT_TRUE(eventually([&] { return host.lines().size() == 4; }));
  EXPECT_GT(secondsOf(host.lines()[2]), 6);
}

TEST_F(AppKitHost, ShowsTheLaunchScreenInAModalWindow) {
  checkLaunchScreenInItsOwnWindow(kModalWindow, "modal");
}

TEST_F(AppKitHost, ShowsTheLaunchScreenInASheet) {
  checkLaunchScreenInItsOwnWindow(kSheet, "sheet");
}

TEST_F(AppKitHost, EndsWhenTheUserClosesItsWindow) {
  HostProcess host({examplePath("appkit-host"), "-seconds", "1", "-mode", kEmbedded},
                   server.display());
  clickWindow();
  ASSERT_TRUE(eventually([&] { return host.lines().size() == 4; }));
  client.sendProtocolMessage(hostWindow(), "WM_DELETE_WINDOW");
  EXPECT_TRUE(eventually([this] { return hostWindow() == 0; }));
  EXPECT_EQ(host.wait(), 0);
}

}  // namespace
}  // namespace vel::test
