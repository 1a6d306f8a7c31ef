// A cover hides the content of a window and takes the window's pointer input. These tests check
// cases in which it does not. An own window is a window that the back end opens.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kRed = 0xC02020;

class X11CoverLimits : public X11Test {
 protected:
  void cover() {
    system().setScene(adopt(game).handle, whiteScene({640, 400}));
    deliver();
  }

  xcb_window_t game = client.openGameWindow(kGameFrame, 0x208040);
};

TEST_F(X11CoverLimits, AGameThatGrabsAButtonReceivesPressesOnTheCover) {
  xcb_grab_button(client.connection(), 0, game, XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC,
                  XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_BUTTON_INDEX_1,
                  XCB_MOD_MASK_ANY);
  cover();
  client.takeEventTypes();
  client.click(400, 300);
  EXPECT_THAT(client.takeEventTypes(), testing::Contains(XCB_BUTTON_PRESS));
}

TEST_F(X11CoverLimits, ANewChildOfAnOwnWindowIsVisibleUntilTheCoverIsRaised) {
  const WindowHandle ownWindow =
      openOwnWindow({.className = "Own", .title = "", .frame = {{200, 300}, {300, 200}}});
  system().setScene(ownWindow, whiteScene({300, 200}));
  deliver();
  const xcb_window_t child = client.makeWindow({50, 50, 100, 100}, kRed, idOf(ownWindow));
  client.map(child);
  EXPECT_EQ(client.screenPicture(idOf(ownWindow)).at(60, 60), kRed);
  deliver();
  EXPECT_TRUE(client.screenPicture(idOf(ownWindow)).isAll(kWhite));
}

}  // namespace
}  // namespace vel::test
