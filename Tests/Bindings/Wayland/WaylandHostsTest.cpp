// Launch screens over the Wayland windows of hosts that are busy, use a second thread or use a
// toolkit. The tests use the C interface and run under sway and weston.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

#include "Bindings/C/vel_launch_screen.h"
#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

constexpr std::uint32_t kGreen = 0x208040;
constexpr std::uint32_t kBlue = 0x2040A0;
constexpr CGSize kSize{500, 320};
constexpr CGSize kLargeSize{700, 450};
constexpr CGSize kScreenSize{1024, 768};
constexpr int kFrames = 20;

/// The part of the screen in which tests search for windows. It excludes the lower right corner,
/// where weston shows the pointer.
constexpr PixelRect kSearchedArea{0, 0, 1000, 740};

/// The smallest rectangle that contains all pixels of this colour in kSearchedArea; empty if there
/// are no such pixels.
PixelRect boundsOfColor(const Compositor& compositor, std::uint32_t color) {
  Picture picture = compositor.picture(kSearchedArea);
  for (std::uint32_t& pixel : picture.pixels) {
    pixel = pixel == color ? 1 : 0;
  }
  return picture.boundsOfPixelsExcept(0);
}

/// True if the pixels of this colour in kSearchedArea are exactly one rectangle of this size. The
/// part of the rectangle outside kSearchedArea is ignored.
bool hasRectangle(const Compositor& compositor, std::uint32_t color, CGSize size) {
  const PixelRect bounds = boundsOfColor(compositor, color);
  return bounds.width == std::min(static_cast<int>(size.width), kSearchedArea.width) &&
         bounds.height == std::min(static_cast<int>(size.height), kSearchedArea.height) &&
         compositor.picture(bounds).isAll(color);
}

/// A host with an xdg-shell window that it creates without a toolkit.
class WaylandHosts : public testing::TestWithParam<CompositorKind> {
 protected:
  ~WaylandHosts() override { vel_destroy(&screen); }

  /// Presents a launch screen over the window of the host.
  void present() {
    const WaylandSurface surface = host.window();
    VelHostWindow window = VEL_HOST_WINDOW_INIT;
    window.wl_display = surface.display;
    window.wl_surface = surface.surface;
    window.xdg_toplevel = surface.toplevel;
    window.width = surface.size.width;
    window.height = surface.size.height;
    VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
    options.host_window = &window;
    VelRequest request = VEL_REQUEST_INIT;
    request.event = "launch_end";
    request.seconds = 600;
    ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
    ASSERT_EQ(vel_request(screen, &request), VEL_OK) << vel_last_error();
    ASSERT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_OK) << vel_last_error();
  }
  [[nodiscard]] bool hasWindow(std::uint32_t color, CGSize size = kSize) const {
    return hasRectangle(*compositor, color, size);
  }
  void pump() {
    if (screen != nullptr) {
      EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK) << vel_last_error();
    }
  }
  /// Simulates a busy host: pumps only the library until the window has this colour.
  bool becomes(std::uint32_t color) {
    return eventually([&] {
      pump();
      return hasWindow(color);
    });
  }
  /// Pumps the library and the host until the condition is true.
  bool waitWithHost(const std::function<bool()>& condition) {
    return eventually([&] {
      host.pump();
      pump();
      return condition();
    });
  }
  /// Waits until the window has this size, reports the size to the library, and waits until the
  /// cover has this size.
  void expectResize(CGSize size) {
    ASSERT_TRUE(waitWithHost([&] { return host.size() == size; }));
    ASSERT_EQ(vel_resized(screen, size.width, size.height), VEL_OK) << vel_last_error();
    EXPECT_TRUE(waitWithHost([&] { return hasWindow(kWhite, size); }));
  }
  /// Ends the launch screen and waits until the window is green again.
  void expectHostAfterEnd(CGSize size = kSize) {
    ASSERT_EQ(vel_destroy(&screen), VEL_OK);
    EXPECT_TRUE(eventually([&] { return hasWindow(kGreen, size); }));
    EXPECT_EQ(wl_display_get_error(host.display()), 0);
  }
  void savePicture(const std::string& name) const {
    compositor->picture().save("wayland-" + name + "-" + nameOf(GetParam()));
  }

  std::unique_ptr<Compositor> compositor = startCompositor(GetParam());
  SurfaceHost host{compositor->display(), "game", kSize, kGreen};
  VelLaunchScreen* screen = nullptr;
};

TEST_P(WaylandHosts, TheCoverAppearsWhileTheHostIsBusy) {
  ASSERT_TRUE(becomes(kGreen));
  present();
  EXPECT_TRUE(becomes(kWhite));
  savePicture("busy-host");
  expectHostAfterEnd();
}

TEST_P(WaylandHosts, TheHostGetsFrameCallbacksWhileItsWindowStaysWhite) {
  ASSERT_TRUE(becomes(kGreen));
  present();
  ASSERT_TRUE(becomes(kWhite));
  for (int i = 1; i <= kFrames; ++i) {
    host.drawFrame();
    ASSERT_TRUE(waitWithHost([&] { return host.frameCount() == i; }));
    ASSERT_TRUE(hasWindow(kWhite));
  }
  expectHostAfterEnd();
}

TEST_P(WaylandHosts, TheCoverFillsTheWindowAfterTheHostResizesIt) {
  ASSERT_TRUE(becomes(kGreen));
  present();
  ASSERT_TRUE(becomes(kWhite));
  host.resize(kLargeSize);
  expectResize(kLargeSize);
  savePicture("resized-host");
  expectHostAfterEnd(kLargeSize);
}

TEST_P(WaylandHosts, TheCoverFillsTheWindowAfterTheHostMakesItFullscreen) {
  ASSERT_TRUE(becomes(kGreen));
  present();
  ASSERT_TRUE(becomes(kWhite));
  host.setFullscreen(true);
  expectResize(kScreenSize);
  savePicture("fullscreen-host");
  host.setFullscreen(false);
  expectResize(kSize);
  expectHostAfterEnd();
}

TEST_P(WaylandHosts, TheWindowStaysWhiteWhileASecondThreadOfTheHostDraws) {
  ASSERT_TRUE(becomes(kGreen));
  std::atomic<bool> isStopRequested = false;
  std::atomic<int> drawCount = 0;
  std::thread drawingThread([&] {
    while (!isStopRequested) {
      host.draw();
      ++drawCount;
      waitForInput(-1, steadyNow() + kNanosecondsPerSecond / 500);  // sleeps for 2 ms
    }
  });
  present();
  EXPECT_TRUE(waitWithHost([this] { return hasWindow(kWhite); }));
  const int countBefore = drawCount;
  bool hasStayedWhite = true;
  EXPECT_TRUE(waitWithHost([&] {
    hasStayedWhite = hasStayedWhite && hasWindow(kWhite);
    return drawCount >= countBefore + 3 * kFrames;
  }));
  EXPECT_TRUE(hasStayedWhite);
  expectHostAfterEnd();
  isStopRequested = true;
  drawingThread.join();
}

TEST_P(WaylandHosts, TheCoverAndTheCountdownWorkWhileASecondThreadOfTheHostReadsTheConnection) {
  ASSERT_TRUE(becomes(kGreen));
  std::atomic<bool> isStopRequested = false;
  std::thread readingThread([&] {
    while (!isStopRequested && wl_display_dispatch(host.display()) >= 0) {
    }
  });
  present();
  EXPECT_TRUE(becomes(kWhite));
  const auto pauseBecomes = [this](VelPause expected) {
    return eventually([&] {
      pump();
      VelPause reason = VEL_PAUSE_NONE;
      EXPECT_EQ(vel_pause_reason(screen, &reason), VEL_OK);
      return reason == expected;
    });
  };
  EXPECT_TRUE(pauseBecomes(VEL_PAUSE_NONE));
  const SurfaceHost other(compositor->display(), "other", {100, 100}, 0x804020);
  EXPECT_TRUE(pauseBecomes(VEL_PAUSE_NOT_IN_FRONT));
  compositor->focusWindow("game");
  EXPECT_TRUE(pauseBecomes(VEL_PAUSE_NONE));
  expectHostAfterEnd();
  isStopRequested = true;
  // The reply to wl_display_sync() makes wl_display_dispatch() return in the reading thread.
  wl_callback* const syncCallback = wl_display_sync(host.display());
  wl_display_flush(host.display());
  readingThread.join();
  wl_callback_destroy(syncCallback);
}

INSTANTIATE_TEST_SUITE_P(Under, WaylandHosts,
                         testing::Values(CompositorKind::Sway, CompositorKind::Weston),
                         [](const auto& testInfo) { return nameOf(testInfo.param); });

/// A program that uses a toolkit, and the compositor that shows its window.
struct ToolkitCase {
  const char* name;
  std::vector<std::string> command;
  CompositorKind compositor;

  [[nodiscard]] std::string testName() const { return name + ("Under" + nameOf(compositor)); }
  friend void PrintTo(const ToolkitCase& toolkitCase, std::ostream* out) {
    *out << toolkitCase.testName();
  }
};

class WaylandToolkits : public testing::TestWithParam<ToolkitCase> {
 protected:
  WaylandToolkits() {
    std::vector<std::string> command{
        "env", "WAYLAND_DISPLAY=" + compositor->display(), "GDK_BACKEND=wayland",
        // GTK 3 requires XDG_RUNTIME_DIR but does not use it: WAYLAND_DISPLAY is an absolute path.
        "XDG_RUNTIME_DIR=/tmp", "GSETTINGS_BACKEND=memory", "NO_AT_BRIDGE=1",
        "LIBGL_ALWAYS_SOFTWARE=1"};
    command.insert(command.end(), GetParam().command.begin(), GetParam().command.end());
    program = Process(command, ":2147483647");  // no X server has this display number
  }
  bool becomes(std::uint32_t color, CGSize size) {
    return eventually([&] { return hasRectangle(*compositor, color, size); });
  }

  std::unique_ptr<Compositor> compositor = startCompositor(GetParam().compositor);
  Process program;
};

TEST_P(WaylandToolkits, TheWindowIsWhiteUntilTheLaunchScreenIsDismissed) {
  ASSERT_TRUE(becomes(kBlue, kSize));
  program.signal(SIGUSR1);  // presents the launch screen
  ASSERT_TRUE(becomes(kWhite, kSize));
  compositor->click(512, 384);  // the program fails if it receives the click
  compositor->picture().save("wayland-" + GetParam().testName());
  compositor->resizeWindow("game", 700, 450);
  EXPECT_TRUE(becomes(kWhite, kLargeSize));
  EXPECT_EQ(boundsOfColor(*compositor, kBlue).width, 0);
  program.signal(SIGUSR2);  // dismisses the launch screen
  EXPECT_TRUE(becomes(kBlue, kLargeSize));
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
}

std::vector<ToolkitCase> toolkitCases() {
  std::vector<ToolkitCase> cases;
  for (const CompositorKind compositor : {CompositorKind::Sway, CompositorKind::Weston}) {
    cases.push_back({"Sdl2Software", {WAYLAND_SDL2, "software"}, compositor});
    cases.push_back({"Sdl2OpenGl", {WAYLAND_SDL2, "opengl"}, compositor});
    cases.push_back({"Gtk3", {WAYLAND_GTK3}, compositor});
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Hosts, WaylandToolkits, testing::ValuesIn(toolkitCases()),
                         [](const auto& testInfo) { return testInfo.param.testName(); });

}  // namespace
}  // namespace vel::test
