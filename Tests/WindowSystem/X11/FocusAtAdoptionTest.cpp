// Focus requests for a window that had the focus when the back end adopted it.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr PixelRect kOtherFrame{900, 150, 200, 200};

class X11FocusAtAdoption : public X11TestWithManager {
 protected:
  xcb_window_t openFocusedWindow(PixelRect frame) {
    const xcb_window_t window = client.openGameWindow(frame, 0);
    EXPECT_TRUE(waitFor([&] { return client.focusedWindow() == window; }));
    return window;
  }
  /// Waits until the server's time advances, and then clicks the window. The click is then later
  /// than all previous input.
  void clickAfterPreviousInput(xcb_window_t window) {
    const xcb_timestamp_t timeBefore = client.serverTime(window);
    ASSERT_TRUE(waitFor([&] { return client.serverTime(window) > timeBefore; }));
    const PixelRect frame = client.areaOnScreen(window);
    client.click(frame.x + frame.width / 2, frame.y + frame.height / 2);
    client.updateUserTime(window);
    ASSERT_TRUE(waitFor([&] { return client.focusedWindow() == window; }));
  }
};

TEST_F(X11FocusAtAdoption, AFocusRequestDoesNotTakeTheFocusFromAWindowThatTheUserClicked) {
  const xcb_window_t windowToIconify = openFocusedWindow({10, 600, 100, 100});
  const xcb_window_t otherWindow = openFocusedWindow(kOtherFrame);
  const AdoptedWindow adoptedWindow = adopt(openFocusedWindow(kGameFrame));
  ASSERT_TRUE(adoptedWindow.hasFocus);
  clickAfterPreviousInput(otherWindow);
  ASSERT_TRUE(waitFor([&] { return reports.contains("deactivated"); }));
  system().requestFocus(adoptedWindow.handle);
  deliver();
  // The window manager executes requests in order. When it has iconified `windowToIconify`, it has
  // also executed the focus request.
  client.requestIconify(windowToIconify);
  ASSERT_TRUE(waitFor([&] { return !client.isViewable(windowToIconify); }));
  EXPECT_EQ(client.focusedWindow(), otherWindow);
}

}  // namespace
}  // namespace vel::test
