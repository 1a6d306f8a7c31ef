// Tests of the SDL game on Wayland, without an X display.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "Tests/Examples/HostProcess.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/Support/Wayland/Sway.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

constexpr std::uint32_t kGameColor = 0x204080;
constexpr std::uint32_t kDesktopColor = 0x203020;
constexpr PixelRect kScreen{0, 0, 1024, 768};
constexpr PixelRect kGameArea{192, 184, 640, 400};  // in the middle of the screen
constexpr const char* kTitle = "A game";

class GameOnWayland : public testing::Test {
 protected:
  GameOnWayland() {
    std::filesystem::remove(eventsFile_);
    // SDL unloads a library that leaks memory. The address sanitizer cannot name the functions of
    // an unloaded library, so a suppression cannot match these leaks.
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  }
  ~GameOnWayland() override { std::filesystem::remove(eventsFile_); }

  /// Starts the game. It draws `frames` frames, then shows a launch screen of `seconds` seconds.
  [[nodiscard]] std::unique_ptr<HostProcess> startGame(const std::string& seconds,
                                                       const std::string& frames = "0") const {
    return std::make_unique<HostProcess>(
        std::vector<std::string>{"env", "WAYLAND_DISPLAY=" + sway.display(),
                                 examplePath("sdl2-game"), eventsFile_, seconds, frames},
        ":2147483647");  // no X display
  }
  static bool waitForLine(HostProcess& game, std::string_view beginning) {
    return eventually([&] { return game.hasPrinted(beginning); });
  }
  [[nodiscard]] bool becomesWhite(PixelRect area) const {
    return eventually([&] { return sway.picture(area).isAll(kWhite); });
  }
  [[nodiscard]] bool gameBecomesVisible() const {
    return eventually([this] {
      const auto colors = sway.picture(kGameArea).colors();
      return colors.contains(kGameColor) && !colors.contains(kWhite) &&
             !colors.contains(kDesktopColor);
    });
  }
  [[nodiscard]] std::string recordedEvents() const {
    std::ostringstream text;
    text << std::ifstream(eventsFile_).rdbuf();
    return text.str();
  }

  Sway sway;

 private:
  std::string eventsFile_ = testing::TempDir() + "wayland-game-events-" + std::to_string(getpid());
};

TEST_F(GameOnWayland, KeepsDrawingUnderItsLaunchScreen) {
  const auto game = startGame("4", "120");
  ASSERT_TRUE(gameBecomesVisible());
  sway.picture(kScreen).save("wayland-game-before");

  ASSERT_TRUE(waitForLine(*game, "covered"));
  // Another window has the focus, so the countdown pauses during the checks.
  auto other = std::make_unique<SurfaceHost>(sway.display(), "other", CGSize{100, 100}, 0x804020);
  sway.run("[title=\"^other$\"] move position 0 0");
  ASSERT_TRUE(becomesWhite(kGameArea));
  // On Wayland, the library cannot remove controls. The game itself disables resizing and closing.
  EXPECT_TRUE(waitForLine(*game, "controls kept"));
  EXPECT_TRUE(waitForLine(*game, "controls removed"));
  const auto frameReportCount = [&] {
    return std::ranges::count_if(game->lines(),
                                 [](const auto& line) { return line.ends_with("frames covered"); });
  };
  const auto frameReportCountBefore = frameReportCount();
  EXPECT_TRUE(eventually([&] { return frameReportCount() >= frameReportCountBefore + 2; }));
  EXPECT_TRUE(sway.picture(kGameArea).isAll(kWhite));
  EXPECT_EQ(recordedEvents(), "");
  sway.picture(kScreen).save("wayland-game-during");

  other = nullptr;
  sway.focusWindow(kTitle);
  ASSERT_TRUE(waitForLine(*game, "event"));
  EXPECT_EQ(recordedEvents(), "launch_end\n");
  ASSERT_TRUE(waitForLine(*game, "uncovered"));
  EXPECT_TRUE(waitForLine(*game, "controls restored"));
  EXPECT_TRUE(gameBecomesVisible());
  sway.picture(kScreen).save("wayland-game-after");

  sway.closeWindow(kTitle);
  EXPECT_EQ(game->wait(), 0);
}

TEST_F(GameOnWayland, CoverFollowsTheSizeOfTheWindow) {
  const auto game = startGame("3600");
  ASSERT_TRUE(becomesWhite(kGameArea));
  sway.run("[title=\"^A game$\"] fullscreen enable");
  EXPECT_TRUE(becomesWhite(kScreen));
  sway.run("[title=\"^A game$\"] fullscreen disable");
  EXPECT_TRUE(eventually([this] {
    return sway.picture(kGameArea).isAll(kWhite) &&
           sway.picture({0, 0, 1024, kGameArea.y}).isAll(kDesktopColor);
  }));
}

TEST_F(GameOnWayland, UserCannotResizeOrCloseTheGameUntilTheLaunchScreenEnds) {
  const auto game = startGame("5");
  ASSERT_TRUE(waitForLine(*game, "controls removed"));
  // Another window has the focus, so the countdown pauses until the first drag focuses the game.
  const SurfaceHost other(sway.display(), "other", {100, 100}, 0x804020);
  sway.run("[title=\"^other$\"] move position 0 0");
  sway.run("[title=\"^A game$\"] border pixel 8");
  ASSERT_TRUE(becomesWhite(kGameArea));
  // A point on the lower right corner of the border.
  const int right = kGameArea.x + kGameArea.width + 4;
  const int bottom = kGameArea.y + kGameArea.height + 4;
  sway.drag(right, bottom, right + 100, bottom);
  sway.closeWindow(kTitle);
  ASSERT_TRUE(waitForLine(*game, "controls restored"));
  ASSERT_TRUE(gameBecomesVisible());
  // This drag starts on the border only if the first drag did not move the border.
  sway.drag(right, bottom, right + 50, bottom);
  EXPECT_TRUE(eventually([&] {
    const Picture picture = sway.picture(kScreen);
    return picture.at(right + 40, 300) == kGameColor &&
           picture.at(right + 80, 300) == kDesktopColor;
  }));
  sway.closeWindow(kTitle);
  EXPECT_EQ(game->wait(), 0);
}

}  // namespace
}  // namespace vel::test
