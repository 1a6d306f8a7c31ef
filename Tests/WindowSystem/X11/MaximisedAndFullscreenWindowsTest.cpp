// Covers over maximised and fullscreen windows, under real window managers. A cover hides the
// content of a window. The owner is the program that owns the covered window, here a game.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;
constexpr NSWindowStyleMask kAllControls = 15;  // the title bar and all controls
constexpr std::string_view kFullscreen = "_NET_WM_STATE_FULLSCREEN";
constexpr std::string_view kMaximizedVert = "_NET_WM_STATE_MAXIMIZED_VERT";
constexpr std::string_view kMaximizedHorz = "_NET_WM_STATE_MAXIMIZED_HORZ";
constexpr std::string_view kCannotMaximise =
    "the compositor does not maximise windows of X clients";
// In seconds. After this time, a window manager has finished its changes to the window.
constexpr double kSettlingTime = 0.5;

class X11MaximisedAndFullscreenWindows : public X11Test,
                                         public testing::WithParamInterface<Manager> {
 protected:
  X11MaximisedAndFullscreenWindows() : X11Test(GetParam()) {}

  void SetUp() override {
    game = client.openGameWindow(kGameFrame, kGreen);
    ASSERT_TRUE(waitFor([&] { return client.isViewable(game); }));
    deliverFor(0.2);  // the window manager adds a frame to the window
  }
  void maximise() {
    client.requestAddStates(game, kMaximizedVert, kMaximizedHorz);
    ASSERT_TRUE(waitFor([&] { return isMaximised(); }));
    deliverFor(kSettlingTime);  // weston enlarges the window first and moves it later
  }
  void cover() {
    handle = adopt(game).handle;
    system().setScene(handle, whiteScene({1280, 960}));
    system().setStyleMask(handle, NSWindowStyleMaskTitled);
    // The back end reports which controls the window manager still offers although the style mask
    // excludes them. It does so only if the window manager publishes the allowed actions.
    EXPECT_TRUE(waitFor([&] {
      return reports.count("remaining controls") > 0 ||
             !featuresOf(GetParam()).publishesAllowedActions;
    }));
  }
  void uncover() {
    system().setScene(handle, {});
    system().setStyleMask(handle, kAllControls);
    EXPECT_TRUE(waitFor([&] { return client.property(game, "_MOTIF_WM_HINTS") == std::nullopt; }));
    deliverFor(kSettlingTime);
  }
  [[nodiscard]] bool isMaximised() const {
    const PixelRect area = client.areaOnScreen(game);
    const PixelRect screen = client.screenArea();
    // The limits leave room for the window's frame and for panels.
    return area.width > screen.width - 80 && area.height > screen.height - 110;
  }

  xcb_window_t game = 0;
  WindowHandle handle = WindowHandle::None;
};

TEST_P(X11MaximisedAndFullscreenWindows, AMaximisedWindowStaysMaximisedWhileCoveredAndAfterwards) {
  if (!featuresOf(GetParam()).maximizes) {
    GTEST_SKIP() << kCannotMaximise;
  }
  maximise();
  const PixelRect area = client.areaOnScreen(game);
  cover();
  deliverFor(kSettlingTime);
  EXPECT_EQ(client.areaOnScreen(game), area);
  EXPECT_TRUE(waitFor([&] { return client.screenPicture(game).isAll(kWhite); }));
  uncover();
  EXPECT_EQ(client.areaOnScreen(game), area);
  client.requestRemoveStates(game, kMaximizedVert, kMaximizedHorz);
  EXPECT_TRUE(waitFor([&] { return client.areaOnScreen(game).width == kGameFrame.width; }));
}

TEST_P(X11MaximisedAndFullscreenWindows,
       AFullscreenWindowStaysFullscreenWhileCoveredAndAfterwards) {
  client.requestAddStates(game, kFullscreen);
  ASSERT_TRUE(waitFor([&] { return client.areaOnScreen(game) == client.screenArea(); }));
  cover();
  deliverFor(kSettlingTime);
  EXPECT_EQ(client.areaOnScreen(game), client.screenArea());
  EXPECT_TRUE(waitFor([&] { return client.screenPicture(game).isAll(kWhite); }));
  uncover();
  EXPECT_EQ(client.areaOnScreen(game), client.screenArea());
  client.requestRemoveStates(game, kFullscreen);
  EXPECT_TRUE(waitFor([&] { return client.areaOnScreen(game).width == kGameFrame.width; }));
}

TEST_P(X11MaximisedAndFullscreenWindows, TheOwnerCanToggleTheMaximisedStateOfACoveredWindow) {
  if (!featuresOf(GetParam()).maximizes) {
    GTEST_SKIP() << kCannotMaximise;
  }
  cover();
  client.requestToggleStates(game, kMaximizedVert, kMaximizedHorz);
  EXPECT_TRUE(waitFor([&] { return isMaximised(); }));
  deliverFor(kSettlingTime);
  EXPECT_TRUE(isMaximised());
  client.requestToggleStates(game, kMaximizedVert, kMaximizedHorz);
  EXPECT_TRUE(waitFor([&] { return client.areaOnScreen(game).width == kGameFrame.width; }));
  client.requestToggleStates(game, kMaximizedVert, kMaximizedHorz);
  EXPECT_TRUE(waitFor([&] { return isMaximised(); }));
  uncover();
  EXPECT_TRUE(isMaximised());
}

// The back end processes no events until the owner has revoked its requests.
TEST_P(X11MaximisedAndFullscreenWindows, TheOwnerCanRevokeItsRequestsForACoveredWindow) {
  if (compositor != nullptr) {
    GTEST_SKIP() << "not tested on Xwayland";
  }
  cover();
  client.requestAddStates(game, kFullscreen);
  client.requestRemoveStates(game, kFullscreen);
  client.requestToggleStates(game, kMaximizedVert, kMaximizedHorz);
  client.requestToggleStates(game, kMaximizedVert, kMaximizedHorz);
  deliver();
  deliverFor(kSettlingTime);
  EXPECT_TRUE(waitFor([&] {
    const std::vector<std::string> states = client.atomNames(game, "_NET_WM_STATE");
    return std::ranges::none_of(
        std::array{kFullscreen, kMaximizedVert, kMaximizedHorz},
        [&](std::string_view state) { return std::ranges::find(states, state) != states.end(); });
  }));
  // openbox makes the window fullscreen at the first request. It does not restore the size, because
  // the Motif hints of the back end do not allow resizing.
  if (GetParam() != Manager::Openbox) {
    EXPECT_TRUE(waitFor([&] { return client.areaOnScreen(game).width == kGameFrame.width; }));
  }
}

INSTANTIATE_TEST_SUITE_P(Managers, X11MaximisedAndFullscreenWindows,
                         testing::ValuesIn(withXwayland({Manager::Metacity, Manager::Openbox,
                                                         Manager::Xfwm4, Manager::IceWM})),
                         nameOfManager);

}  // namespace
}  // namespace vel::test
