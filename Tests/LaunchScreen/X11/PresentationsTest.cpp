// Launch screens over a window that moves, and over a window on the second monitor.
#include <gmock/gmock.h>

#include "Platform/Foundation/Message.h"
#include "Tests/LaunchScreen/X11/X11HostTest.h"

namespace vel::test {
namespace {

constexpr std::int32_t kHostModeEmbedded = 0;
constexpr std::int32_t kHostModeSheet = 1;
constexpr std::int32_t kHostModeModalWindow = 2;
constexpr double kLongDuration = 600;  // seconds

class X11Presentations : public X11HostTest {
 protected:
  /// True if the launch screen's window is white, measures 480 by 270 pixels, is horizontally
  /// centred in the game, and is `top` pixels below the game's upper edge.
  [[nodiscard]] bool isWhiteAt(const Strong<NSWindow>& window, int top) const {
    const PixelRect gameArea = client.areaOnScreen(game);
    const PixelRect expected{gameArea.x + (gameArea.width - 480) / 2, gameArea.y + top, 480, 270};
    return client.areaOnScreen(idOf(window->handle())) == expected &&
           client.screenPicture(expected).isAll(kWhite);
  }
  /// Moves the game and waits until `player`, the game's NSWindow, has the new position.
  void moveGame(int x, int y) {
    const PixelRect previousArea = client.areaOnScreen(game);
    client.configure(game, {x, y, previousArea.width, previousArea.height});
    ASSERT_TRUE(runUntil([&] {
      const PixelRect currentArea = client.areaOnScreen(game);
      return (currentArea.x != previousArea.x || currentArea.y != previousArea.y) &&
             player->frame().origin.x == double(currentArea.x);
    }));
  }
};

TEST_F(X11Presentations, ASheetMovesWithTheGame) {
  present(kLongDuration, kHostModeSheet);
  const auto sheets = player->sheets();
  ASSERT_EQ(sheets.size(), 1U);
  ASSERT_TRUE(runUntil([&] { return isWhiteAt(sheets.front(), 0); }));
  moveGame(420, 350);
  EXPECT_TRUE(runUntil([&] { return isWhiteAt(sheets.front(), 0); }));
}

TEST_F(X11Presentations, TheServerMovesAnEmbeddedCoverWithTheGame) {
  present(kLongDuration, kHostModeEmbedded);
  ASSERT_TRUE(runUntil([&] { return client.screenPicture(game).isAll(kWhite); }));
  const PixelRect previousArea = client.areaOnScreen(game);
  client.configure(game, {420, 350, previousArea.width, previousArea.height});
  // The run loop does not run here. The server moves the cover because the game is its parent.
  ASSERT_TRUE(eventually([&] { return !(client.areaOnScreen(game) == previousArea); }));
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

/// Two monitors side by side. The game is on the second monitor.
class X11SecondMonitor : public X11Presentations {
 protected:
  void SetUp() override {
    // `left` is the name of the monitor. 640/169x800/212+0+0 means 640 pixels (169 millimetres)
    // wide and 800 pixels (212 millimetres) high, at 0, 0. `screen` is an output of the graphics
    // device. The monitor `right` has no output.
    runProgram({"xrandr", "--setmonitor", "left", "640/169x800/212+0+0", "screen"},
               server.display());
    runProgram({"xrandr", "--setmonitor", "right", "640/169x960/254+640+0", "none"},
               server.display());
    ASSERT_THAT(runProgram({"xrandr", "--listmonitors"}, server.display()),
                testing::HasSubstr("right"));
    X11HostTest::SetUp();
    client.configure(game, {660, 500, 600, 400});
    ASSERT_TRUE(runUntil([this] {
      return client.areaOnScreen(game).x >= 640 && player->frame().size == CGSize{600, 400} &&
             player->frame().origin.x >= 640;
    }));
  }
};

TEST_F(X11SecondMonitor, AnEmbeddedCoverFillsTheGame) {
  present(kLongDuration, kHostModeEmbedded);
  EXPECT_TRUE(runUntil([this] { return client.screenPicture(game).isAll(kWhite); }));
}

TEST_F(X11SecondMonitor, ASheetIsAtTheTopOfTheGame) {
  present(kLongDuration, kHostModeSheet);
  ASSERT_EQ(player->sheets().size(), 1U);
  EXPECT_TRUE(runUntil([this] { return isWhiteAt(player->sheets().front(), 0); }));
}

TEST_F(X11SecondMonitor, AModalWindowIsInTheMiddleOfTheGame) {
  present(kLongDuration, kHostModeModalWindow);
  ASSERT_NE(NSApp->modalWindow(), nullptr);
  // `SetUp` makes the game 400 pixels high.
  EXPECT_TRUE(runUntil([this] { return isWhiteAt(NSApp->modalWindow(), (400 - 270) / 2); }));
}

}  // namespace
}  // namespace vel::test
