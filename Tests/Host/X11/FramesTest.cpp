// All frames that the screen shows from before the request until after the end.
#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "Tests/Host/X11/ShowProcess.h"
#include "Tests/Support/X11/FrameRecorder.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

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

// G for the game, W for white with or without an indicator, ? for anything else.
char letterOf(const Picture& picture) {
  if (picture.isAll(kGreen)) {
    return 'G';
  }
  const PixelRect nonWhiteBounds = picture.boundsOfOtherColors(kWhite);
  return nonWhiteBounds.width <= 32 && nonWhiteBounds.height <= 32 ? 'W' : '?';
}

// Returns true if the rectangles together contain each pixel of an area of this size.
bool fillArea(const std::vector<PixelRect>& rectangles, int width, int height) {
  std::set<std::pair<int, int>> pixels;
  for (const PixelRect& rectangle : rectangles) {
    for (int y = std::max(rectangle.y, 0); y < std::min(rectangle.y + rectangle.height, height);
         ++y) {
      for (int x = std::max(rectangle.x, 0); x < std::min(rectangle.x + rectangle.width, width);
           ++x) {
        pixels.emplace(x, y);
      }
    }
  }
  return pixels.size() == static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
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
  if (std::string_view(GetParam().kind) == "embedded") {
    // The server draws the cover around its indicator and the indicator, in several rectangles. The
    // other presentations are separate windows, and a window manager may draw their parts later.
    EXPECT_TRUE(fillArea(recorder.drawingsBefore(1), area.width, area.height));
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
