// The cover, which hides the content of a window behind a scene: what the screen shows, and which
// input the window receives.
#include <gmock/gmock.h>

#include <algorithm>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::IsEmpty;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr CGSize kSize{640, 400};
constexpr std::uint32_t kGreen = 0x208040;
constexpr std::uint32_t kRed = 0xC02020;

class X11Cover : public X11Test {
 protected:
  xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  WindowHandle handle = adopt(game).handle;

  void cover() {
    system().setScene(handle, whiteScene(kSize));
    deliver();
  }
};

TEST_F(X11Cover, FillsTheWindowWithWhiteAndLeavesNoTraceAfterItsRemoval) {
  const Picture screenBefore = client.screenPicture(PixelRect{0, 0, 1280, 960});
  EXPECT_TRUE(client.screenPicture(game).isAll(kGreen));
  cover();
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  system().setScene(handle, {});
  deliver();
  EXPECT_EQ(client.screenPicture(PixelRect{0, 0, 1280, 960}), screenBefore);
}

TEST_F(X11Cover, IsOnTheScreenWhileTheWindowIsMapped) {
  EXPECT_FALSE(system().isSceneOnScreen(handle));
  cover();
  EXPECT_TRUE(system().isSceneOnScreen(handle));
  client.unmap(game);
  EXPECT_FALSE(system().isSceneOnScreen(handle));
  client.map(game);
  EXPECT_TRUE(waitFor([this] { return system().isSceneOnScreen(handle); }));
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

TEST_F(X11Cover, IsNotOnTheScreenInAHiddenOrReleasedWindowOfTheBackEnd) {
  const WindowHandle ownWindow =
      openOwnWindow({.className = "Own", .title = "", .frame = {{200, 300}, {300, 200}}});
  system().setScene(ownWindow, whiteScene({300, 200}));
  EXPECT_TRUE(system().isSceneOnScreen(ownWindow));
  system().orderOut(ownWindow);
  EXPECT_FALSE(system().isSceneOnScreen(ownWindow));
  system().releaseWindow(ownWindow);
  EXPECT_FALSE(system().isSceneOnScreen(ownWindow));
}

TEST_F(X11Cover, IsNotOnTheScreenInADestroyedWindow) {
  cover();
  client.destroy(game);
  EXPECT_FALSE(system().isSceneOnScreen(handle));
  deliver();
  EXPECT_FALSE(system().isSceneOnScreen(handle));
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11Cover, IsOnTheScreenWhenSetSceneReturns) {
  system().setScene(handle, whiteSceneWithSpinner(kSize));
  EXPECT_TRUE(system().isSceneOnScreen(handle));
  EXPECT_EQ(client.screenPicture(game).at(5, 5), kWhite);
}

// The delegate resizes the cover to the size in each frame report. An old, smaller size would leave
// a strip of the game visible until the next report.
TEST_F(X11Cover, EveryFrameReportContainsTheCurrentSizeOfTheWindow) {
  cover();
  client.configure(game, {200, 150, 700, 450});
  client.waitForServer();
  system().requestFocus(handle);  // reads the frame and queues a report
  client.configure(game, {200, 150, 900, 600});
  deliver();
  EXPECT_THAT(reports.sizes, testing::Not(IsEmpty()));
  EXPECT_THAT(reports.sizes, testing::Each(CGSize{900, 600}));
}

// `orderOut` removes the cover of an adopted window, but leaves the window on the screen.
TEST_F(X11Cover, DisappearsWhenItsWindowIsOrderedOut) {
  cover();
  system().orderOut(handle);
  deliver();
  EXPECT_TRUE(client.screenPicture(game).isAll(kGreen));
}

TEST_F(X11Cover, LiesAboveExistingChildren) {
  const xcb_window_t child = client.makeWindow({50, 50, 100, 100}, kRed, game);
  client.map(child);
  cover();
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

TEST_F(X11Cover, LiesAboveNewChildren) {
  cover();
  const xcb_window_t child = client.makeWindow({50, 50, 100, 100}, kRed, game);
  client.map(child);
  deliver();
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

TEST_F(X11Cover, LiesAboveANewChildBeforeTheChildIsMapped) {
  cover();
  const xcb_window_t child = client.makeWindow({50, 50, 100, 100}, kRed, game);
  client.waitForServer();
  deliver();
  client.map(child);
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

TEST_F(X11Cover, LiesAboveRaisedChildren) {
  const xcb_window_t child = client.makeWindow({50, 50, 100, 100}, kRed, game);
  client.map(child);
  cover();
  client.raise(child);
  deliver();
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

TEST_F(X11Cover, LiesAboveReparentedChildren) {
  const xcb_window_t child = client.makeWindow({50, 50, 100, 100}, kRed);
  client.map(child);
  cover();
  xcb_reparent_window(client.connection(), child, game, 20, 20);
  deliver();
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

TEST_F(X11Cover, HidesWhatTheGameDraws) {
  cover();
  client.fill(game, kRed);
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

TEST_F(X11Cover, FollowsAResizeBeforeTheBackEndHandlesEvents) {
  cover();
  client.configure(game, {100, 50, 1000, 800});
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  client.configure(game, {100, 50, 300, 200});
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
}

TEST_F(X11Cover, ShowsAFillAtItsFrame) {
  system().setScene(
      handle,
      {{.kind = SceneItem::Kind::Fill, .frame = CGRectMake(0, 0, 100, 50), .color = {1, 0, 0, 1}}});
  deliver();
  const Picture picture = client.screenPicture(game);
  EXPECT_EQ(picture.boundsOfPixelsExcept(kGreen), (PixelRect{0, 350, 100, 50}));
  EXPECT_EQ(picture.at(50, 375), 0xFF0000U);
}

TEST_F(X11Cover, ChangesWithTheScene) {
  const auto showFill = [this](CGRect frame, CGColor color) {
    system().setScene(handle, {{.kind = SceneItem::Kind::Fill, .frame = frame, .color = color}});
    deliver();
    return client.screenPicture(game);
  };
  showFill(CGRectMake(0, 0, 100, 50), {1, 0, 0, 1});
  const Picture picture = showFill(CGRectMake(10, 0, 20, 20), {0, 0, 1, 1});
  EXPECT_EQ(picture.boundsOfPixelsExcept(kGreen), (PixelRect{10, 380, 20, 20}));
  EXPECT_EQ(picture.at(15, 390), 0x0000FFU);
}

TEST_F(X11Cover, IsOpaqueInATransparentWindow) {
  const xcb_window_t transparentWindow = client.openTransparentWindow({300, 300, 200, 100});
  const AdoptedWindow adoptedWindow = adopt(transparentWindow);
  system().setScene(adoptedWindow.handle, whiteSceneWithSpinner(adoptedWindow.frame.size));
  deliver();
  EXPECT_EQ(client.windowPicture(transparentWindow).at(5, 5), 0xFFFFFFFFU);
  EXPECT_THAT(log, IsEmpty());
}

// The overlay is a window of the cover. It lies above the covered window and has the same parent.
// If the covered window fills its parent, the overlay has the maximum size of a window. If only the
// parent had an alpha channel, the server would draw the overlay into a pixmap of this size, which
// takes gigabytes.
TEST_F(X11Cover, HasAnOverlayWithTheDepthOfTheParent) {
  const xcb_window_t parent = client.openTransparentWindow({300, 300, 200, 100});
  const xcb_window_t transparentWindow = client.openTransparentWindow({0, 0, 200, 100}, parent);
  const AdoptedWindow adoptedWindow = adopt(transparentWindow);
  const auto depthOfTopChild = [&] {
    const x11::XcbPointer<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(
        client.connection(), xcb_get_geometry(client.connection(), client.children(parent).back()),
        nullptr));
    return geometry == nullptr ? 0 : geometry->depth;
  };
  system().setScene(adoptedWindow.handle, whiteSceneWithSpinner(adoptedWindow.frame.size));
  deliver();
  ASSERT_EQ(client.children(parent).size(), 2U);
  EXPECT_EQ(depthOfTopChild(), 32);
  EXPECT_EQ(client.windowPicture(parent).at(5, 5), 0xFFFFFFFFU);
  EXPECT_EQ(client.screenPicture(parent).at(5, 5), kWhite);
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11Cover, LeavesNoResourcesOnTheServer) {
  ASSERT_TRUE(client.children(game).empty());
  const WindowHandle ownWindow =
      system().createWindow({.className = "Any", .title = "", .frame = {{}, {10, 10}}});
  deliver();
  const auto resourcesBefore = client.clientResourceCounts(idOf(ownWindow));
  for (int i = 0; i < 20; ++i) {
    system().setScene(handle, whiteSceneWithSpinner(kSize));
    system().setModalWindow(ownWindow);
    system().setStyleMask(handle, 1);
    deliver();
    system().setModalWindow(WindowHandle::None);
    system().setStyleMask(handle, 15);
    system().setScene(handle, {});
    system().releaseWindow(system().createWindow(
        {.className = "Other", .title = "", .frame = {{}, {10, 10}}, .kind = WindowKind::Modal}));
  }
  deliver();
  EXPECT_EQ(client.clientResourceCounts(idOf(ownWindow)), resourcesBefore);
  EXPECT_TRUE(client.children(game).empty());
}

/// Tests of the cover and of input. They also run on Xwayland.
class X11CoverAndInput : public X11Test, public testing::WithParamInterface<Manager> {
 protected:
  X11CoverAndInput() : X11Test(GetParam()) {}

  void SetUp() override {
    game = client.openGameWindow(kGameFrame, kGreen);
    ASSERT_TRUE(waitFor(
        [this] { return client.isViewable(game) && client.screenPicture(game).isAll(kGreen); }));
    handle = adopt(game).handle;
  }
  void cover() {
    system().setScene(handle, whiteScene(kSize));
    deliver();
    ASSERT_TRUE(showsOnly(kWhite, game));
  }
  void uncover() {
    system().setScene(handle, {});
    deliver();
    ASSERT_TRUE(showsOnly(kGreen, game));
  }
  /// Clicks the game, and returns the types of the events that the game has received.
  std::vector<int> eventsOfClick() {
    client.takeEventTypes();
    const PixelRect frame = client.areaOnScreen(game);
    client.click(frame.x + 200, frame.y + 150);
    return client.takeEventTypes();
  }

  xcb_window_t game = 0;
  WindowHandle handle = WindowHandle::None;
};

TEST_P(X11CoverAndInput, TheSpinnerIsInTheMiddleAfterAResize) {
  system().setScene(handle, whiteSceneWithSpinner(kSize));
  deliver();
  client.configure(game, {10, 10, 900, 700});
  EXPECT_TRUE(waitFor([this] {
    const Picture picture = client.screenPicture(game);
    const PixelRect spinner = picture.boundsOfPixelsExcept(kWhite);
    return picture.width == 900 && spinner.x + spinner.width / 2 == 450 &&
           spinner.y + spinner.height / 2 == 350;
  }));
}

TEST_P(X11CoverAndInput, TheCoverTakesPointerInput) {
  client.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                XCB_EVENT_MASK_POINTER_MOTION);
  EXPECT_THAT(eventsOfClick(), testing::Contains(XCB_BUTTON_PRESS));
  cover();
  EXPECT_THAT(eventsOfClick(), IsEmpty());
  uncover();
  EXPECT_THAT(eventsOfClick(), testing::Contains(XCB_BUTTON_PRESS));
}

TEST_P(X11CoverAndInput, TheCoveredGameReceivesKeyboardInput) {
  client.selectEvents(game, XCB_EVENT_MASK_KEY_PRESS);
  if (GetParam() == Manager::None) {
    client.focus(game);
  }
  ASSERT_TRUE(waitFor([this] { return client.focusedWindow() == game; }));
  cover();
  client.typeKey(38);
  EXPECT_TRUE(
      waitFor([this] { return std::ranges::count(client.takeEventTypes(), XCB_KEY_PRESS) > 0; }));
}

INSTANTIATE_TEST_SUITE_P(X11, X11CoverAndInput, testing::ValuesIn(withXwayland({Manager::None})),
                         nameOfManager);

}  // namespace
}  // namespace vel::test
