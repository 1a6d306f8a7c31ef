// A game resizes its window while `launchscreen show` covers the window.
#include <gmock/gmock.h>

#include "Tests/Host/X11/ShowProcess.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 400, 300};
constexpr PixelRect kLargerGameFrame{200, 150, 640, 480};
constexpr std::uint32_t kGameColor = 0x208040;

class X11ShowResize : public X11TestWithManager {};

// Returns a value of WM_NORMAL_HINTS. The minimum and maximum size are the size of `frame`.
Property fixedSizeHints(PixelRect frame) {
  constexpr std::uint32_t kSizeFlags = 16 | 32;  // PMinSize | PMaxSize
  std::vector<std::uint32_t> numbers(18);
  const auto width = static_cast<std::uint32_t>(frame.width);
  const auto height = static_cast<std::uint32_t>(frame.height);
  numbers[0] = kSizeFlags;
  numbers[5] = numbers[7] = width;
  numbers[6] = numbers[8] = height;
  return Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, numbers);
}

TEST_F(X11ShowResize, AGameThatEnlargesItsWindowStaysCovered) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGameColor);
  client.setProperty(game, "WM_NORMAL_HINTS", fixedSizeHints(kGameFrame));
  ASSERT_TRUE(eventually([&] { return client.isViewable(game); }));
  ShowProcess show(server, {"--window", std::to_string(game), "--mode", "skip", "--duration", "600",
                            "--content-controller"});
  // `show` prints this line after the library has overridden _MOTIF_WM_HINTS.
  ASSERT_TRUE(show.waitForOutput("controls kept")) << show.output();
  ASSERT_TRUE(eventually([&] { return client.screenPicture(game).isAll(kWhite); }));

  // A game with a window of fixed size changes the hints before the size.
  client.setProperty(game, "WM_NORMAL_HINTS", fixedSizeHints(kLargerGameFrame));
  client.configure(game, kLargerGameFrame);
  bool wasGameVisible = false;
  EXPECT_TRUE(eventually([&] {
    const Picture picture = client.screenPicture(game);
    wasGameVisible = wasGameVisible || picture.colors().contains(kGameColor);
    return picture.width == kLargerGameFrame.width && picture.height == kLargerGameFrame.height &&
           picture.isAll(kWhite);
  }));
  EXPECT_FALSE(wasGameVisible);

  show.pressEnter();
  EXPECT_EQ(show.wait(), 0) << show.output();
  EXPECT_EQ(client.property(game, "WM_NORMAL_HINTS"), fixedSizeHints(kLargerGameFrame));
  EXPECT_TRUE(eventually([&] { return client.screenPicture(game).isAll(kGameColor); }));
}

}  // namespace
}  // namespace vel::test
