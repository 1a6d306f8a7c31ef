// Screens with different scales, touch screens, and compositors without the global wp_viewporter.
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#include "Tests/Support/Wayland/HiddenGlobal.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/Support/Wayland/Sway.h"
#include "Tests/Support/Wayland/Weston.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

constexpr std::uint32_t kGreen = 0x208040;
constexpr CGSize kSize{300, 200};
constexpr CGSize kLargeSize{400, 260};
constexpr int kSpinnerSide = 32;
constexpr PixelRect kFirstOutput{0, 0, 1024, 768};
constexpr PixelRect kSecondOutput{1024, 0, 1024, 768};
/// The screen except its right and lower edge. The pointer is outside this area.
constexpr PixelRect kSearchedArea{0, 0, 1000, 740};

Scene white(CGSize size) {
  return {{.kind = SceneItem::Kind::Fill, .frame = {{}, size}, .color = {1, 1, 1, 1}}};
}

Scene whiteWithSpinner(CGSize size) {
  Scene scene = white(size);
  scene.push_back(
      {.kind = SceneItem::Kind::Spinner,
       .frame = CGRectMake((size.width - kSpinnerSide) / 2, (size.height - kSpinnerSide) / 2,
                           kSpinnerSide, kSpinnerSide),
       .color = {},
       .isAnimated = true});
  return scene;
}

/// The rectangle around all pixels of this colour.
PixelRect boundsOf(Picture picture, std::uint32_t color) {
  for (std::uint32_t& pixel : picture.pixels) {
    pixel = pixel == color ? 1 : 0;
  }
  return picture.boundsOfPixelsExcept(0);
}

/// The part of a picture in this area.
Picture partOf(const Picture& picture, PixelRect area) {
  Picture part{area.width, area.height, {}};
  for (int y = 0; y < area.height; ++y) {
    for (int x = 0; x < area.width; ++x) {
      part.pixels.push_back(picture.at(area.x + x, area.y + y));
    }
  }
  return part;
}

/// True if each block of two by two pixels has one colour. Enlarging a picture by two causes such
/// blocks.
bool isEnlargedByTwo(const Picture& picture) {
  for (int y = 0; y + 1 < picture.height; y += 2) {
    for (int x = 0; x + 1 < picture.width; x += 2) {
      const std::uint32_t pixel = picture.at(x, y);
      if (picture.at(x + 1, y) != pixel || picture.at(x, y + 1) != pixel ||
          picture.at(x + 1, y + 1) != pixel) {
        return false;
      }
    }
  }
  return true;
}

/// A host whose window the back end has adopted. The back end shares the host's connection.
class CoveredHost {
 public:
  explicit CoveredHost(const Compositor& compositor)
      : host(compositor.display(), "game", kSize, kGreen) {
    std::string error;
    system = WaylandWindowSystem::share(host.display(), error);
    EXPECT_NE(system, nullptr) << error;
    handle = system->adoptWindow(host.window(), error).value().handle;
  }

  bool waitFor(const std::function<bool()>& condition) {
    return deliverUntil(*system, [&] {
      host.pump();
      return condition();
    });
  }
  bool waitForWindow(const Compositor& compositor, std::uint32_t color, CGSize size) {
    return waitFor([&] {
      const Picture picture = compositor.picture(kSearchedArea);
      const PixelRect area = boundsOf(picture, color);
      return area.width == static_cast<int>(size.width) &&
             area.height == static_cast<int>(size.height) && partOf(picture, area).isAll(color);
    });
  }

  SurfaceHost host;
  std::unique_ptr<WaylandWindowSystem> system;
  WindowHandle handle = WindowHandle::None;
};

/// A compositor with two outputs. If the test parameter is false, wp_viewporter is hidden from the
/// clients.
class WaylandOutputs : public testing::TestWithParam<bool> {
 protected:
  /// Waits until the output shows a white window with a sharp spinner: a spinner that was drawn at
  /// this scale, not enlarged. Then saves a picture of the window.
  void expectWindow(WindowSystem& system, PixelRect output, int scale, const std::string& name) {
    Picture picture;
    Picture spinner;
    EXPECT_TRUE(deliverUntil(system, [&] {
      const Picture screen = sway.picture(output);
      const PixelRect area = boundsOf(screen, kWhite);
      if (area.width != scale * 300 || area.height != scale * 200) {
        return false;
      }
      picture = partOf(screen, area);
      // The drawing fills most of the spinner's frame.
      const PixelRect bounds = picture.boundsOfPixelsExcept(kWhite);
      if (bounds.width <= scale * 24 || bounds.width > scale * kSpinnerSide ||
          bounds.height <= scale * 24 || bounds.height > scale * kSpinnerSide) {
        return false;
      }
      spinner = partOf(picture, {(picture.width - scale * kSpinnerSide) / 2,
                                 (picture.height - scale * kSpinnerSide) / 2, scale * kSpinnerSide,
                                 scale * kSpinnerSide});
      return scale == 1 || !isEnlargedByTwo(spinner);
    }));
    picture.save("wayland-" + name + "-scale-" + std::to_string(scale) +
                 (GetParam() ? "" : "-without-viewporter"));
  }

  /// Returns null if the test parameter is true.
  static std::unique_ptr<HiddenGlobal> hideViewporter() {
    return GetParam() ? nullptr : std::make_unique<HiddenGlobal>("wp_viewporter");
  }

  Sway sway{{.outputCount = 2}};
};

TEST_P(WaylandOutputs, TheSpinnerOfACoverIsSharpAtScalesOneAndTwo) {
  std::unique_ptr<HiddenGlobal> hidden = hideViewporter();
  sway.run("output X11-2 scale 2");
  CoveredHost covered(sway);
  // The host and the back end have one registry each.
  EXPECT_EQ(HiddenGlobal::registryCount(), GetParam() ? 0 : 2);
  sway.run("[title=game] move container to output X11-1");
  covered.system->setScene(covered.handle, whiteWithSpinner(kSize));
  expectWindow(*covered.system, kFirstOutput, 1, "cover");
  sway.run("[title=game] move container to output X11-2");
  expectWindow(*covered.system, kSecondOutput, 2, "cover");
}

TEST_P(WaylandOutputs, TheSpinnerOfACreatedWindowIsSharpOnEachOutput) {
  std::unique_ptr<HiddenGlobal> hidden = hideViewporter();
  sway.run("output X11-2 scale 2");
  std::string error;
  const auto system = WaylandWindowSystem::open(sway.display(), error);
  ASSERT_NE(system, nullptr) << error;
  const WindowHandle window =
      system->createWindow({.className = "Window", .title = "window", .frame = {{}, kSize}});
  system->setScene(window, whiteWithSpinner(kSize));
  system->orderFront(window);
  ASSERT_TRUE(deliverUntil(*system, [&] { return sway.picture().colors().contains(kWhite); }));
  sway.run("[title=window] move container to output X11-1");
  expectWindow(*system, kFirstOutput, 1, "window");
  sway.run("[title=window] move container to output X11-2");
  expectWindow(*system, kSecondOutput, 2, "window");
  sway.run("[title=window] move container to output X11-1");
  expectWindow(*system, kFirstOutput, 1, "window");
}

INSTANTIATE_TEST_SUITE_P(Wayland, WaylandOutputs, testing::Bool(), [](const auto& testInfo) {
  return testInfo.param ? "WithViewporter" : "WithoutViewporter";
});

TEST(WaylandFractionalScale, TheCoverHidesEachPixelOfTheHost) {
  Sway sway;
  sway.run("output X11-1 scale 1.5");
  CoveredHost covered(sway);
  Picture before;
  ASSERT_TRUE(covered.waitFor([&] {
    before = sway.picture(kFirstOutput);
    // The window has 450 by 300 pixels. Its edges may have another colour.
    const PixelRect area = boundsOf(before, kGreen);
    return area.width >= 448 && area.height >= 298;
  }));
  covered.system->setScene(covered.handle, white(kSize));
  int uncoveredPixels = -1;
  EXPECT_TRUE(covered.waitFor([&] {
    const Picture picture = sway.picture(kFirstOutput);
    uncoveredPixels = 0;
    for (int y = 0; y < picture.height; ++y) {
      for (int x = 0; x < picture.width; ++x) {
        uncoveredPixels += before.at(x, y) == kGreen && picture.at(x, y) != kWhite ? 1 : 0;
      }
    }
    return uncoveredPixels == 0;
  })) << uncoveredPixels;
  sway.picture(kFirstOutput).save("wayland-fractional-scale");
}

class WaylandWithoutViewporter : public testing::TestWithParam<CompositorKind> {};

TEST_P(WaylandWithoutViewporter, TheCoverFillsTheWindowOfTheHostBeforeAndAfterAResize) {
  const auto compositor = startCompositor(GetParam());
  const HiddenGlobal hidden("wp_viewporter");
  CoveredHost covered(*compositor);
  // The host and the back end have one registry each.
  EXPECT_EQ(HiddenGlobal::registryCount(), 2);
  ASSERT_TRUE(covered.waitForWindow(*compositor, kGreen, kSize));
  covered.system->setScene(covered.handle, white(kSize));
  EXPECT_TRUE(covered.waitForWindow(*compositor, kWhite, kSize));
  covered.host.resize(kLargeSize);
  covered.system->setFrame(covered.handle, {{}, kLargeSize});
  covered.system->setScene(covered.handle, white(kLargeSize));
  EXPECT_TRUE(covered.waitForWindow(*compositor, kWhite, kLargeSize));
  covered.system->setScene(covered.handle, {});
  EXPECT_TRUE(covered.waitForWindow(*compositor, kGreen, kLargeSize));
  EXPECT_EQ(wl_display_get_error(covered.host.display()), 0);
}

TEST_P(WaylandWithoutViewporter, TheBackEndLogsASizeThatDoesNotFitIntoSharedMemory) {
  const auto compositor = startCompositor(GetParam());
  const HiddenGlobal hidden("wp_viewporter");
  CoveredHost covered(*compositor);
  covered.system->setScene(covered.handle, white(kSize));
  ASSERT_TRUE(covered.waitForWindow(*compositor, kWhite, kSize));
  std::vector<std::string> logLines;
  const NSLogSink previousSink =
      setNSLogSink([&logLines](std::string_view line) { logLines.emplace_back(line); });
  constexpr CGSize kHugeSize{23200, 23200};  // 2152960000 bytes, more than INT32_MAX
  covered.system->setFrame(covered.handle, {{}, kHugeSize});
  covered.system->setScene(covered.handle, white(kHugeSize));
  setNSLogSink(previousSink);
  EXPECT_THAT(logLines,
              testing::Each("Wayland: a buffer of 23200 by 23200 pixels does not fit into wl_shm"));
  EXPECT_FALSE(logLines.empty());
  deliverAll(*covered.system);
  EXPECT_EQ(wl_display_get_error(covered.host.display()), 0);
}

INSTANTIATE_TEST_SUITE_P(Under, WaylandWithoutViewporter,
                         testing::Values(CompositorKind::Sway, CompositorKind::Weston),
                         [](const auto& testInfo) { return nameOf(testInfo.param); });

// Not under sway: it runs in a window of an X server, without a touch screen.
TEST(WaylandTouchScreen, TheCoverTakesTouchesFromTheHost) {
  const Weston weston;
  CoveredHost covered(weston);
  weston.addTouchScreen();
  ASSERT_TRUE(covered.waitFor([&] { return covered.host.hasTouch(); }));
  ASSERT_TRUE(covered.waitForWindow(weston, kGreen, kSize));
  weston.touch(512, 384);
  ASSERT_TRUE(covered.waitFor([&] { return covered.host.touches() == 1; }));
  covered.system->setScene(covered.handle, white(kSize));
  ASSERT_TRUE(covered.waitForWindow(weston, kWhite, kSize));
  weston.touch(512, 384);
  EXPECT_TRUE(covered.waitFor([&] { return covered.host.touchesElsewhere() == 1; }));
  EXPECT_EQ(covered.host.touches(), 1);
}

}  // namespace
}  // namespace vel::test
