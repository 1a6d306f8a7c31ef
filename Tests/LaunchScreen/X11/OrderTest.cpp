// The stacking order, as users and window managers change it.
#include <gmock/gmock.h>

#include "Tests/LaunchScreen/X11/X11HostTest.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr PixelRect kSecond{300, 250, 640, 400};

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

TEST_F(X11Order, ARaisedWindowIsReportedWithoutAWindowManager) {
  const WindowHandle first = adopt(openGame(kGame)).handle;
  const WindowHandle second = adopt(openGame(kSecond)).handle;
  client.raise(idOf(first));
  EXPECT_TRUE(waitForOrder({first, second}));
  client.raise(idOf(second));
  EXPECT_TRUE(waitForOrder({second, first}));
  EXPECT_EQ(reports.orders.size(), 2U);
}

TEST_F(X11Order, AnOrderUnlikeTheAdoptionOrderIsReported) {
  const xcb_window_t lower = openGame(kGame);
  const WindowHandle upper = adopt(openGame(kSecond)).handle;
  const WindowHandle handle = adopt(lower).handle;
  EXPECT_TRUE(waitForOrder({upper, handle}));
}

TEST_F(X11Order, AnOrderMadeByTheBackEndIsNotReported) {
  const WindowHandle first =
      openOwnWindow({.className = "Ours", .title = "", .frame = {{100, 100}, {300, 300}}});
  const WindowHandle second =
      openOwnWindow({.className = "Ours", .title = "", .frame = {{100, 100}, {300, 300}}});
  system().orderFront(first);
  ASSERT_TRUE(waitFor([&] { return client.children(client.root()).back() == idOf(first); }));
  system().orderFront(second);
  ASSERT_TRUE(waitFor([&] { return client.children(client.root()).back() == idOf(second); }));
  EXPECT_TRUE(waitFor([&] { return system().nextDeadline() == kNever; }));
  EXPECT_THAT(reports.orders, IsEmpty());
}

TEST_F(X11Order, ASingleWindowHasNoStackingOrder) {
  const xcb_window_t game = openGame(kGame);
  adopt(game);
  openGame(kSecond);
  client.raise(game);
  deliver();
  EXPECT_THAT(reports.orders, IsEmpty());
  EXPECT_EQ(system().nextDeadline(), kNever);
}

TEST_F(X11Order, AnUnmappedWindowIsNotInTheOrder) {
  const WindowHandle first = adopt(openGame(kGame)).handle;
  const WindowHandle second = adopt(openGame(kSecond)).handle;
  const WindowHandle third = adopt(openGame(kSecond)).handle;
  client.unmap(idOf(second));
  deliver();
  client.raise(idOf(first));
  EXPECT_TRUE(waitForOrder({first, third}));
}

class X11OrderWithManager : public X11Order, public testing::WithParamInterface<Manager> {
 protected:
  X11OrderWithManager() { startManager(GetParam()); }
};

TEST_P(X11OrderWithManager, AClickThatRaisesAWindowIsReported) {
  const WindowHandle first = adopt(openGame(kGame)).handle;
  const WindowHandle second = adopt(openGame(kSecond)).handle;
  ASSERT_TRUE(waitFor([&] { return client.focusedWindow() == idOf(second); }));
  const PixelRect place = client.areaOnScreen(idOf(first));
  client.click(place.x + 20, place.y + 20);
  EXPECT_TRUE(waitForOrder({first, second}));
}

TEST_P(X11OrderWithManager, TheOrderOfANewManagerIsReported) {
  const WindowHandle first = adopt(openGame(kGame)).handle;
  const WindowHandle second = adopt(openGame(kSecond)).handle;
  manager.end();
  startManager(GetParam());
  ASSERT_TRUE(waitFor([&] { return client.isViewable(idOf(first)); }));
  client.requestActivation(idOf(second));
  client.requestActivation(idOf(first));
  EXPECT_TRUE(waitForOrder({first, second}));
}

INSTANTIATE_TEST_SUITE_P(X11, X11OrderWithManager,
                         testing::Values(Manager::Metacity, Manager::Openbox),
                         [](const testing::TestParamInfo<Manager>& testInfo) {
                           return testInfo.param == Manager::Metacity ? "Metacity" : "Openbox";
                         });

class X11ApplicationOrder : public X11HostTest {};

TEST_F(X11ApplicationOrder, OrderedWindowsFollowTheStackingOrder) {
  std::string error;
  const Strong<NSWindow> second = NSApp->adoptWindow(other, error);
  ASSERT_NE(second, nullptr) << error;
  const auto order = [] { return NSApp->orderedWindows(); };
  ASSERT_TRUE(runUntil([&] { return order() == NSArray<NSWindow>{player, second}; }));
  const PixelRect place = client.areaOnScreen(other);
  client.click(place.x + place.width - 10, place.y + place.height - 10);
  EXPECT_TRUE(runUntil([&] { return order() == NSArray<NSWindow>{second, player}; }));
  client.requestActivation(game);
  EXPECT_TRUE(runUntil([&] { return order() == NSArray<NSWindow>{player, second}; }));
}

}  // namespace
}  // namespace vel::test
