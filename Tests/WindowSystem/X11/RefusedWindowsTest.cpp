// The back end uses the check window and the helper window for its own work. Refusing to adopt them
// must not disturb this work.
// - A window manager creates the check window to announce itself. The destruction of the check
//   window shows the back end that the window manager has ended.
// - The back end creates the helper window to read the X server's time.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::HasSubstr;

class X11RefusedWindows : public X11Test {
 protected:
  std::string adoptionError(xcb_window_t window) {
    std::string error;
    EXPECT_FALSE(system().adoptWindow(X11WindowId{window}, error).has_value());
    return error;
  }
};

TEST_F(X11RefusedWindows, TheBackEndNoticesTheEndOfTheWindowManagerAfterItRefusesTheCheckWindow) {
  startManager(Manager::Metacity);
  const xcb_window_t game = client.openGameWindow({200, 150, 640, 400}, 0);
  ASSERT_TRUE(waitFor([&] { return client.isViewable(game); }));
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  // The style mask excludes the resize control (8), but Metacity still offers it.
  ASSERT_TRUE(
      waitFor([&] { return reports.contains(reportLine("remaining controls", handle) + " 8"); }));
  const auto checkWindows = client.numbers(client.root(), "_NET_SUPPORTING_WM_CHECK");
  ASSERT_EQ(checkWindows.size(), 1U);
  EXPECT_THAT(adoptionError(checkWindows.front()),
              HasSubstr("that a window manager uses to announce itself"));
  managerProcess.kill();
  EXPECT_TRUE(waitFor([&] { return !client.exists(checkWindows.front()); }));
  const xcb_window_t otherWindow = client.openGameWindow({900, 600, 100, 100}, 0);
  client.focus(otherWindow);
  deliver();
  // Without a window manager, the back end sets the focus itself.
  system().requestFocus(handle);
  EXPECT_TRUE(waitFor([&] { return client.focusedWindow() == game; }));
}

TEST_F(X11RefusedWindows, TheBackEndRequestsTheFocusAfterItRefusesTheHelperWindow) {
  const xcb_window_t ownWindow =
      idOf(openOwnWindow({.className = "Ours", .title = "", .frame = {{0, 0}, {10, 10}}}));
  // The back end creates the helper window, `ownWindow - 1`, just before `ownWindow`.
  ASSERT_TRUE(client.exists(ownWindow - 1));
  EXPECT_THAT(adoptionError(ownWindow - 1), HasSubstr("it belongs to this program"));
  // A focus request contains the X server's time.
  system().requestFocus(static_cast<WindowHandle>(ownWindow));
  EXPECT_TRUE(waitFor([&] { return client.focusedWindow() == ownWindow; }));
}

}  // namespace
}  // namespace vel::test
