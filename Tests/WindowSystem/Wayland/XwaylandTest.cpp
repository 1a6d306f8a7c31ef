// The X11 back end covers windows of X clients under Wayland compositors with Xwayland.
#include <gmock/gmock.h>

#include <memory>

#include "Platform/WindowSystem/X11/X11WindowSystem.h"
#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

constexpr std::uint32_t kGreen = 0x208040;
constexpr PixelRect kGameFrame{100, 100, 500, 320};
/// The part of the screen in which the tests look for green pixels. The pointer is outside this
/// part.
constexpr PixelRect kSearchedArea{0, 0, 1000, 740};

Scene whiteScene(CGSize size) {
  return {{.kind = SceneItem::Kind::Fill, .frame = {{}, size}, .color = {1, 1, 1, 1}}};
}

/// A game with an X window on Xwayland, and the back end.
class Xwayland : public testing::TestWithParam<CompositorKind> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(becomesGreen(500, 320));
    std::string error;
    system = X11WindowSystem::open(compositor->xwaylandDisplay(), error);
    ASSERT_NE(system, nullptr) << error;
    system->setDelegate(&reports);
    const auto adopted = system->adoptWindow(X11WindowId{game}, error);
    ASSERT_TRUE(adopted.has_value()) << error;
    handle = adopted->handle;
    styleMask = adopted->styleMask;
  }
  bool waitFor(const std::function<bool()>& condition) {
    return eventually([&] {
      if (system != nullptr) {
        system->deliverEvents();
      }
      return condition();
    });
  }
  /// The rectangle around all green pixels; empty if there are no green pixels.
  [[nodiscard]] PixelRect greenArea() const {
    Picture picture = compositor->picture(kSearchedArea);
    for (std::uint32_t& pixel : picture.pixels) {
      pixel = pixel == kGreen ? 1 : 0;
    }
    return picture.boundsOfPixelsExcept(0);
  }
  /// Waits until the green pixels fill a rectangle of this size. Sets `area` to that rectangle.
  bool becomesGreen(int width, int height) {
    return waitFor([&] {
      area = greenArea();
      return area.width == width && area.height == height &&
             compositor->picture(area).isAll(kGreen);
    });
  }
  /// Waits until `whiteArea` is white and no pixel of the game is visible.
  bool becomesWhite(PixelRect whiteArea) {
    return waitFor(
        [&] { return greenArea().width == 0 && compositor->picture(whiteArea).isAll(kWhite); });
  }

  std::unique_ptr<Compositor> compositor = startCompositorWithXwayland(GetParam());
  XClient client{compositor->xwaylandDisplay()};
  xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  std::unique_ptr<X11WindowSystem> system;
  ReportListener reports;
  WindowHandle handle = WindowHandle::None;
  NSWindowStyleMask styleMask = 0;
  PixelRect area;  // the area of the game's window on the screen
};

TEST_P(Xwayland, TheCoverHidesTheGameUntilTheCoverIsRemoved) {
  system->setScene(handle, whiteScene({500, 320}));
  system->setStyleMask(handle, NSWindowStyleMaskTitled);
  EXPECT_TRUE(becomesWhite(area));
  compositor->picture().save("xwayland-" + nameOf(GetParam()));
  system->setScene(handle, {});
  system->setStyleMask(handle, styleMask);
  EXPECT_TRUE(becomesGreen(500, 320));
}

TEST_P(Xwayland, TheCoverFollowsTheSizeOfTheWindow) {
  system->setScene(handle, whiteScene({500, 320}));
  ASSERT_TRUE(becomesWhite(area));
  client.configure(game, {100, 100, 600, 400});
  // The compositor centres the larger window. Depending on the height of the title bar, the window
  // can be off by one pixel. So the checked area is one pixel smaller on each side.
  EXPECT_TRUE(becomesWhite({area.x - 50 + 1, area.y - 40 + 1, 600 - 2, 400 - 2}));
  system = nullptr;
  EXPECT_TRUE(becomesGreen(600, 400));
}

TEST_P(Xwayland, LosingAndRegainingTheFocusIsReported) {
  system->setScene(handle, whiteScene({500, 320}));
  ASSERT_TRUE(becomesWhite(area));
  const SurfaceHost other(compositor->display(), "other", {100, 100}, 0x804020);
  EXPECT_TRUE(waitFor([this] { return reports.contains("deactivated"); }));
  compositor->focusWindow("A game");
  EXPECT_TRUE(waitFor([this] { return reports.count("activated") == 1; }));
}

INSTANTIATE_TEST_SUITE_P(Under, Xwayland,
                         testing::Values(CompositorKind::Sway, CompositorKind::Weston),
                         [](const auto& testInfo) { return nameOf(testInfo.param); });

}  // namespace
}  // namespace vel::test
