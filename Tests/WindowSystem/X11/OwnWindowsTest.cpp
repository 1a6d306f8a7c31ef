// Own windows: windows that the X11 back end creates. The window manager is Metacity.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr NSWindowStyleMask kAllControls = 15;  // and the title
constexpr CGRect kFrame{{100, 200}, {640, 400}};

class X11OwnWindows : public X11TestWithManager {
 protected:
  WindowHandle openPlayerWindow(NSWindowStyleMask styleMask = kAllControls) {
    return openOwnWindow({.className = "PlayerWindow",
                          .title = "Player \xE2\x9C\x93",
                          .frame = kFrame,
                          .styleMask = styleMask});
  }
};

TEST_F(X11OwnWindows, HaveTheirClassAndTitle) {
  const xcb_window_t window = idOf(openPlayerWindow());
  EXPECT_EQ(client.property(window, "WM_CLASS")->text(),
            std::string("PlayerWindow\0PlayerWindow\0", 26));
  EXPECT_EQ(client.property(window, "_NET_WM_NAME")->text(), "Player \xE2\x9C\x93");
}

TEST_F(X11OwnWindows, OpenAtTheirFrame) {
  const xcb_window_t window = idOf(openPlayerWindow());
  // `kFrame` is measured from the lower left corner of the screen: 360 = 960 - 200 - 400.
  EXPECT_TRUE(waitFor([&] {
    return client.areaOnScreen(window) == PixelRect{100, 360, 640, 400};
  }));
}

TEST_F(X11OwnWindows, AreMovedAndResizedBySetFrame) {
  const WindowHandle window = openPlayerWindow();
  system().setFrame(window, CGRectMake(300, 100, 320, 240));
  EXPECT_TRUE(waitFor([&] {
    return client.areaOnScreen(idOf(window)) == PixelRect{300, 620, 320, 240};
  }));
}

TEST_F(X11OwnWindows, AreMovedAndResizedBySetFrameEvenWithoutAResizeControl) {
  const WindowHandle window = openPlayerWindow(NSWindowStyleMaskTitled);
  system().setFrame(window, CGRectMake(300, 100, 320, 240));
  EXPECT_TRUE(waitFor([&] {
    return client.areaOnScreen(idOf(window)) == PixelRect{300, 620, 320, 240};
  }));
}

TEST_F(X11OwnWindows, ReportTheirFrameAfterAnotherClientChangesIt) {
  const WindowHandle window = openPlayerWindow();
  client.configure(idOf(window), {50, 60, 500, 300});
  EXPECT_TRUE(waitFor([&] { return reports.lastFrame.size == CGSize{500, 300}; }));
  EXPECT_TRUE(reports.contains(reportLine("frame", window)));
}

TEST_F(X11OwnWindows, GetTheFocusOnRequest) {
  const WindowHandle firstWindow = openPlayerWindow();
  const WindowHandle secondWindow = openPlayerWindow();
  system().requestFocus(firstWindow);
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("focus", firstWindow)); }));
  reports.lines.clear();
  system().requestFocus(secondWindow);
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("focus", secondWindow)); }));
  EXPECT_THAT(reports.lines, ElementsAre(reportLine("focus", secondWindow)));
}

TEST_F(X11OwnWindows, ReportACloseRequestAndStayOpen) {
  const WindowHandle window = openPlayerWindow();
  client.requestClose(idOf(window));
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("close requested", window)); }));
  EXPECT_TRUE(client.isViewable(idOf(window)));
}

TEST_F(X11OwnWindows, ReportNoCloseRequestWithoutACloseControl) {
  const WindowHandle window = openPlayerWindow(NSWindowStyleMaskTitled);
  // `requestClose` would leave it to the window manager to send this message.
  client.sendProtocolMessage(idOf(window), "WM_DELETE_WINDOW");
  deliver();
  EXPECT_EQ(reports.count("close requested"), 0);
}

TEST_F(X11OwnWindows, ListWmDeleteWindowEvenWithoutACloseControl) {
  const WindowHandle window = openPlayerWindow(NSWindowStyleMaskTitled);
  EXPECT_THAT(client.atomNames(idOf(window), "WM_PROTOCOLS"), ElementsAre("WM_DELETE_WINDOW"));
}

TEST_F(X11OwnWindows, CanBeMiniaturizedAndDeminiaturized) {
  const WindowHandle window = openPlayerWindow();
  system().requestMiniaturized(window, true);
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("miniaturized", window)); }));
  EXPECT_FALSE(client.isViewable(idOf(window)));
  system().requestMiniaturized(window, false);
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("deminiaturized", window)); }));
  EXPECT_TRUE(waitFor([&] { return client.isViewable(idOf(window)); }));
}

TEST_F(X11OwnWindows, AreNotReportedAsMiniaturizedAfterOrderOut) {
  const WindowHandle window = openPlayerWindow();
  system().orderOut(window);
  EXPECT_TRUE(waitFor([&] { return !client.isViewable(idOf(window)); }));
  deliver();
  EXPECT_EQ(reports.count("miniaturized"), 0);
}

TEST_F(X11OwnWindows, AreViewableAgainAfterOrderOutAndOrderFront) {
  const WindowHandle window = openPlayerWindow();
  system().orderOut(window);
  EXPECT_TRUE(waitFor([&] { return !client.isViewable(idOf(window)); }));
  system().orderFront(window);
  EXPECT_TRUE(waitFor([&] { return client.isViewable(idOf(window)); }));
}

TEST_F(X11OwnWindows, ReportTheirDestructionByAnotherClientAndIgnoreLaterCalls) {
  const WindowHandle window = openPlayerWindow();
  client.destroy(idOf(window));
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("destroyed", window)); }));
  system().setTitle(window, "New title");
  system().setScene(window, whiteScene(kFrame.size));
  system().orderFront(window);
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11OwnWindows, AreDestroyedByReleaseWindow) {
  const WindowHandle window = openPlayerWindow();
  system().releaseWindow(window);
  EXPECT_TRUE(waitFor([&] { return !client.exists(idOf(window)); }));
  deliver();
  EXPECT_EQ(reports.count("destroyed"), 0);
}

TEST_F(X11OwnWindows, AllowOnlyTheControlsOfTheirStyleMask) {
  const WindowHandle window = openPlayerWindow();
  system().setStyleMask(window, NSWindowStyleMaskTitled | NSWindowStyleMaskMiniaturizable);
  // 0: the window manager offers only the controls in the style mask.
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(reportLine("remaining controls", window) + " 0"); }));
  const auto actions = client.atomNames(idOf(window), "_NET_WM_ALLOWED_ACTIONS");
  EXPECT_THAT(actions, testing::Contains("_NET_WM_ACTION_MINIMIZE"));
  EXPECT_THAT(actions, testing::Not(testing::Contains("_NET_WM_ACTION_CLOSE")));
  EXPECT_THAT(actions, testing::Not(testing::Contains("_NET_WM_ACTION_RESIZE")));
}

}  // namespace
}  // namespace vel::test
