// Launch screens that are modal windows or sheets over a Wayland window of the host.
#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>

#include "Bindings/C/vel_launch_screen.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/Support/Wayland/Sway.h"
#include "Tests/Support/Wayland/Weston.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

constexpr std::uint32_t kGreen = 0x208040;
constexpr PixelRect kOutput{0, 0, 1024, 768};
constexpr PixelRect kMiddle{512, 384, 1, 1};

/// A host with a green Wayland window and a launch screen over this window.
class GreenHost : NonCopyable {
 public:
  explicit GreenHost(const Compositor& compositor)
      : surface(compositor.display(), "game", {500, 320}, kGreen) {}
  ~GreenHost() { vel_destroy(&screen); }

  /// Creates a launch screen and loads a request.
  void create(bool passesToplevel) {
    const WaylandSurface native = surface.window();
    VelHostWindow window = VEL_HOST_WINDOW_INIT;
    window.wl_display = native.display;
    window.wl_surface = native.surface;
    window.xdg_toplevel = passesToplevel ? native.toplevel : nullptr;
    window.width = native.size.width;
    window.height = native.size.height;
    VelCallbacks callbacks = VEL_CALLBACKS_INIT;
    callbacks.log_line = [](void* /*data*/, const char* /*line*/) {};
    VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
    options.host_window = &window;
    options.content_controller = 1;  // a sheet requires a content controller
    options.callbacks = &callbacks;
    ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
    VelRequest request = VEL_REQUEST_INIT;
    request.event = "launch_end";
    request.seconds = 60;
    ASSERT_EQ(vel_request(screen, &request), VEL_OK) << vel_last_error();
  }
  /// Processes the events of the library and of the host until the condition is true.
  bool pumpUntil(const std::function<bool()>& condition) {
    return eventually([&] {
      surface.pump();
      vel_pump(screen, nullptr);
      return condition();
    });
  }

  SurfaceHost surface;
  VelLaunchScreen* screen = nullptr;
};

class ModalWindowOrSheet : public testing::TestWithParam<VelPresentation> {};

// sway shows a window over a fullscreen window only if the fullscreen window is its parent. Without
// the host's xdg_toplevel, the library sets the parent with xdg-foreign.
TEST_P(ModalWindowOrSheet, IsInFrontOfAFullscreenHostThatDoesNotPassItsToplevel) {
  const Sway sway;
  GreenHost host(sway);
  host.create(false);
  sway.run("[title=\"^game$\"] fullscreen enable");
  ASSERT_TRUE(host.pumpUntil([&] { return sway.picture(kOutput).isAll(kGreen); }));
  ASSERT_EQ(vel_resized(host.screen, kOutput.width, kOutput.height), VEL_OK);
  ASSERT_EQ(vel_present(host.screen, GetParam()), VEL_OK) << vel_last_error();
  EXPECT_TRUE(host.pumpUntil([&] { return sway.picture(kMiddle).isAll(kWhite); }));
  EXPECT_EQ(sway.picture(kOutput).at(0, 0), kGreen);
}

TEST_P(ModalWindowOrSheet, NeedsTheToplevelUnderACompositorWithoutXdgForeign) {
  const Weston weston;
  GreenHost host(weston);
  host.create(false);
  EXPECT_EQ(vel_present(host.screen, GetParam()), VEL_NOTHING_TO_PRESENT);
  EXPECT_THAT(vel_last_error(), testing::HasSubstr("xdg_toplevel"));
  ASSERT_EQ(vel_destroy(&host.screen), VEL_OK);
  host.create(true);
  ASSERT_EQ(vel_present(host.screen, GetParam()), VEL_OK) << vel_last_error();
  EXPECT_TRUE(host.pumpUntil([&] { return weston.picture(kMiddle).isAll(kWhite); }));
}

INSTANTIATE_TEST_SUITE_P(Presentations, ModalWindowOrSheet,
                         testing::Values(VEL_PRESENT_MODAL, VEL_PRESENT_SHEET),
                         [](const testing::TestParamInfo<VelPresentation>& testInfo) {
                           return testInfo.param == VEL_PRESENT_MODAL ? "Modal" : "Sheet";
                         });

}  // namespace
}  // namespace vel::test
