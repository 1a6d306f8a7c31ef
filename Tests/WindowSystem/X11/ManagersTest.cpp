// The cover over a game's window when the window moves, when one window manager replaces another,
// and under a window manager that supports few hints.
#include <gmock/gmock.h>

#include <array>

#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::IsEmpty;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

class X11Managers : public X11Test, public testing::WithParamInterface<Manager> {
 protected:
  explicit X11Managers(Manager manager = Manager::None) : X11Test(manager) {}

  void openCoveredGame() {
    game = client.openGameWindow(kGameFrame, kGreen);
    ASSERT_TRUE(waitFor([&] { return client.isViewable(game); }));
    const AdoptedWindow adoptedWindow = adopt(game);
    handle = adoptedWindow.handle;
    system().setScene(handle, whiteScene(adoptedWindow.frame.size));
    system().setStyleMask(handle, NSWindowStyleMaskTitled);
    deliver();
  }
  [[nodiscard]] std::array<std::optional<Property>, 2> hints() const {
    return {client.property(game, "_MOTIF_WM_HINTS"), client.property(game, "WM_NORMAL_HINTS")};
  }
  /// The window that identifies the running window manager.
  [[nodiscard]] xcb_window_t checkWindow() const {
    const auto checkWindows = client.numbers(client.root(), "_NET_SUPPORTING_WM_CHECK");
    return checkWindows.empty() ? xcb_window_t{XCB_WINDOW_NONE} : checkWindows.front();
  }

  xcb_window_t game = 0;
  WindowHandle handle = WindowHandle::None;
};

class X11MovedWindows : public X11Managers {
 protected:
  X11MovedWindows() : X11Managers(GetParam()) {}
};

TEST_P(X11MovedWindows, TheCoverMovesWithItsWindow) {
  openCoveredGame();
  EXPECT_TRUE(waitFor([&] { return client.screenPicture(game).isAll(kWhite); }));
  const auto hintsBefore = hints();
  const PixelRect frameBefore = client.areaOnScreen(game);
  PixelRect frame = frameBefore;
  frame.x += 130;
  frame.y += 90;
  reports.lines.clear();
  if (featuresOf(GetParam()).movesWindows) {
    client.configure(game, frame);
  } else {
    compositor->moveWindow("A game", frame.x, frame.y);  // the user moves the window
  }
  // The manager may choose a position other than the requested position.
  EXPECT_TRUE(waitFor([&] { return client.areaOnScreen(game).x > frameBefore.x + 100; }));
  const int screenHeight = client.screenArea().height;
  EXPECT_TRUE(waitFor([&] {
    const PixelRect currentFrame = client.areaOnScreen(game);
    return !featuresOf(GetParam()).reportsMoves ||
           reports.lastFrame ==
               CGRectMake(currentFrame.x, screenHeight - currentFrame.y - 400, 640, 400);
  }));
  EXPECT_TRUE(waitFor([&] { return client.screenPicture(game).isAll(kWhite); }));
  // No part of the game is visible beside the cover.
  EXPECT_TRUE(waitFor(
      [&] { return !client.screenPicture(client.screenArea()).colors().contains(kGreen); }));
  EXPECT_EQ(hints(), hintsBefore);
  EXPECT_THAT(log, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(X11, X11MovedWindows,
                         testing::ValuesIn(withXwayland({Manager::Metacity, Manager::Openbox})),
                         nameOfManager);

TEST_P(X11Managers, ReplacingTheManagerKeepsTheCoverAndAllowsItsRemoval) {
  const bool startsWithMetacity = GetParam() == Manager::Metacity;
  // The style mask excludes all controls, but Metacity still allows resizing (8), and Openbox still
  // allows closing (2) and miniaturising (4).
  const auto remainingControlsSuffix = [](bool isMetacity) { return isMetacity ? " 8" : " 6"; };
  startManager(GetParam());
  openCoveredGame();
  const auto hintsWhileCovered = hints();
  ASSERT_TRUE(waitFor([&] {
    return reports.contains(reportLine("remaining controls", handle) +
                            remainingControlsSuffix(startsWithMetacity));
  }));
  reports.lines.clear();
  const xcb_window_t checkWindowBefore = checkWindow();
  const Process newManager =
      server.start({startsWithMetacity ? "openbox" : "metacity", "--sm-disable", "--replace"});
  EXPECT_TRUE(waitFor([&] {
    return reports.contains(reportLine("remaining controls", handle) +
                            remainingControlsSuffix(!startsWithMetacity));
  }));
  EXPECT_NE(checkWindow(), checkWindowBefore);
  EXPECT_EQ(hints(), hintsWhileCovered);
  EXPECT_TRUE(
      waitFor([&] { return client.isViewable(game) && client.screenPicture(game).isAll(kWhite); }));
  EXPECT_EQ(reports.count("destroyed"), 0);
  system().setScene(handle, {});
  system().setStyleMask(handle, 15);
  EXPECT_TRUE(waitFor([&] { return client.property(game, "_MOTIF_WM_HINTS") == std::nullopt; }));
  const std::array<std::uint32_t, 18> ownersSizeHints{1 | 4};  // USPosition and PPosition
  EXPECT_EQ(client.property(game, "WM_NORMAL_HINTS"),
            Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, ownersSizeHints));
  EXPECT_TRUE(waitFor([&] { return client.screenPicture(game).isAll(kGreen); }));
  EXPECT_THAT(log, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(X11, X11Managers, testing::Values(Manager::Metacity, Manager::Openbox),
                         nameOfManager);

/// The test acts as a window manager that supports only `_NET_ACTIVE_WINDOW`.
class X11PlainManager : public X11Managers {
 protected:
  X11PlainManager() {
    const xcb_window_t managersWindow = client.makeWindow({-10, -10, 1, 1}, 0);
    const std::array checkWindows{managersWindow};
    const std::array supportedAtoms{client.atom("_NET_ACTIVE_WINDOW")};
    for (const xcb_window_t window : {managersWindow, client.root()}) {
      client.setProperty(window, "_NET_SUPPORTING_WM_CHECK",
                         Property::ofNumbers(XCB_ATOM_WINDOW, checkWindows));
    }
    client.setProperty(client.root(), "_NET_SUPPORTED",
                       Property::ofNumbers(XCB_ATOM_ATOM, supportedAtoms));
  }
};

TEST_F(X11PlainManager, RemainingControlsAreNotReportedIfTheManagerPublishesNoAllowedActions) {
  openCoveredGame();
  // The back end waits before it reads the allowed actions.
  EXPECT_LT(system().nextDeadline(), kNever);
  EXPECT_TRUE(waitFor([&] { return system().nextDeadline() == kNever; }));
  EXPECT_EQ(reports.count("remaining controls"), 0);
  EXPECT_NE(client.property(game, "_MOTIF_WM_HINTS"), std::nullopt);
}

TEST_F(X11PlainManager, TheFocusIsRequestedFromTheManagerAndNotSetDirectly) {
  openCoveredGame();
  client.selectEvents(client.root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  client.takeEventTypes();
  system().requestFocus(handle);
  deliver();
  EXPECT_THAT(client.takeEventTypes(), testing::Contains(XCB_CLIENT_MESSAGE));
  EXPECT_NE(client.focusedWindow(), game);
}

TEST_F(X11PlainManager, TheServersStackingOrderIsReportedIfTheManagerPublishesNoOrder) {
  openCoveredGame();
  const WindowHandle otherHandle = adopt(client.openGameWindow(kGameFrame, 0)).handle;
  client.raise(game);
  EXPECT_TRUE(waitFor([&] {
    return !reports.orders.empty() && reports.orders.back() == std::vector{handle, otherHandle};
  }));
}

}  // namespace
}  // namespace vel::test
