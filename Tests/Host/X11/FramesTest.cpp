// Every frame from before the request to after the end, as the server draws them.
#include <gmock/gmock.h>

#include "Tests/Support/X11/FrameWatch.h"
#include "Tests/Support/X11/X11Test.h"
#include "Tests/Host/X11/LaunchedShow.h"

namespace vel::test {
namespace {

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

struct Presented {
  const char* how;
  Manager manager;
  PixelRect place;  // where the launch screen lies, in the game's window

  [[nodiscard]] std::string name() const {
    return std::string(how) + (manager == Manager::None ? "WithoutAManager" : "UnderMetacity");
  }
  friend void PrintTo(const Presented& presented, std::ostream* out) { *out << presented.name(); }
};

class X11Frames : public X11Test, public testing::WithParamInterface<Presented> {
 protected:
  X11Frames() : X11Test(GetParam().manager) {}
};

// The game's picture, white with or without an indicator, or anything else.
char kindOf(const Picture& picture) {
  if (picture.isAll(kGreen)) {
    return 'G';
  }
  const PixelRect other = picture.otherThan(kWhite);
  return other.width <= 32 && other.height <= 32 ? 'W' : '?';
}

TEST_P(X11Frames, AreTheGamesThenWhiteThenTheGamesAndNothingBetween) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  ASSERT_TRUE(
      eventually([&] { return user.isViewable(game) && user.picture(game).isAll(kGreen); }));
  PixelRect place = GetParam().place;
  place.x += user.frameOf(game).x;
  place.y += user.frameOf(game).y;
  FrameWatch watch(server.display(), place, kindOf);
  LaunchedShow show(server,
                    {"--window", std::to_string(game), "--mode", "skip", "--duration", "600",
                     "--content-controller", "--indicator", "--present", GetParam().how});
  EXPECT_TRUE(watch.watchUntil([&] { return watch.kinds().ends_with('W'); })) << show.output();
  show.pressEnter();
  EXPECT_TRUE(watch.watchUntil([&] { return watch.kinds().ends_with('G'); })) << show.output();
  EXPECT_EQ(show.wait(), 0) << show.output();
  EXPECT_EQ(watch.kinds(), "GWG");
  if (std::string_view(GetParam().how) == "embedded") {
    // Also what passed too fast to be looked at: the first thing drawn is the whole. (A window that
    // comes with things in it is drawn at once, in any order.)
    EXPECT_EQ(watch.drawingsBefore(1).front(), (PixelRect{0, 0, place.width, place.height}));
  }
}

INSTANTIATE_TEST_SUITE_P(X11Show, X11Frames,
                         testing::Values(Presented{"embedded", Manager::None, {0, 0, 640, 400}},
                                         Presented{"embedded", Manager::Metacity, {0, 0, 640, 400}},
                                         Presented{"modal", Manager::None, {80, 65, 480, 270}},
                                         Presented{"modal", Manager::Metacity, {80, 65, 480, 270}},
                                         Presented{"sheet", Manager::None, {80, 0, 480, 270}},
                                         Presented{"sheet", Manager::Metacity, {80, 0, 480, 270}}),
                         [](const testing::TestParamInfo<Presented>& tested) {
                           return tested.param.name();
                         });

}  // namespace
}  // namespace vel::test
