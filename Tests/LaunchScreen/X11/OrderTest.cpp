// The X11 back end reports the stacking order of the windows that it adopts or creates. The order
// lists the windows on screen, front to back.
#include <gmock/gmock.h>

#include "Tests/LaunchScreen/X11/X11HostTest.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr PixelRect kSecondGameFrame{300, 250, 640, 400};

class X11Order : public X11Test {
 protected:
  xcb_window_t openGame(PixelRect frame) {
    const xcb_window_t window = client.openGameWindow(frame, 0);
    EXPECT_TRUE(eventually([&] { return client.isViewable(window); }));
    return window;
  }
  bool waitForOrder(const std::vector<WindowHandle>& order) {
    return waitFor([&] { return !reports.orders.empty() && reports.orders.back() == order; });
  }
};

TEST_F(X11Order, RaisingAWindowReportsTheOrder) {
  const WindowHandle firstWindow = adopt(openGame(kGameFrame)).handle;
  const WindowHandle secondWindow = adopt(openGame(kSecondGameFrame)).handle;
  client.raise(idOf(firstWindow));
  EXPECT_TRUE(waitForOrder({firstWindow, secondWindow}));
  client.raise(idOf(secondWindow));
  EXPECT_TRUE(waitForOrder({secondWindow, firstWindow}));
  EXPECT_EQ(reports.orders.size(), 2U);
}

TEST_F(X11Order, AdoptingTheLowerWindowLastReportsTheOrder) {
  // The back end assumes that a newly adopted window is in front.
  const xcb_window_t lowerGame = openGame(kGameFrame);
  const WindowHandle upperWindow = adopt(openGame(kSecondGameFrame)).handle;
  const WindowHandle lowerWindow = adopt(lowerGame).handle;
  EXPECT_TRUE(waitForOrder({upperWindow, lowerWindow}));
}

TEST_F(X11Order, OrderFrontDoesNotReportTheOrder) {
  const WindowHandle firstWindow =
      openOwnWindow({.className = "Ours", .title = "", .frame = {{100, 100}, {300, 300}}});
  const WindowHandle secondWindow =
      openOwnWindow({.className = "Ours", .title = "", .frame = {{100, 100}, {300, 300}}});
  system().orderFront(firstWindow);
  ASSERT_TRUE(waitFor([&] { return client.children(client.root()).back() == idOf(firstWindow); }));
  system().orderFront(secondWindow);
  ASSERT_TRUE(waitFor([&] { return client.children(client.root()).back() == idOf(secondWindow); }));
  // A pending report would set a deadline.
  EXPECT_TRUE(waitFor([&] { return system().nextDeadline() == kNever; }));
  EXPECT_THAT(reports.orders, IsEmpty());
}

TEST_F(X11Order, TheOrderOfASingleAdoptedWindowIsNotReported) {
  const xcb_window_t game = openGame(kGameFrame);
  adopt(game);
  openGame(kSecondGameFrame);
  client.raise(game);
  deliver();
  EXPECT_THAT(reports.orders, IsEmpty());
  EXPECT_EQ(system().nextDeadline(), kNever);
}

TEST_F(X11Order, AnUnmappedWindowIsNotInTheOrder) {
  const WindowHandle firstWindow = adopt(openGame(kGameFrame)).handle;
  const WindowHandle secondWindow = adopt(openGame(kSecondGameFrame)).handle;
  const WindowHandle thirdWindow = adopt(openGame(kSecondGameFrame)).handle;
  client.unmap(idOf(secondWindow));
  deliver();
  client.raise(idOf(firstWindow));
  EXPECT_TRUE(waitForOrder({firstWindow, thirdWindow}));
}

class X11OrderWithManager : public X11Order, public testing::WithParamInterface<Manager> {
 protected:
  X11OrderWithManager() { startManager(GetParam()); }
};

TEST_P(X11OrderWithManager, AClickThatRaisesAWindowReportsTheOrder) {
  const WindowHandle firstWindow = adopt(openGame(kGameFrame)).handle;
  const WindowHandle secondWindow = adopt(openGame(kSecondGameFrame)).handle;
  ASSERT_TRUE(waitFor([&] { return client.focusedWindow() == idOf(secondWindow); }));
  const PixelRect area = client.areaOnScreen(idOf(firstWindow));
  client.click(area.x + 20, area.y + 20);
  EXPECT_TRUE(waitForOrder({firstWindow, secondWindow}));
}

TEST_P(X11OrderWithManager, TheOrderIsReportedAfterTheWindowManagerRestarts) {
  const WindowHandle firstWindow = adopt(openGame(kGameFrame)).handle;
  const WindowHandle secondWindow = adopt(openGame(kSecondGameFrame)).handle;
  managerProcess.end();
  startManager(GetParam());
  ASSERT_TRUE(waitFor([&] { return client.isViewable(idOf(firstWindow)); }));
  client.requestActivation(idOf(secondWindow));
  client.requestActivation(idOf(firstWindow));
  EXPECT_TRUE(waitForOrder({firstWindow, secondWindow}));
}

INSTANTIATE_TEST_SUITE_P(X11, X11OrderWithManager,
                         testing::Values(Manager::Metacity, Manager::Openbox),
                         [](const testing::TestParamInfo<Manager>& testInfo) {
                           return testInfo.param == Manager::Metacity ? "Metacity" : "Openbox";
                         });

// `player` is the NSWindow that has adopted `game`. `otherWindow` is not adopted yet.
class X11ApplicationOrder : public X11HostTest {};

TEST_F(X11ApplicationOrder, OrderedWindowsFollowTheStackingOrder) {
  std::string error;
  const Strong<NSWindow> secondWindow = NSApp->adoptWindow(X11WindowId{otherWindow}, error);
  ASSERT_NE(secondWindow, nullptr) << error;
  const auto order = [] { return NSApp->orderedWindows(); };
  ASSERT_TRUE(runUntil([&] { return order() == NSArray<NSWindow>{player, secondWindow}; }));
  const PixelRect area = client.areaOnScreen(otherWindow);
  client.click(area.x + area.width - 10, area.y + area.height - 10);
  EXPECT_TRUE(runUntil([&] { return order() == NSArray<NSWindow>{secondWindow, player}; }));
  client.requestActivation(game);
  EXPECT_TRUE(runUntil([&] { return order() == NSArray<NSWindow>{player, secondWindow}; }));
}

}  // namespace
}  // namespace vel::test
