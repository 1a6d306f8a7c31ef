// Runs `launchscreen show` on the free AppKit of GNUstep, in real time.
#include <gtest/gtest.h>

#include "Tests/Support/Cocoa/AppKitEnvironment.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

// `X11Test` must stop the X server before the destructor of `AppKitEnvironment` kills all child
// processes. So `AppKitEnvironment` is the first base class.
class CocoaShow : private AppKitEnvironment, public X11Test {
 protected:
  CocoaShow() : X11Test(Manager::Metacity) {}

  /// Starts the program with a player window of 500 by 320 points.
  [[nodiscard]] Process start(const std::vector<std::string>& options) const {
    std::vector<std::string> command{LAUNCHSCREEN, "show",   "--display",
                                     "cocoa",      "--size", "500x320"};
    command.insert(command.end(), options.begin(), options.end());
    return {command, server.display()};
  }
  /// True if all pixels of the player window on the screen have this colour.
  [[nodiscard]] bool isPlayerWindowAll(std::uint32_t color) const {
    const xcb_window_t player = client.findWindow("launchscreen: player");
    return player != 0 && client.isViewable(player) && client.screenPicture(player).isAll(color);
  }
};

TEST_F(CocoaShow, ThePlayerWindowIsWhiteWhileTheLaunchScreenIsShown) {
  Process program = start({"--duration", "2"});
  ASSERT_TRUE(eventually([this] { return isPlayerWindowAll(kWhite); }));
  client.screenPicture(PixelRect{0, 0, 1280, 960}).save("cocoa-show");
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(CocoaShow, ShowPrintsTheEventWhenItIsRecorded) {
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
