// Windows that are not to be covered, and that are of use otherwise.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::HasSubstr;

class X11RefusedWindows : public X11Test {
 protected:
  std::string refusal(xcb_window_t window) {
    std::string error;
    EXPECT_FALSE(system().adoptWindow(window, error).has_value());
    return error;
  }
};

TEST_F(X11RefusedWindows, AreTheManagersMarkWhoseEndIsHeardAllTheSame) {
  startManager(Manager::Metacity);
  const xcb_window_t game = user.openGame({200, 150, 640, 400}, 0);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  ASSERT_TRUE(waitFor([&] { return reports.contains(line("controls kept", handle) + " 0"); }));
  const auto marks = user.numbers(user.root(), "_NET_SUPPORTING_WM_CHECK");
  ASSERT_EQ(marks.size(), 1U);
  EXPECT_THAT(refusal(marks.front()), HasSubstr("that a window manager uses to announce itself"));
  reports.lines.clear();
  manager.kill();
  // Without it the focus is not asked for but set.
  EXPECT_TRUE(waitFor([&] { return !user.exists(marks.front()); }));
  const xcb_window_t other = user.openGame({900, 600, 100, 100}, 0);
  user.focus(other);
  deliver();
  system().requestFocus(handle);
  EXPECT_TRUE(waitFor([&] { return user.focused() == game; }));
}

TEST_F(X11RefusedWindows, AreOurOwnToolsThatGoOnWorking) {
  const xcb_window_t ours =
      idOf(open({.className = "Ours", .title = "", .frame = {{0, 0}, {10, 10}}}));
  // Made before it: the window that the time is read from.
  ASSERT_TRUE(user.exists(ours - 1));
  EXPECT_THAT(refusal(ours - 1), HasSubstr("it belongs to this program"));
  system().requestFocus(static_cast<WindowHandle>(ours));
  EXPECT_TRUE(waitFor([&] { return user.focused() == ours; }));
}

}  // namespace
}  // namespace vel::test
