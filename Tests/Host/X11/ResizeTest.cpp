// A program under a window manager that resizes its window while `launchscreen show` covers it.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"
#include "Tests/Host/X11/LaunchedShow.h"

namespace vel::test {
namespace {

constexpr PixelRect kGame{200, 150, 400, 300};
constexpr PixelRect kLarger{200, 150, 640, 480};
constexpr std::uint32_t kGreen = 0x208040;

class X11ShowResize : public X11TestWithManager {};

// What a window may be in size: nothing but this.
Property onlySize(PixelRect frame) {
  constexpr std::uint32_t kMinimumAndMaximum = 16 | 32;
  std::vector<std::uint32_t> numbers(18);
  const auto width = static_cast<std::uint32_t>(frame.width);
  const auto height = static_cast<std::uint32_t>(frame.height);
  numbers[0] = kMinimumAndMaximum;
  numbers[5] = numbers[7] = width;
  numbers[6] = numbers[8] = height;
  return Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, numbers);
}

TEST_F(X11ShowResize, AWindowThatItsProgramMakesLargerIsWhiteToItsNewSize) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  user.setProperty(game, "WM_NORMAL_HINTS", onlySize(kGame));
  ASSERT_TRUE(eventually([&] { return user.isViewable(game); }));
  LaunchedShow show(server, {"--window", std::to_string(game), "--mode", "skip", "--duration",
                             "600", "--content-controller"});
  ASSERT_TRUE(show.prints("controls kept")) << show.output();
  ASSERT_TRUE(eventually([&] { return user.picture(game).isAll(kWhite); }));

  // As programs do whose windows the user cannot resize.
  user.setProperty(game, "WM_NORMAL_HINTS", onlySize(kLarger));
  user.configure(game, kLarger);
  bool seen = false;
  EXPECT_TRUE(eventually([&] {
    const Picture picture = user.picture(game);
    seen = seen || picture.colors().contains(kGreen);
    return picture.width == kLarger.width && picture.height == kLarger.height &&
           picture.isAll(kWhite);
  }));
  EXPECT_FALSE(seen);  // the game, on the way there

  show.pressEnter();
  EXPECT_EQ(show.wait(), 0) << show.output();
  EXPECT_EQ(user.property(game, "WM_NORMAL_HINTS"), onlySize(kLarger));
  EXPECT_TRUE(eventually([&] { return user.picture(game).isAll(kGreen); }));
}

}  // namespace
}  // namespace vel::test
