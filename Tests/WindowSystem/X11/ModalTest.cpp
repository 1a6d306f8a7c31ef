// Modal windows and sheets over the window of a game.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;
constexpr std::uint32_t kButtonEvents = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;

class X11Modal : public X11Test {
 protected:
  void SetUp() override {
    startManager(windowManager);
    game = user.openGame(kGame, kGreen);
    ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
    const AdoptedWindow adoptedWindow = adopt(game);
    owner = adoptedWindow.handle;
    gamePixels = user.frameOf(game);
    gameFrame = adoptedWindow.frame;
  }
  WindowHandle openOverGame(WindowKind kind, NSWindowStyleMask styleMask, CGSize size) {
    const double x = gameFrame.origin.x + (gameFrame.size.width - size.width) / 2;
    const double freeHeight = gameFrame.size.height - size.height;
    const double y = gameFrame.origin.y + (kind == WindowKind::Sheet ? freeHeight : freeHeight / 2);
    return open({.className = "NSWindow",
                 .title = "Launch",
                 .frame = {{x, y}, size},
                 .styleMask = styleMask,
                 .kind = kind,
                 .owner = owner,
                 .isMovableByBackground = kind == WindowKind::Modal});
  }
  WindowHandle openModal() { return openOverGame(WindowKind::Modal, 0, {480, 270}); }
  bool isAt(WindowHandle window, PixelRect expected) {
    return waitFor([&] { return user.frameOf(idOf(window)) == expected; });
  }

  Manager windowManager = Manager::None;
  xcb_window_t game = 0;
  WindowHandle owner = WindowHandle::None;
  PixelRect gamePixels;  // the frame of the game in pixels of the screen
  CGRect gameFrame;      // the frame of the game in points
};

class X11ModalWithManager : public X11Modal {
 protected:
  X11ModalWithManager() { windowManager = Manager::Metacity; }
};

TEST_F(X11ModalWithManager, IsWhiteAndCentredInItsOwner) {
  const WindowHandle modal = openModal();
  EXPECT_TRUE(isAt(modal, {gamePixels.x + 80, gamePixels.y + 65, 480, 270}));
  EXPECT_TRUE(waitFor([&] { return user.picture(idOf(modal)).isAll(kWhite); }));
}

TEST_F(X11ModalWithManager, IsATransientModalDialogOfItsOwner) {
  const xcb_window_t modal = idOf(openModal());
  EXPECT_THAT(user.numbers(modal, "WM_TRANSIENT_FOR"), ElementsAre(game));
  EXPECT_THAT(user.atomNames(modal, "_NET_WM_STATE"), Contains("_NET_WM_STATE_MODAL"));
  EXPECT_THAT(user.atomNames(modal, "_NET_WM_WINDOW_TYPE"),
              ElementsAre("_NET_WM_WINDOW_TYPE_DIALOG"));
}

TEST_F(X11ModalWithManager, HasNoBorderAndNoControls) {
  const xcb_window_t modal = idOf(openModal());
  EXPECT_THAT(user.numbers(modal, "_NET_FRAME_EXTENTS"),
              testing::AnyOf(IsEmpty(), ElementsAre(0, 0, 0, 0)));
  const auto actions = user.atomNames(modal, "_NET_WM_ALLOWED_ACTIONS");
  EXPECT_THAT(actions, Not(Contains("_NET_WM_ACTION_MINIMIZE")));
  EXPECT_THAT(actions, Not(Contains("_NET_WM_ACTION_CLOSE")));
  EXPECT_THAT(actions, Not(Contains("_NET_WM_ACTION_RESIZE")));
}

TEST_F(X11ModalWithManager, IsModalAgainAfterOrderOutAndOrderFront) {
  const WindowHandle modal = openModal();
  system().orderOut(modal);
  ASSERT_TRUE(waitFor([&] {
    return !user.isViewable(idOf(modal)) && user.numbers(idOf(modal), "_NET_WM_STATE").empty();
  }));
  system().orderFront(modal);
  EXPECT_TRUE(waitFor([&] { return user.isViewable(idOf(modal)); }));
  EXPECT_THAT(user.atomNames(idOf(modal), "_NET_WM_STATE"), Contains("_NET_WM_STATE_MODAL"));
}

TEST_F(X11ModalWithManager, CanBeDraggedByItsBackground) {
  const WindowHandle modal = openModal();
  system().setScene(modal, white({480, 270}));
  deliver();
  const PixelRect frameBefore = user.frameOf(idOf(modal));
  reports.lines.clear();
  user.movePointer(frameBefore.x + 100, frameBefore.y + 50);
  user.press();
  deliver();
  user.movePointer(frameBefore.x + 130, frameBefore.y + 110);
  deliver();
  user.release();
  EXPECT_TRUE(isAt(modal, {frameBefore.x + 30, frameBefore.y + 60, 480, 270}));
  EXPECT_TRUE(reports.contains(line("frame", modal)));
  EXPECT_EQ(reports.frame.origin.y, 960 - frameBefore.y - 60 - 270);
  // The button is released, so the window no longer follows the pointer.
  user.movePointer(frameBefore.x + 300, frameBefore.y + 300);
  deliver();
  EXPECT_TRUE(isAt(modal, {frameBefore.x + 30, frameBefore.y + 60, 480, 270}));
}

TEST_F(X11ModalWithManager, CannotBeDraggedIfItIsNotMovable) {
  const WindowHandle modal = openModal();
  system().setMovableByBackground(modal, false);
  deliver();
  const PixelRect frameBefore = user.frameOf(idOf(modal));
  user.movePointer(frameBefore.x + 100, frameBefore.y + 50);
  user.press();
  deliver();
  user.movePointer(frameBefore.x + 130, frameBefore.y + 110);
  deliver();
  user.release();
  deliverFor(0.1);
  EXPECT_EQ(user.frameOf(idOf(modal)), frameBefore);
}

TEST_F(X11ModalWithManager, ASheetIsAtTheTopEdgeOfItsOwner) {
  const WindowHandle sheet = openOverGame(
      WindowKind::Sheet, NSWindowStyleMaskTitled | NSWindowStyleMaskDocModalWindow, {400, 100});
  EXPECT_TRUE(isAt(sheet, {gamePixels.x + 120, gamePixels.y, 400, 100}));
  EXPECT_TRUE(waitFor([&] { return user.picture(idOf(sheet)).isAll(kWhite); }));
  EXPECT_THAT(user.numbers(idOf(sheet), "WM_TRANSIENT_FOR"), ElementsAre(game));
  EXPECT_THAT(user.numbers(idOf(sheet), "_NET_FRAME_EXTENTS"),
              testing::AnyOf(IsEmpty(), ElementsAre(0, 0, 0, 0)));
}

TEST_F(X11Modal, OtherWindowsReceiveNoClicks) {
  user.selectEvents(game, kButtonEvents);
  const WindowHandle ownWindow =
      open({.className = "Ours", .title = "", .frame = {{900, 700}, {100, 100}}});
  user.selectEvents(idOf(ownWindow), kButtonEvents);
  const WindowHandle modal = openModal();
  system().setModalWindow(modal);
  deliver();
  user.events();
  user.click(gamePixels.x + 5, gamePixels.y + 5);
  user.click(950, 200);
  EXPECT_THAT(user.events(), IsEmpty());
  EXPECT_TRUE(waitFor([&] { return user.picture(idOf(modal)).isAll(kWhite); }));
}

TEST_F(X11Modal, ANewChildWindowOfTheGameReceivesNoClicks) {
  const WindowHandle modal = openModal();
  system().setModalWindow(modal);
  deliver();
  const xcb_window_t child = user.makeWindow({0, 0, 50, 50}, 0, game);
  user.selectEvents(child, kButtonEvents);
  user.map(child);
  deliver();
  user.events();
  user.click(gamePixels.x + 5, gamePixels.y + 5);
  EXPECT_THAT(user.events(), IsEmpty());
}

TEST_F(X11Modal, TheModalWindowReceivesClicks) {
  const WindowHandle modal = openOverGame(WindowKind::Sheet, 0, {100, 100});
  user.selectEvents(idOf(modal), kButtonEvents);
  system().setModalWindow(modal);
  deliver();
  user.events();
  const PixelRect modalFrame = user.frameOf(idOf(modal));
  user.click(modalFrame.x + 50, modalFrame.y + 50);
  EXPECT_THAT(user.events(), ElementsAre(XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE));
}

TEST_F(X11Modal, TheGameReceivesClicksAgainWithoutAModalWindow) {
  user.selectEvents(game, kButtonEvents);
  system().setModalWindow(openModal());
  system().setModalWindow(WindowHandle::None);
  deliver();
  user.events();
  user.click(gamePixels.x + 5, gamePixels.y + 5);
  EXPECT_THAT(user.events(), ElementsAre(XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE));
}

TEST_F(X11Modal, AWindowAdoptedLaterReceivesNoClicks) {
  const WindowHandle modal = openModal();
  system().setModalWindow(modal);
  const xcb_window_t other = user.openGame({900, 600, 100, 100}, 0);
  user.selectEvents(other, kButtonEvents);
  adopt(other);
  user.events();
  user.click(950, 650);
  EXPECT_THAT(user.events(), IsEmpty());
}

}  // namespace
}  // namespace vel::test
