#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr CGRect kFrame{{100, 200}, {640, 400}};

class X11OwnWindows : public X11TestWithManager {
 protected:
  WindowHandle openPlayer(NSWindowStyleMask styleMask = 15) {
    return open({.className = "PlayerWindow",
                 .title = "Player \xE2\x9C\x93",
                 .frame = kFrame,
                 .styleMask = styleMask});
  }
};

TEST_F(X11OwnWindows, CarryTheirClassAndTitle) {
  const xcb_window_t window = idOf(openPlayer());
  EXPECT_EQ(user.property(window, "WM_CLASS")->text(),
            std::string("PlayerWindow\0PlayerWindow\0", 26));
  EXPECT_EQ(user.property(window, "_NET_WM_NAME")->text(), "Player \xE2\x9C\x93");
}

TEST_F(X11OwnWindows, LieWhereTheFrameSays) {
  const xcb_window_t window = idOf(openPlayer());
  // The frame is the content's, counted from the lower left corner of a screen 960 high.
  EXPECT_TRUE(waitFor([&] { return user.frameOf(window) == PixelRect{100, 360, 640, 400}; }));
}

TEST_F(X11OwnWindows, FollowSetFrame) {
  const WindowHandle window = openPlayer();
  system().setFrame(window, CGRectMake(300, 100, 320, 240));
  EXPECT_TRUE(waitFor([&] { return user.frameOf(idOf(window)) == PixelRect{300, 620, 320, 240}; }));
}

TEST_F(X11OwnWindows, FollowSetFrameWhenTheUserMayNotResizeThem) {
  const WindowHandle window = openPlayer(NSWindowStyleMaskTitled);
  system().setFrame(window, CGRectMake(300, 100, 320, 240));
  EXPECT_TRUE(waitFor([&] { return user.frameOf(idOf(window)) == PixelRect{300, 620, 320, 240}; }));
}

TEST_F(X11OwnWindows, TellWhenSomebodyElseResizesThem) {
  const WindowHandle window = openPlayer();
  user.configure(idOf(window), {50, 60, 500, 300});
  EXPECT_TRUE(waitFor([&] { return reports.frame.size == CGSize{500, 300}; }));
  EXPECT_TRUE(reports.contains(line("frame", window)));
}

TEST_F(X11OwnWindows, GetTheFocusThatIsAskedFor) {
  const WindowHandle first = openPlayer();
  const WindowHandle second = openPlayer();
  system().requestFocus(first);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("focus", first)); }));
  reports.lines.clear();
  system().requestFocus(second);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("focus", second)); }));
  EXPECT_THAT(reports.lines, ElementsAre(line("focus", second)));
}

TEST_F(X11OwnWindows, AskBeforeTheyClose) {
  const WindowHandle window = openPlayer();
  user.closeByManager(idOf(window));
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("close requested", window)); }));
  EXPECT_TRUE(user.isViewable(idOf(window)));
}

TEST_F(X11OwnWindows, RefuseToCloseWithoutACloseControl) {
  const WindowHandle window = openPlayer(NSWindowStyleMaskTitled);
  user.sendProtocol(idOf(window), "WM_DELETE_WINDOW");
  deliver();
  EXPECT_EQ(reports.count("close requested"), 0);
}

TEST_F(X11OwnWindows, KeepTheCloseProtocolWithoutACloseControl) {
  const WindowHandle window = openPlayer(NSWindowStyleMaskTitled);
  EXPECT_THAT(user.atomNames(idOf(window), "WM_PROTOCOLS"), ElementsAre("WM_DELETE_WINDOW"));
}

TEST_F(X11OwnWindows, AreMiniaturizedAndBroughtBack) {
  const WindowHandle window = openPlayer();
  system().requestMiniaturized(window, true);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("miniaturized", window)); }));
  EXPECT_FALSE(user.isViewable(idOf(window)));
  system().requestMiniaturized(window, false);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("deminiaturized", window)); }));
  EXPECT_TRUE(waitFor([&] { return user.isViewable(idOf(window)); }));
}

TEST_F(X11OwnWindows, AreNotMiniaturizedWhenOrderedOut) {
  const WindowHandle window = openPlayer();
  system().orderOut(window);
  EXPECT_TRUE(waitFor([&] { return !user.isViewable(idOf(window)); }));
  deliver();
  EXPECT_EQ(reports.count("miniaturized"), 0);
}

TEST_F(X11OwnWindows, ComeBackAfterTheyWereOrderedOut) {
  const WindowHandle window = openPlayer();
  system().orderOut(window);
  EXPECT_TRUE(waitFor([&] { return !user.isViewable(idOf(window)); }));
  system().orderFront(window);
  EXPECT_TRUE(waitFor([&] { return user.isViewable(idOf(window)); }));
}

TEST_F(X11OwnWindows, TellWhenTheyAreGone) {
  const WindowHandle window = openPlayer();
  user.destroy(idOf(window));
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("destroyed", window)); }));
  system().setTitle(window, "nobody");
  system().setScene(window, white(kFrame.size));
  system().orderFront(window);
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11OwnWindows, EndWithTheirRelease) {
  const WindowHandle window = openPlayer();
  system().releaseWindow(window);
  EXPECT_TRUE(waitFor([&] { return !user.exists(idOf(window)); }));
  deliver();
  EXPECT_EQ(reports.count("destroyed"), 0);
}

TEST_F(X11OwnWindows, LeaveTheManagerOnlyTheControlsOfTheirMask) {
  const WindowHandle window = openPlayer();
  system().setStyleMask(window, NSWindowStyleMaskTitled | NSWindowStyleMaskMiniaturizable);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("controls kept", window) + " 0"); }));
  const auto actions = user.atomNames(idOf(window), "_NET_WM_ALLOWED_ACTIONS");
  EXPECT_THAT(actions, testing::Contains("_NET_WM_ACTION_MINIMIZE"));
  EXPECT_THAT(actions, testing::Not(testing::Contains("_NET_WM_ACTION_CLOSE")));
  EXPECT_THAT(actions, testing::Not(testing::Contains("_NET_WM_ACTION_RESIZE")));
}

}  // namespace
}  // namespace vel::test
