// Records the screen while the launch screen opens and closes.
#include <gmock/gmock.h>

#include "Tests/Host/X11/ShowProcess.h"
#include "Tests/Support/X11/FrameRecorder.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;
constexpr int kSpinnerSize = 32;  // width and height in pixels

struct Presentation {
  const char* kind;
  Manager manager;
  PixelRect area;  // the launch screen's area, relative to the game's window

  [[nodiscard]] std::string name() const {
    return std::string(kind) + (manager == Manager::None ? "WithoutAManager" : "UnderMetacity");
  }
  friend void PrintTo(const Presentation& presentation, std::ostream* out) {
    *out << presentation.name();
  }
};

class X11Frames : public X11Test, public testing::WithParamInterface<Presentation> {
 protected:
  X11Frames() : X11Test(GetParam().manager) {}
};

// G for the game, W for white with or without a spinner, ? for anything else.
char letterOf(const Picture& picture) {
  if (picture.isAll(kGreen)) {
    return 'G';
  }
  const PixelRect nonWhiteBounds = picture.boundsOfPixelsExcept(kWhite);
  return nonWhiteBounds.width <= kSpinnerSize && nonWhiteBounds.height <= kSpinnerSize ? 'W' : '?';
}

TEST_P(X11Frames, TheScreenShowsTheGameThenWhiteThenTheGame) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  ASSERT_TRUE(eventually(
      [&] { return client.isViewable(game) && client.screenPicture(game).isAll(kGreen); }));
  PixelRect area = GetParam().area;
  area.x += client.areaOnScreen(game).x;
  area.y += client.areaOnScreen(game).y;
  FrameRecorder recorder(server.display(), area, letterOf);
  ShowProcess show(server, {"--window", std::to_string(game), "--mode", "skip", "--duration", "600",
                            "--content-controller", "--indicator", "--present", GetParam().kind});
  EXPECT_TRUE(recorder.recordUntil([&] { return recorder.letters().ends_with('W'); }))
      << show.output();
  show.pressEnter();
  EXPECT_TRUE(recorder.recordUntil([&] { return recorder.letters().ends_with('G'); }))
      << show.output();
  EXPECT_EQ(show.wait(), 0) << show.output();
  EXPECT_EQ(recorder.letters(), "GWG");
  // Not checked for a modal window and a sheet: these are new windows, and the server may draw the
  // parts of a new window in any order.
  if (std::string_view(GetParam().kind) == "embedded") {
    // The recorder can miss a short frame, but it receives the rectangle of every drawing. The
    // first rectangle before the W of "GWG" must be the launch screen's white band above the
    // spinner.
    EXPECT_EQ(recorder.drawingsBefore(1).front(),
              (PixelRect{0, 0, area.width, (area.height - kSpinnerSize) / 2}));
  }
}

INSTANTIATE_TEST_SUITE_P(
    X11Show, X11Frames,
    testing::Values(Presentation{"embedded", Manager::None, {0, 0, 640, 400}},
                    Presentation{"embedded", Manager::Metacity, {0, 0, 640, 400}},
                    Presentation{"modal", Manager::None, {80, 65, 480, 270}},
                    Presentation{"modal", Manager::Metacity, {80, 65, 480, 270}},
                    Presentation{"sheet", Manager::None, {80, 0, 480, 270}},
                    Presentation{"sheet", Manager::Metacity, {80, 0, 480, 270}}),
    [](const testing::TestParamInfo<Presentation>& testInfo) { return testInfo.param.name(); });

}  // namespace
}  // namespace vel::test
