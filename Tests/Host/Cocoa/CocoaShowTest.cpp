// Runs `launchscreen show` with the AppKit of GNUstep, in real time.
#include <gtest/gtest.h>

#include "Tests/Support/Cocoa/AppKitEnvironment.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

// The first base class is destroyed last. `X11Test` must stop the X server before the destructor of
// `AppKitEnvironment` kills all descendants of this process.
class CocoaShow : private AppKitEnvironment, public X11Test {
 protected:
  CocoaShow() : X11Test(Manager::Metacity) {}

  /// Starts the program. It opens a player window of 500 by 320 points and covers this window with
  /// the launch screen.
  [[nodiscard]] Process start(const std::vector<std::string>& options) const {
    std::vector<std::string> command{LAUNCHSCREEN, "show",   "--display",
                                     "cocoa",      "--size", "500x320"};
    command.insert(command.end(), options.begin(), options.end());
    return {command, server.display()};
  }
  /// True if every pixel of the player window on the screen has the colour `color`.
  [[nodiscard]] bool isPlayerWindowFilledWith(std::uint32_t color) const {
    const xcb_window_t player = client.findWindow("launchscreen: player");
    return player != 0 && client.isViewable(player) && client.screenPicture(player).isAll(color);
  }
};

TEST_F(CocoaShow, ThePlayerWindowIsWhiteWhileTheLaunchScreenIsShown) {
  Process program = start({"--duration", "2"});
  ASSERT_TRUE(eventually([this] { return isPlayerWindowFilledWith(kWhite); }));
  client.screenPicture(PixelRect{0, 0, 1280, 960}).save("cocoa-show");
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(CocoaShow, ShowPrintsTheRecordedEvent) {
  const std::string output = runProgram(
      {LAUNCHSCREEN, "show", "--display", "cocoa", "--duration", "0.5", "--event", "game_started"},
      server.display());
  EXPECT_NE(output.find("event recorded: game_started"), std::string::npos) << output;
}

TEST(CocoaShowWithoutAnXServer, ShowFails) {
  const AppKitEnvironment environment;
  Process program({LAUNCHSCREEN, "show", "--display", "cocoa"}, ":2147483647");
  EXPECT_EQ(program.wait(), 1);
}

}  // namespace
}  // namespace vel::test
