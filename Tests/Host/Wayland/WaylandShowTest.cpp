// Runs `launchscreen show` on a Wayland compositor, in real time. The program opens a player window
// and shows the launch screen over it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/Wayland/Sway.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

constexpr PixelRect kPlayerArea{262, 224, 500, 320};  // in the middle of the screen

class WaylandShow : public testing::Test {
 protected:
  [[nodiscard]] Process start(const std::vector<std::string>& options) const {
    std::vector<std::string> command{
        "env", "WAYLAND_DISPLAY=" + sway.display(), LAUNCHSCREEN, "show", "--size", "500x320"};
    command.insert(command.end(), options.begin(), options.end());
    return {command, ":2147483647"};  // no X display
  }
  [[nodiscard]] bool becomesWhite() const {
    return eventually([this] { return sway.picture(kPlayerArea).isAll(kWhite); });
  }

  Sway sway;
};

TEST_F(WaylandShow, ThePlayerWindowIsWhiteWhileTheLaunchScreenIsShown) {
  Process program = start({"--display", "wayland", "--duration", "3"});
  ASSERT_TRUE(becomesWhite());
  sway.picture({0, 0, 1024, 768}).save("wayland-show");
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(WaylandShow, ShowUsesWaylandIfTheDisplayOptionIsMissing) {
  Process program = start({"--duration", "3"});
  ASSERT_TRUE(becomesWhite());
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(WaylandShow, AModalWindowShowsTheLaunchScreen) {
  Process program = start({"--display", "wayland", "--duration", "3", "--present", "modal"});
  // The modal window is in the middle of the screen.
  EXPECT_TRUE(eventually([this] { return sway.picture({512, 384, 1, 1}).isAll(kWhite); }));
  EXPECT_NE(sway.picture(kPlayerArea).at(0, 0), kWhite);  // the modal window is smaller
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(WaylandShow, ShowFailsIfTheCompositorEnds) {
  Process program = start({"--display", "wayland", "--duration", "60"});
  ASSERT_TRUE(becomesWhite());
  sway.kill();
  EXPECT_EQ(program.wait(), 1);
}

TEST(WaylandShowWithoutACompositor, ShowFails) {
  Process program(
      {"env", "WAYLAND_DISPLAY=/nonexistent", LAUNCHSCREEN, "show", "--display", "wayland"}, "");
  EXPECT_EQ(program.wait(), 1);
}

}  // namespace
}  // namespace vel::test
