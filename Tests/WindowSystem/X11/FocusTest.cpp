#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr PixelRect kOther{900, 150, 200, 200};

class X11Focus : public X11Test {
 protected:
  xcb_window_t game = user.openGame(kGame, 0);
  xcb_window_t other = user.openGame(kOther, 0);
  WindowHandle handle = WindowHandle::None;

  /// Adopts the game while it has the focus.
  void adoptFocusedGame() {
    user.focus(game);
    handle = adopt(game).handle;
    deliver();
    ASSERT_THAT(reports.lines, IsEmpty());
  }
  /// Grabs the keyboard for `user`, as a menu does.
  void grabKeyboard() {
    const x11::XcbPointer<xcb_grab_keyboard_reply_t> grab(
        xcb_grab_keyboard_reply(user.get(),
                                xcb_grab_keyboard(user.get(), 0, other, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    ASSERT_EQ(grab->status, XCB_GRAB_STATUS_SUCCESS);
  }
};

TEST_F(X11Focus, LosingAndGettingTheFocusIsReported) {
  adoptFocusedGame();
  user.focus(other);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated", "focus 0x0"));
  reports.lines.clear();
  user.focus(game);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre(line("focus", handle), line("activated", handle)));
}

TEST_F(X11Focus, AFocusChangeBetweenAdoptedWindowsKeepsTheApplicationActive) {
  adoptFocusedGame();
  const WindowHandle otherHandle = adopt(other).handle;
  user.focus(other);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre(line("focus", otherHandle)));
}

TEST_F(X11Focus, TheFocusOfAReleasedWindowIsNotReported) {
  adoptFocusedGame();
  // The window already has the focus, so the next `deliverEvents` would report the focus.
  system().requestFocus(handle);
  system().releaseWindow(handle);
  deliver();
  EXPECT_THAT(reports.lines,
              testing::Each(testing::Not(testing::HasSubstr(line("focus", handle)))));
}

TEST_F(X11Focus, TheNewFocusIsReportedIfThePreviousWindowIsDestroyed) {
  adoptFocusedGame();
  const WindowHandle otherHandle = adopt(other).handle;
  user.focus(other);
  user.destroy(game);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre(line("destroyed", handle), line("focus", otherHandle)));
}

// A window manager that crashes leaves the id of its check window in `_NET_SUPPORTING_WM_CHECK`.
// The server can then give this id to the game.
TEST_F(X11Focus, FocusChangesAreReportedIfTheGameHasTheIdOfAnOldCheckWindow) {
  user.setProperty(user.root(), "_NET_SUPPORTING_WM_CHECK",
                   Property::ofNumbers(XCB_ATOM_WINDOW, std::array{game}));
  adoptFocusedGame();
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliverFor(0.3);
  user.focus(other);
  deliver();
  EXPECT_THAT(reports.lines, testing::Contains("deactivated"));
}

TEST_F(X11Focus, AKeyboardGrabIsNotAFocusChange) {
  adoptFocusedGame();
  grabKeyboard();
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
  xcb_ungrab_keyboard(user.get(), XCB_CURRENT_TIME);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_F(X11Focus, AFocusChangeDuringAKeyboardGrabIsReported) {
  adoptFocusedGame();
  grabKeyboard();
  user.focus(other);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated", "focus 0x0"));
}

TEST_F(X11Focus, MovingThePointerIsNotAFocusChange) {
  user.focus(XCB_INPUT_FOCUS_POINTER_ROOT);
  adopt(game);
  deliver();
  ASSERT_THAT(reports.lines, ElementsAre("deactivated"));
  user.movePointer(kGame.x + 10, kGame.y + 10);
  deliver();
  user.movePointer(1200, 900);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated"));
}

TEST_F(X11Focus, AFocusChangeBetweenChildWindowsIsNotReported) {
  const xcb_window_t firstChild = user.makeWindow({0, 0, 50, 50}, 0, game);
  const xcb_window_t secondChild = user.makeWindow({50, 0, 50, 50}, 0, game);
  user.map(firstChild);
  user.map(secondChild);
  adoptFocusedGame();
  user.focus(firstChild);
  user.focus(secondChild);
  user.focus(game);
  user.focus(firstChild);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
  user.focus(other);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated", "focus 0x0"));
}

TEST_F(X11Focus, FocusOnAChildWindowIsReportedForItsTopLevel) {
  const xcb_window_t child = user.makeWindow({0, 0, 50, 50}, 0, game);
  user.map(child);
  adoptFocusedGame();
  user.focus(other);
  deliver();
  reports.lines.clear();
  user.focus(child);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre(line("focus", handle), line("activated", handle)));
}

TEST_F(X11Focus, WithoutAWindowManagerTheBackEndSetsTheFocus) {
  adoptFocusedGame();
  user.focus(other);
  deliver();
  system().requestFocus(handle);
  deliver();
  EXPECT_EQ(user.focused(), game);
}

TEST_F(X11Focus, AnUnmappedWindowGetsTheRequestedFocusWhenItIsMapped) {
  adoptFocusedGame();
  user.unmap(game);
  deliver();
  system().requestFocus(handle);
  deliver();
  EXPECT_NE(user.focused(), game);
  user.map(game);
  deliver();
  EXPECT_EQ(user.focused(), game);
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11Focus, RequestingTheFocusForTheFocusedWindowReportsItAgain) {
  adoptFocusedGame();
  system().requestFocus(handle);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre(line("focus", handle)));
}

class X11FocusWithManager : public X11TestWithManager {};

TEST_F(X11FocusWithManager, AFocusRequestDoesNotTakeTheFocusFromTheProgramThatTheUserChose) {
  const xcb_window_t game = user.openGame(kGame, 0);
  const xcb_window_t other = user.openGame(kOther, 0);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game) && user.isViewable(other); }));
  const WindowHandle handle = adopt(game).handle;
  system().requestFocus(handle);
  ASSERT_TRUE(waitFor([&] { return reports.contains(line("focus", handle)); }));
  // The click must have a later time than the focus change. The resolution of the server's time is
  // one millisecond.
  const xcb_timestamp_t focusTime = user.serverTime(other);
  ASSERT_TRUE(waitFor([&] { return user.serverTime(other) > focusTime; }));
  user.click(kOther.x + 100, kOther.y + 100);
  user.updateUserTime(other);
  ASSERT_TRUE(
      waitFor([&] { return user.focused() == other && reports.lines.back() == "focus 0x0"; }));
  system().requestFocus(handle);
  deliverFor(0.3);
  EXPECT_EQ(user.focused(), other);
}

TEST_F(X11Focus, ALaterFocusRequestReplacesAPendingRequest) {
  adoptFocusedGame();
  const WindowHandle otherHandle = adopt(other).handle;
  user.focus(XCB_INPUT_FOCUS_POINTER_ROOT);
  user.unmap(game);
  deliver();
  system().requestFocus(handle);
  system().requestFocus(otherHandle);
  deliver();
  user.map(game);
  deliver();
  EXPECT_EQ(user.focused(), other);
}

}  // namespace
}  // namespace vel::test
