// How the back end reports and requests the keyboard focus.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr PixelRect kOtherFrame{900, 150, 200, 200};

class X11Focus : public X11Test {
 protected:
  xcb_window_t game = client.openGameWindow(kGameFrame, 0);
  xcb_window_t otherWindow = client.openGameWindow(kOtherFrame, 0);
  WindowHandle handle = WindowHandle::None;

  /// Adopts the game while it has the focus.
  void adoptFocusedGame() {
    client.focus(game);
    handle = adopt(game).handle;
    deliver();
    ASSERT_THAT(reports.lines, IsEmpty());
  }
  /// Grabs the keyboard for `client`, as a menu does.
  void grabKeyboard() {
    const x11::XcbPointer<xcb_grab_keyboard_reply_t> grab(xcb_grab_keyboard_reply(
        client.connection(),
        xcb_grab_keyboard(client.connection(), 0, otherWindow, XCB_CURRENT_TIME,
                          XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
        nullptr));
    ASSERT_EQ(grab->status, XCB_GRAB_STATUS_SUCCESS);
  }
};

TEST_F(X11Focus, LosingAndGettingTheFocusIsReported) {
  adoptFocusedGame();
  client.focus(otherWindow);
  deliver();
  // 0x0: no adopted window has the focus.
  EXPECT_THAT(reports.lines, ElementsAre("deactivated", "focus 0x0"));
  reports.lines.clear();
  client.focus(game);
  deliver();
  EXPECT_THAT(reports.lines,
              ElementsAre(reportLine("focus", handle), reportLine("activated", handle)));
}

TEST_F(X11Focus, AFocusChangeBetweenAdoptedWindowsKeepsTheApplicationActive) {
  adoptFocusedGame();
  const WindowHandle otherHandle = adopt(otherWindow).handle;
  client.focus(otherWindow);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre(reportLine("focus", otherHandle)));
}

TEST_F(X11Focus, TheFocusOfAReleasedWindowIsNotReported) {
  adoptFocusedGame();
  // The window has the focus, so the request only schedules a report of the focus. The release must
  // discard this report.
  system().requestFocus(handle);
  system().releaseWindow(handle);
  deliver();
  EXPECT_THAT(reports.lines,
              testing::Each(testing::Not(testing::HasSubstr(reportLine("focus", handle)))));
}

TEST_F(X11Focus, TheNewFocusIsReportedIfThePreviouslyFocusedWindowIsDestroyed) {
  adoptFocusedGame();
  const WindowHandle otherHandle = adopt(otherWindow).handle;
  client.focus(otherWindow);
  client.destroy(game);
  deliver();
  EXPECT_THAT(reports.lines,
              ElementsAre(reportLine("destroyed", handle), reportLine("focus", otherHandle)));
}

// A window manager writes the id of one of its own windows, the check window, to the property
// `_NET_SUPPORTING_WM_CHECK` of the root window. If the window manager crashes, the property
// remains, and the server can give the id to the game's window.
TEST_F(X11Focus, FocusChangesAreReportedIfTheGameHasTheIdOfAnOldCheckWindow) {
  client.setProperty(client.root(), "_NET_SUPPORTING_WM_CHECK",
                     Property::ofNumbers(XCB_ATOM_WINDOW, std::array{game}));
  adoptFocusedGame();
  // The back end looks for the check window within 0.2 seconds after a change of the style mask.
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliverFor(0.3);
  client.focus(otherWindow);
  deliver();
  EXPECT_THAT(reports.lines, testing::Contains("deactivated"));
}

TEST_F(X11Focus, AKeyboardGrabIsNotAFocusChange) {
  adoptFocusedGame();
  grabKeyboard();
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
  xcb_ungrab_keyboard(client.connection(), XCB_CURRENT_TIME);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_F(X11Focus, AFocusChangeDuringAKeyboardGrabIsReported) {
  adoptFocusedGame();
  grabKeyboard();
  client.focus(otherWindow);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated", "focus 0x0"));
}

// With the focus PointerRoot, the keyboard input goes to the window under the pointer.
TEST_F(X11Focus, MovingThePointerIsNotAFocusChangeIfTheFocusIsPointerRoot) {
  client.focus(XCB_INPUT_FOCUS_POINTER_ROOT);
  adopt(game);
  deliver();
  ASSERT_THAT(reports.lines, ElementsAre("deactivated"));
  client.movePointer(kGameFrame.x + 10, kGameFrame.y + 10);
  deliver();
  client.movePointer(1200, 900);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated"));
}

TEST_F(X11Focus, FocusChangesWithinAnAdoptedWindowAreNotReported) {
  const xcb_window_t firstChild = client.makeWindow({0, 0, 50, 50}, 0, game);
  const xcb_window_t secondChild = client.makeWindow({50, 0, 50, 50}, 0, game);
  client.map(firstChild);
  client.map(secondChild);
  adoptFocusedGame();
  client.focus(firstChild);
  client.focus(secondChild);
  client.focus(game);
  client.focus(firstChild);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
  client.focus(otherWindow);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated", "focus 0x0"));
}

TEST_F(X11Focus, FocusOnAChildWindowIsReportedForItsTopLevelWindow) {
  const xcb_window_t child = client.makeWindow({0, 0, 50, 50}, 0, game);
  client.map(child);
  adoptFocusedGame();
  client.focus(otherWindow);
  deliver();
  reports.lines.clear();
  client.focus(child);
  deliver();
  EXPECT_THAT(reports.lines,
              ElementsAre(reportLine("focus", handle), reportLine("activated", handle)));
}

TEST_F(X11Focus, AFocusRequestSetsTheFocusIfThereIsNoWindowManager) {
  adoptFocusedGame();
  client.focus(otherWindow);
  deliver();
  system().requestFocus(handle);
  deliver();
  EXPECT_EQ(client.focusedWindow(), game);
}

TEST_F(X11Focus, AnUnmappedWindowGetsTheRequestedFocusWhenItIsMapped) {
  adoptFocusedGame();
  client.unmap(game);
  deliver();
  system().requestFocus(handle);
  deliver();
  EXPECT_NE(client.focusedWindow(), game);
  client.map(game);
  deliver();
  EXPECT_EQ(client.focusedWindow(), game);
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11Focus, AFocusRequestForTheFocusedWindowReportsTheFocusAgain) {
  adoptFocusedGame();
  system().requestFocus(handle);
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre(reportLine("focus", handle)));
}

class X11FocusWithManager : public X11TestWithManager {};

TEST_F(X11FocusWithManager, AFocusRequestDoesNotTakeTheFocusFromTheWindowThatTheUserClicked) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, 0);
  const xcb_window_t otherWindow = client.openGameWindow(kOtherFrame, 0);
  const xcb_window_t windowToIconify = client.openGameWindow({10, 600, 100, 100}, 0);
  for (const xcb_window_t window : {game, otherWindow, windowToIconify}) {
    ASSERT_TRUE(waitFor([&] { return client.isViewable(window); }));
  }
  const WindowHandle handle = adopt(game).handle;
  system().requestFocus(handle);
  ASSERT_TRUE(waitFor([&] { return reports.contains(reportLine("focus", handle)); }));
  // The click must have a later time than the focus change. The resolution of the server's time is
  // one millisecond.
  const xcb_timestamp_t focusTime = client.serverTime(otherWindow);
  ASSERT_TRUE(waitFor([&] { return client.serverTime(otherWindow) > focusTime; }));
  client.click(kOtherFrame.x + 100, kOtherFrame.y + 100);
  client.updateUserTime(otherWindow);
  ASSERT_TRUE(waitFor([&] {
    return client.focusedWindow() == otherWindow && reports.lines.back() == "focus 0x0";
  }));
  system().requestFocus(handle);
  deliver();
  // The window manager executes requests in order. When it has iconified `windowToIconify`, it has
  // also processed the focus request.
  client.requestIconify(windowToIconify);
  ASSERT_TRUE(waitFor([&] { return !client.isViewable(windowToIconify); }));
  EXPECT_EQ(client.focusedWindow(), otherWindow);
}

TEST_F(X11Focus, ALaterFocusRequestReplacesAPendingRequest) {
  adoptFocusedGame();
  const WindowHandle otherHandle = adopt(otherWindow).handle;
  client.focus(XCB_INPUT_FOCUS_POINTER_ROOT);
  client.unmap(game);
  deliver();
  system().requestFocus(handle);
  system().requestFocus(otherHandle);
  deliver();
  client.map(game);
  deliver();
  EXPECT_EQ(client.focusedWindow(), otherWindow);
}

}  // namespace
}  // namespace vel::test
