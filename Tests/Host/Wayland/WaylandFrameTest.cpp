// Runs `launchscreen show` under weston. The program opens a player window and shows the launch
// screen over it. weston draws no window frames, so libdecor draws them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/Wayland/Weston.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

constexpr std::uint32_t kDesktopColor = 0x203020;
constexpr PixelRect kPlayerContent{262, 224, 500, 320};  // in the middle of the screen
constexpr PixelRect kPlayerTitleBar{262, 200, 500, 24};
/// The area of a sheet or a modal window, without the window's frame.
constexpr PixelRect kLaunchScreen{272, 249, 480, 270};
/// The area directly above `kLaunchScreen`, where a frame would have its title bar.
constexpr PixelRect kAboveLaunchScreen{272, 225, 480, 24};
constexpr std::uint32_t kPlayerColor = 0x17213D;
constexpr int kPlayerCloseButtonX = 746;
constexpr int kPlayerCloseButtonY = 212;

class WaylandShowFrame : public testing::Test {
 protected:
  /// Starts `launchscreen show` as a client of `weston`, with additional `options`.
  [[nodiscard]] Process start(const std::vector<std::string>& options) const {
    std::vector<std::string> command{"env",        "WAYLAND_DISPLAY=" + weston.display(),
                                     LAUNCHSCREEN, "show",
                                     "--display",  "wayland",
                                     "--size",     "500x320",
                                     "--duration", "4"};
    command.insert(command.end(), options.begin(), options.end());
    return {command, ":2147483647"};  // no X server has this DISPLAY
  }
  [[nodiscard]] bool becomesWhite(PixelRect area) const {
    return eventually([&] { return weston.picture(area).isAll(kWhite); });
  }
  [[nodiscard]] bool playerGetsTitleBar() const {
    return eventually(
        [this] { return !weston.picture(kPlayerTitleBar).colors().contains(kDesktopColor); });
  }

  Weston weston;
};

TEST_F(WaylandShowFrame, ThePlayerWindowCannotBeClosedWhileTheLaunchScreenIsShown) {
  const Nanoseconds startTime = steadyNow();
  Process program = start({});
  ASSERT_TRUE(becomesWhite(kPlayerContent));
  EXPECT_TRUE(playerGetsTitleBar());
  weston.picture().save("wayland-show-frame");
  weston.click(kPlayerCloseButtonX, kPlayerCloseButtonY);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_GE(steadyNow() - startTime, 4 * kNanosecondsPerSecond);  // the whole --duration
}

TEST_F(WaylandShowFrame, ASheetHasAFrame) {
  Process program = start({"--content-controller", "--present", "sheet"});
  ASSERT_TRUE(becomesWhite(kLaunchScreen));
  EXPECT_TRUE(playerGetsTitleBar());
  EXPECT_FALSE(weston.picture(kAboveLaunchScreen).colors().contains(kPlayerColor));
  weston.picture().save("wayland-show-sheet");
  EXPECT_EQ(program.wait(), 0);
}

// The launch screen makes its modal window borderless.
TEST_F(WaylandShowFrame, AModalLaunchScreenHasNoFrame) {
  Process program = start({"--content-controller", "--present", "modal"});
  ASSERT_TRUE(becomesWhite(kLaunchScreen));
  EXPECT_TRUE(playerGetsTitleBar());
  EXPECT_TRUE(weston.picture(kAboveLaunchScreen).colors().contains(kPlayerColor));
  weston.picture().save("wayland-show-modal");
  EXPECT_EQ(program.wait(), 0);
}

}  // namespace
}  // namespace vel::test
