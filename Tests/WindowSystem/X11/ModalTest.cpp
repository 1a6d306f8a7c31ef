// Modal windows and sheets over the window of a game.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr int kScreenHeight = 960;
constexpr std::uint32_t kGreen = 0x208040;
constexpr std::uint32_t kButtonEvents = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;

class X11Modal : public X11Test {
 protected:
  void SetUp() override {
    startManager(windowManager);
    game = client.openGameWindow(kGameFrame, kGreen);
    ASSERT_TRUE(waitFor([&] { return client.isViewable(game); }));
    const AdoptedWindow adoptedWindow = adopt(game);
    gameHandle = adoptedWindow.handle;
    gameAreaInPixels = client.areaOnScreen(game);
    gameAreaInPoints = adoptedWindow.frame;
  }
  WindowHandle openOverGame(WindowKind kind, NSWindowStyleMask styleMask, CGSize size) {
    const double x = gameAreaInPoints.origin.x + (gameAreaInPoints.size.width - size.width) / 2;
    const double freeHeight = gameAreaInPoints.size.height - size.height;
    const double y =
        gameAreaInPoints.origin.y + (kind == WindowKind::Sheet ? freeHeight : freeHeight / 2);
    return openOwnWindow({.className = "NSWindow",
                          .title = "Launch",
                          .frame = {{x, y}, size},
                          .styleMask = styleMask,
                          .kind = kind,
                          .ownerWindow = gameHandle,
                          .isMovableByBackground = kind == WindowKind::Modal});
  }
  WindowHandle openModal() { return openOverGame(WindowKind::Modal, 0, {480, 270}); }
  bool waitForArea(WindowHandle window, PixelRect expectedArea) {
    return waitFor([&] { return client.areaOnScreen(idOf(window)) == expectedArea; });
  }

  Manager windowManager = Manager::None;
  xcb_window_t game = 0;
  WindowHandle gameHandle = WindowHandle::None;
  PixelRect gameAreaInPixels;
  CGRect gameAreaInPoints;
};

class X11ModalWithManager : public X11Modal {
 protected:
  X11ModalWithManager() { windowManager = Manager::Metacity; }
};

TEST_F(X11ModalWithManager, IsWhiteAndCentredInItsOwnerWindow) {
  const WindowHandle modal = openModal();
  EXPECT_TRUE(waitForArea(modal, {gameAreaInPixels.x + 80, gameAreaInPixels.y + 65, 480, 270}));
  EXPECT_TRUE(waitFor([&] { return client.screenPicture(idOf(modal)).isAll(kWhite); }));
}

TEST_F(X11ModalWithManager, IsATransientModalDialogOfItsOwnerWindow) {
  const xcb_window_t modal = idOf(openModal());
  EXPECT_THAT(client.numbers(modal, "WM_TRANSIENT_FOR"), ElementsAre(game));
  EXPECT_THAT(client.atomNames(modal, "_NET_WM_STATE"), Contains("_NET_WM_STATE_MODAL"));
  EXPECT_THAT(client.atomNames(modal, "_NET_WM_WINDOW_TYPE"),
              ElementsAre("_NET_WM_WINDOW_TYPE_DIALOG"));
}

TEST_F(X11ModalWithManager, HasNoBorderAndNoControls) {
  const xcb_window_t modal = idOf(openModal());
  EXPECT_THAT(client.numbers(modal, "_NET_FRAME_EXTENTS"),
              testing::AnyOf(IsEmpty(), ElementsAre(0, 0, 0, 0)));
  const auto actions = client.atomNames(modal, "_NET_WM_ALLOWED_ACTIONS");
  EXPECT_THAT(actions, Not(Contains("_NET_WM_ACTION_MINIMIZE")));
  EXPECT_THAT(actions, Not(Contains("_NET_WM_ACTION_CLOSE")));
  EXPECT_THAT(actions, Not(Contains("_NET_WM_ACTION_RESIZE")));
}

TEST_F(X11ModalWithManager, IsModalAgainAfterOrderOutAndOrderFront) {
  const WindowHandle modal = openModal();
  system().orderOut(modal);
  ASSERT_TRUE(waitFor([&] {
    return !client.isViewable(idOf(modal)) && client.numbers(idOf(modal), "_NET_WM_STATE").empty();
  }));
  system().orderFront(modal);
  EXPECT_TRUE(waitFor([&] { return client.isViewable(idOf(modal)); }));
  EXPECT_THAT(client.atomNames(idOf(modal), "_NET_WM_STATE"), Contains("_NET_WM_STATE_MODAL"));
}

TEST_F(X11ModalWithManager, CanBeDraggedByItsBackground) {
  const WindowHandle modal = openModal();
  system().setScene(modal, whiteScene({480, 270}));
  deliver();
  const PixelRect frameBefore = client.areaOnScreen(idOf(modal));
  reports.lines.clear();
  client.movePointer(frameBefore.x + 100, frameBefore.y + 50);
  client.pressButton();
  deliver();
  client.movePointer(frameBefore.x + 130, frameBefore.y + 110);
  deliver();
  client.releaseButton();
  EXPECT_TRUE(waitForArea(modal, {frameBefore.x + 30, frameBefore.y + 60, 480, 270}));
  EXPECT_TRUE(reports.contains(reportLine("frame", modal)));
  EXPECT_EQ(reports.lastFrame.origin.y, kScreenHeight - frameBefore.y - 60 - 270);
  // The button is released, so the window no longer follows the pointer.
  client.movePointer(frameBefore.x + 300, frameBefore.y + 300);
  deliverFor(0.1);
  EXPECT_TRUE(waitForArea(modal, {frameBefore.x + 30, frameBefore.y + 60, 480, 270}));
}

TEST_F(X11ModalWithManager, CannotBeDraggedIfItIsNotMovableByBackground) {
  const WindowHandle modal = openModal();
  system().setMovableByBackground(modal, false);
  deliver();
  const PixelRect frameBefore = client.areaOnScreen(idOf(modal));
  client.movePointer(frameBefore.x + 100, frameBefore.y + 50);
  client.pressButton();
  deliver();
  client.movePointer(frameBefore.x + 130, frameBefore.y + 110);
  deliver();
  client.releaseButton();
  deliverFor(0.1);
  EXPECT_EQ(client.areaOnScreen(idOf(modal)), frameBefore);
}

TEST_F(X11ModalWithManager, ASheetIsAtTheTopEdgeOfItsOwnerWindow) {
  const WindowHandle sheet = openOverGame(
      WindowKind::Sheet, NSWindowStyleMaskTitled | NSWindowStyleMaskDocModalWindow, {400, 100});
  EXPECT_TRUE(waitForArea(sheet, {gameAreaInPixels.x + 120, gameAreaInPixels.y, 400, 100}));
  EXPECT_TRUE(waitFor([&] { return client.screenPicture(idOf(sheet)).isAll(kWhite); }));
  EXPECT_THAT(client.numbers(idOf(sheet), "WM_TRANSIENT_FOR"), ElementsAre(game));
  EXPECT_THAT(client.numbers(idOf(sheet), "_NET_FRAME_EXTENTS"),
              testing::AnyOf(IsEmpty(), ElementsAre(0, 0, 0, 0)));
}

TEST_F(X11Modal, OtherWindowsReceiveNoClicksWhileAWindowIsModal) {
  client.selectEvents(game, kButtonEvents);
  const WindowHandle ownWindow =
      openOwnWindow({.className = "Ours", .title = "", .frame = {{900, 700}, {100, 100}}});
  client.selectEvents(idOf(ownWindow), kButtonEvents);
  const WindowHandle modal = openModal();
  system().setModalWindow(modal);
  deliver();
  client.takeEventTypes();
  client.click(gameAreaInPixels.x + 5, gameAreaInPixels.y + 5);
  client.click(950, kScreenHeight - 750);  // inside `ownWindow`
  EXPECT_THAT(client.takeEventTypes(), IsEmpty());
  EXPECT_TRUE(waitFor([&] { return client.screenPicture(idOf(modal)).isAll(kWhite); }));
}

TEST_F(X11Modal, ANewChildWindowOfTheGameReceivesNoClicksWhileAWindowIsModal) {
  const WindowHandle modal = openModal();
  system().setModalWindow(modal);
  deliver();
  const xcb_window_t child = client.makeWindow({0, 0, 50, 50}, 0, game);
  client.selectEvents(child, kButtonEvents);
  client.map(child);
  deliver();
  client.takeEventTypes();
  client.click(gameAreaInPixels.x + 5, gameAreaInPixels.y + 5);
  EXPECT_THAT(client.takeEventTypes(), IsEmpty());
}

TEST_F(X11Modal, TheModalWindowReceivesClicks) {
  // Only one client can select ButtonPress on a window. The back end selects it on a movable
  // window, so this test opens a sheet, which is not movable.
  const WindowHandle modal = openOverGame(WindowKind::Sheet, 0, {100, 100});
  client.selectEvents(idOf(modal), kButtonEvents);
  system().setModalWindow(modal);
  deliver();
  client.takeEventTypes();
  const PixelRect modalFrame = client.areaOnScreen(idOf(modal));
  client.click(modalFrame.x + 50, modalFrame.y + 50);
  EXPECT_THAT(client.takeEventTypes(), ElementsAre(XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE));
}

TEST_F(X11Modal, AnInvalidHandleMakesNoWindowModal) {
  client.selectEvents(game, kButtonEvents);
  const WindowHandle closed = openModal();
  system().releaseWindow(closed);
  system().setModalWindow(closed);
  deliver();
  client.takeEventTypes();
  client.click(gameAreaInPixels.x + 5, gameAreaInPixels.y + 5);
  EXPECT_THAT(client.takeEventTypes(), ElementsAre(XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE));
}

TEST_F(X11Modal, AWindowStaysModalWhenAnInvalidHandleIsSet) {
  client.selectEvents(game, kButtonEvents);
  const WindowHandle closed = openModal();
  system().setModalWindow(openModal());
  system().releaseWindow(closed);
  system().setModalWindow(closed);
  deliver();
  client.takeEventTypes();
  client.click(gameAreaInPixels.x + 5, gameAreaInPixels.y + 5);
  EXPECT_THAT(client.takeEventTypes(), IsEmpty());
}

TEST_F(X11Modal, TheGameReceivesClicksAgainWhenNoWindowIsModal) {
  client.selectEvents(game, kButtonEvents);
  system().setModalWindow(openModal());
  system().setModalWindow(WindowHandle::None);
  deliver();
  client.takeEventTypes();
  client.click(gameAreaInPixels.x + 5, gameAreaInPixels.y + 5);
  EXPECT_THAT(client.takeEventTypes(), ElementsAre(XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE));
}

TEST_F(X11Modal, ANewlyAdoptedWindowReceivesNoClicksWhileAWindowIsModal) {
  const WindowHandle modal = openModal();
  system().setModalWindow(modal);
  const xcb_window_t otherWindow = client.openGameWindow({900, 600, 100, 100}, 0);
  client.selectEvents(otherWindow, kButtonEvents);
  adopt(otherWindow);
  client.takeEventTypes();
  client.click(950, 650);
  EXPECT_THAT(client.takeEventTypes(), IsEmpty());
}

}  // namespace
}  // namespace vel::test
