#include <gmock/gmock.h>

#include <limits>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

class X11AdoptedWindows : public X11Test {
 protected:
  std::string refusal(std::uint64_t id) {
    std::string error;
    EXPECT_FALSE(system().adoptWindow(id, error).has_value());
    return error;
  }
};

TEST_F(X11AdoptedWindows, AdoptingAWindowReadsItsState) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow adoptedWindow = adopt(game);
  EXPECT_EQ(idOf(adoptedWindow.handle), game);
  EXPECT_EQ(adoptedWindow.className, "PlayerWindow");
  EXPECT_EQ(adoptedWindow.title, "A game");
  EXPECT_EQ(adoptedWindow.frame, CGRectMake(200, 410, 640, 400));
  EXPECT_EQ(adoptedWindow.styleMask, 15U);
  EXPECT_TRUE(adoptedWindow.isOnScreen);
  EXPECT_FALSE(adoptedWindow.hasFocus);
}

TEST_F(X11AdoptedWindows, AWindowWithTheFocusIsAdoptedAsFocused) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const xcb_window_t child = user.makeWindow({0, 0, 10, 10}, 0, game);
  user.map(child);
  user.focus(child);
  EXPECT_TRUE(adopt(game).hasFocus);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_F(X11AdoptedWindows, AdoptingAWindowWithoutTheFocusDeactivatesTheApplication) {
  adopt(user.openGame(kGame, kGreen));
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated"));
}

TEST_F(X11AdoptedWindows, AnUnmappedWindowCanBeAdopted) {
  EXPECT_FALSE(adopt(user.makeWindow(kGame, kGreen)).isOnScreen);
}

TEST_F(X11AdoptedWindows, AnIdWithoutAWindowIsRefused) {
  EXPECT_THAT(refusal(0x7654321), HasSubstr("window 0x7654321: there is no such window"));
  EXPECT_THAT(refusal(0), HasSubstr("no X11 window's id"));
  EXPECT_THAT(refusal(std::numeric_limits<std::uint64_t>::max()), HasSubstr("no X11 window's id"));
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11AdoptedWindows, AWindowThatCannotBeCoveredIsRefused) {
  EXPECT_THAT(refusal(user.root()), HasSubstr("it is the root window"));
  const xcb_window_t inputOnly = xcb_generate_id(user.get());
  xcb_create_window(user.get(), 0, inputOnly, user.root(), 0, 0, 10, 10, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  user.settle();
  EXPECT_THAT(refusal(inputOnly), HasSubstr("it takes input only"));
  const xcb_pixmap_t pixmap = xcb_generate_id(user.get());
  xcb_create_pixmap(user.get(), 24, pixmap, user.root(), 10, 10);
  user.settle();
  EXPECT_THAT(refusal(pixmap), HasSubstr("there is no such window"));
}

TEST_F(X11AdoptedWindows, AWindowOfTheBackEndIsRefused) {
  WindowDescription description;
  description.frame = CGRectMake(0, 0, 100, 100);
  const WindowHandle own = open(description);
  std::string error;
  for (xcb_window_t id = idOf(own) - 1; id + 20 > idOf(own); --id) {
    EXPECT_FALSE(system().adoptWindow(id, error));
  }
  // One of these ids belongs to the helper window that `requestFocus` uses.
  system().requestFocus(own);
  deliver();
}

TEST_F(X11AdoptedWindows, AWindowCannotBeAdoptedTwice) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  adopt(game);
  EXPECT_THAT(refusal(game), HasSubstr("it is already adopted"));
}

TEST_F(X11AdoptedWindows, AChangedFrameIsReported) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow adoptedWindow = adopt(game);
  user.configure(game, {10, 20, 800, 500});
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("frame", adoptedWindow.handle)); }));
  EXPECT_EQ(reports.frame, CGRectMake(10, 440, 800, 500));
}

TEST_F(X11AdoptedWindows, UnmappingAndMappingAreReportedAsMiniaturizing) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow adoptedWindow = adopt(game);
  user.unmap(game);
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(line("miniaturized", adoptedWindow.handle)); }));
  user.map(game);
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(line("deminiaturized", adoptedWindow.handle)); }));
}

TEST_F(X11AdoptedWindows, ADestroyedWindowIsReported) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow adoptedWindow = adopt(game);
  system().setScene(adoptedWindow.handle, whiteWithIndicator(adoptedWindow.frame.size));
  user.destroy(game);
  // The back end does not know yet that the window is destroyed. These requests must log no errors.
  system().setScene(adoptedWindow.handle, {});
  system().setStyleMask(adoptedWindow.handle, 1);
  system().requestFocus(adoptedWindow.handle);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("destroyed", adoptedWindow.handle)); }));
  system().setScene(adoptedWindow.handle, white(adoptedWindow.frame.size));
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11AdoptedWindows, AReleasedWindowIsRestored) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow adoptedWindow = adopt(game);
  system().setScene(adoptedWindow.handle, white(adoptedWindow.frame.size));
  system().setStyleMask(adoptedWindow.handle, NSWindowStyleMaskTitled);
  system().orderOut(adoptedWindow.handle);
  system().releaseWindow(adoptedWindow.handle);
  deliver();
  EXPECT_TRUE(user.isViewable(game));
  EXPECT_TRUE(user.picture(game).isAll(kGreen));
  EXPECT_FALSE(user.property(game, "_MOTIF_WM_HINTS").has_value());
}

TEST_F(X11AdoptedWindows, AReleasedWindowIsNotReported) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  system().releaseWindow(adopt(game).handle);
  deliver();
  reports.lines.clear();
  user.configure(game, {0, 0, 100, 100});
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

class X11AdoptedWindowsWithManager : public X11TestWithManager {};

TEST_F(X11AdoptedWindowsWithManager, TheManagersFrameOfAWindowIsRefused) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
  xcb_window_t managersFrame = 0;
  for (const xcb_window_t window : user.children(user.root())) {
    if (user.find("PlayerWindow", window) == game) {
      managersFrame = window;
    }
  }
  ASSERT_NE(managersFrame, 0U);
  std::string error;
  EXPECT_FALSE(system().adoptWindow(managersFrame, error).has_value());
  EXPECT_THAT(error, HasSubstr("it is a window manager's frame"));
}

TEST_F(X11AdoptedWindowsWithManager, AChangedFrameIsReportedInScreenCoordinates) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
  const AdoptedWindow adoptedWindow = adopt(game);
  user.configure(game, {300, 260, 500, 350});
  EXPECT_TRUE(waitFor([&] { return reports.frame.size == CGSize{500, 350}; }));
  const PixelRect newFrame = user.frameOf(game);
  EXPECT_EQ(reports.frame.origin, (CGPoint{double(newFrame.x), double(960 - newFrame.y - 350)}));
}

TEST_F(X11AdoptedWindowsWithManager, MiniaturizingByTheUserIsReported) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
  const AdoptedWindow adoptedWindow = adopt(game);
  user.requestIconify(game);
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(line("miniaturized", adoptedWindow.handle)); }));
  system().requestMiniaturized(adoptedWindow.handle, false);
  EXPECT_TRUE(
      waitFor([&] { return reports.contains(line("deminiaturized", adoptedWindow.handle)); }));
  EXPECT_TRUE(waitFor([&] { return user.isViewable(game); }));
}

TEST_F(X11AdoptedWindowsWithManager, AnAdoptedWindowGetsTheFocusOnRequest) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const xcb_window_t other = user.openGame({900, 150, 200, 200}, 0);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(other); }));
  const AdoptedWindow adoptedWindow = adopt(game);
  system().requestFocus(adoptedWindow.handle);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("focus", adoptedWindow.handle)); }));
}

}  // namespace
}  // namespace vel::test
