// The back end adopts windows of other programs.
#include <gmock/gmock.h>

#include <limits>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

class X11AdoptedWindows : public X11Test {
 protected:
  std::string adoptionError(std::uint64_t id) {
    std::string error;
    EXPECT_FALSE(system().adoptWindow(X11WindowId{id}, error).has_value());
    return error;
  }
};

TEST_F(X11AdoptedWindows, AdoptingAWindowReadsItsState) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  const AdoptedWindow adoptedWindow = adopt(game);
  EXPECT_EQ(idOf(adoptedWindow.handle), game);
  EXPECT_EQ(adoptedWindow.className, "PlayerWindow");
  EXPECT_EQ(adoptedWindow.title, "A game");
  EXPECT_EQ(adoptedWindow.frame, CGRectMake(200, 410, 640, 400));
  EXPECT_EQ(adoptedWindow.styleMask, 15U);  // title, close, miniaturise and resize
  EXPECT_TRUE(adoptedWindow.isOnScreen);
  EXPECT_FALSE(adoptedWindow.hasFocus);
}

TEST_F(X11AdoptedWindows, AnAdoptedWindowHasTheFocusIfItsChildHasTheFocus) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  const xcb_window_t child = client.makeWindow({0, 0, 10, 10}, 0, game);
  client.map(child);
  client.focus(child);
  EXPECT_TRUE(adopt(game).hasFocus);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_F(X11AdoptedWindows, AdoptingAWindowWithoutTheFocusDeactivatesTheApplication) {
  adopt(client.openGameWindow(kGameFrame, kGreen));
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated"));
}

TEST_F(X11AdoptedWindows, AnUnmappedWindowCanBeAdopted) {
  EXPECT_FALSE(adopt(client.makeWindow(kGameFrame, kGreen)).isOnScreen);
}

TEST_F(X11AdoptedWindows, AnIdWithoutAWindowIsRefused) {
  EXPECT_THAT(adoptionError(0x7654321), HasSubstr("window 0x7654321: there is no such window"));
  EXPECT_THAT(adoptionError(0), HasSubstr("no X11 window's id"));
  EXPECT_THAT(adoptionError(std::numeric_limits<std::uint64_t>::max()),
              HasSubstr("no X11 window's id"));
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11AdoptedWindows, AWindowThatCannotBeCoveredIsRefused) {
  EXPECT_THAT(adoptionError(client.root()), HasSubstr("it is the root window"));
  const xcb_window_t inputOnly = xcb_generate_id(client.connection());
  xcb_create_window(client.connection(), 0, inputOnly, client.root(), 0, 0, 10, 10, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  client.waitForServer();
  EXPECT_THAT(adoptionError(inputOnly), HasSubstr("it takes input only"));
  const xcb_pixmap_t pixmap = xcb_generate_id(client.connection());
  xcb_create_pixmap(client.connection(), 24, pixmap, client.root(), 10, 10);
  client.waitForServer();
  EXPECT_THAT(adoptionError(pixmap), HasSubstr("there is no such window"));
}

TEST_F(X11AdoptedWindows, AWindowOfTheBackEndIsRefused) {
  WindowDescription description;
  description.frame = CGRectMake(0, 0, 100, 100);
  const WindowHandle ownWindow = openOwnWindow(description);
  std::string error;
  // The back end owns the server time window, with which it reads the time of the X server. The id
  // of the server time window is one of the 19 ids before `ownWindow`.
  for (xcb_window_t id = idOf(ownWindow) - 1; id + 20 > idOf(ownWindow); --id) {
    EXPECT_FALSE(system().adoptWindow(X11WindowId{id}, error));
  }
  // When the focus changes, the back end reads the server's time. The back end would wait forever
  // if `adoptWindow` had changed the event mask of the server time window.
  system().requestFocus(ownWindow);
  deliver();
}

TEST_F(X11AdoptedWindows, AWindowCannotBeAdoptedTwice) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  adopt(game);
  EXPECT_THAT(adoptionError(game), HasSubstr("it is already adopted"));
}

TEST_F(X11AdoptedWindows, AChangedFrameIsReported) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  const AdoptedWindow adoptedWindow = adopt(game);
  client.configure(game, {10, 20, 800, 500});
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("frame", adoptedWindow.handle)); }));
  EXPECT_EQ(reports.lastFrame, CGRectMake(10, 440, 800, 500));
}

TEST_F(X11AdoptedWindows, ChangesOfAReleasedWindowAreNotReported) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  system().releaseWindow(adopt(game).handle);
  deliver();
  reports.lines.clear();
  client.configure(game, {0, 0, 100, 100});
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

/// A game whose window the back end has adopted.
class X11AdoptedGame : public X11Test, public testing::WithParamInterface<Manager> {
 protected:
  X11AdoptedGame() : X11Test(GetParam()) {}

  void SetUp() override {
    game = client.openGameWindow(kGameFrame, kGreen);
    ASSERT_TRUE(waitFor(
        [this] { return client.isViewable(game) && client.screenPicture(game).isAll(kGreen); }));
    adoptedWindow = adopt(game);
  }

  xcb_window_t game = 0;
  AdoptedWindow adoptedWindow;
};

TEST_P(X11AdoptedGame, UnmappingIsReportedAsMiniaturizingAndMappingAsDeminiaturizing) {
  client.unmap(game);
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(reportLine("miniaturized", adoptedWindow.handle)); }));
  client.map(game);
  EXPECT_TRUE(waitFor(
      [&] { return reports.contains(reportLine("deminiaturized", adoptedWindow.handle)); }));
}

TEST_P(X11AdoptedGame, ADestroyedWindowIsReported) {
  system().setScene(adoptedWindow.handle, whiteSceneWithSpinner(adoptedWindow.frame.size));
  client.destroy(game);
  // The back end does not know yet that the window is destroyed. These requests must log no errors.
  system().setScene(adoptedWindow.handle, {});
  system().setStyleMask(adoptedWindow.handle, 1);
  system().requestFocus(adoptedWindow.handle);
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(reportLine("destroyed", adoptedWindow.handle)); }));
  system().setScene(adoptedWindow.handle, whiteScene(adoptedWindow.frame.size));
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11AdoptedGame, AReleasedWindowIsUncoveredAndItsHintsAreRestored) {
  system().setScene(adoptedWindow.handle, whiteScene(adoptedWindow.frame.size));
  system().setStyleMask(adoptedWindow.handle, NSWindowStyleMaskTitled);
  EXPECT_TRUE(waitFor([&] { return client.property(game, "_MOTIF_WM_HINTS").has_value(); }));
  EXPECT_TRUE(showsOnly(kWhite, game));
  system().orderOut(adoptedWindow.handle);  // does not unmap an adopted window
  system().releaseWindow(adoptedWindow.handle);
  deliver();
  EXPECT_TRUE(client.isViewable(game));
  EXPECT_TRUE(showsOnly(kGreen, game));
  EXPECT_FALSE(client.property(game, "_MOTIF_WM_HINTS").has_value());
}

INSTANTIATE_TEST_SUITE_P(X11, X11AdoptedGame, testing::ValuesIn(withXwayland({Manager::None})),
                         nameOfManager);

/// Weston reverts a focus change that a program requested.
bool grantsFocusRequests(Manager manager) { return manager != Manager::XwaylandWeston; }

/// A game under a window manager. The back end has adopted the game's window.
class X11ManagedGame : public X11AdoptedGame {};

TEST_P(X11ManagedGame, TheFrameOfTheWindowManagerIsRefused) {
  if (!featuresOf(GetParam()).addsFrames) {
    GTEST_SKIP() << "the compositor adds no frames to windows of X clients";
  }
  xcb_window_t managersFrame = 0;
  for (const xcb_window_t window : client.children(client.root())) {
    if (client.findWindow("PlayerWindow", window) == game) {
      managersFrame = window;
    }
  }
  ASSERT_NE(managersFrame, 0U);
  std::string error;
  EXPECT_FALSE(system().adoptWindow(X11WindowId{managersFrame}, error).has_value());
  EXPECT_THAT(error, HasSubstr("it is a window manager's frame"));
}

TEST_P(X11ManagedGame, AChangedFrameIsReportedInScreenCoordinates) {
  client.configure(game, {300, 260, 500, 350});
  EXPECT_TRUE(waitFor([&] { return reports.lastFrame.size == CGSize{500, 350}; }));
  const int screenHeight = client.screenArea().height;
  EXPECT_TRUE(waitFor([&] {
    const PixelRect area = client.areaOnScreen(game);
    return !featuresOf(GetParam()).reportsMoves ||
           reports.lastFrame == CGRectMake(area.x, screenHeight - area.y - 350, 500, 350);
  }));
}

TEST_P(X11ManagedGame, MiniaturizingAndDeminiaturizingAreReported) {
  if (!featuresOf(GetParam()).miniaturizes) {
    GTEST_SKIP() << "the compositor reports no miniaturised windows";
  }
  client.requestIconify(game);
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(reportLine("miniaturized", adoptedWindow.handle)); }));
  system().requestMiniaturized(adoptedWindow.handle, false);
  EXPECT_TRUE(waitFor(
      [&] { return reports.contains(reportLine("deminiaturized", adoptedWindow.handle)); }));
  EXPECT_TRUE(waitFor([&] { return client.isViewable(game); }));
}

TEST_P(X11ManagedGame, AnAdoptedWindowGetsTheFocusOnRequest) {
  if (!grantsFocusRequests(GetParam())) {
    GTEST_SKIP() << "the compositor grants no requests for the focus";
  }
  const xcb_window_t otherWindow = client.openGameWindow({900, 150, 200, 200}, 0);
  ASSERT_TRUE(waitFor(
      [&] { return client.isViewable(otherWindow) && client.focusedWindow() == otherWindow; }));
  reports.lines.clear();
  system().requestFocus(adoptedWindow.handle);
  EXPECT_TRUE(waitFor([&] { return reports.contains(reportLine("focus", adoptedWindow.handle)); }));
}

INSTANTIATE_TEST_SUITE_P(X11, X11ManagedGame, testing::ValuesIn(withXwayland({Manager::Metacity})),
                         nameOfManager);

}  // namespace
}  // namespace vel::test
