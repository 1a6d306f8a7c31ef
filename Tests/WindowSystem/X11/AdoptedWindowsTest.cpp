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

TEST_F(X11AdoptedWindows, AreFoundAsTheyAre) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow found = adopt(game);
  EXPECT_EQ(idOf(found.handle), game);
  EXPECT_EQ(found.className, "PlayerWindow");
  EXPECT_EQ(found.title, "A game");
  EXPECT_EQ(found.frame, CGRectMake(200, 410, 640, 400));
  EXPECT_EQ(found.styleMask, 15U);
  EXPECT_TRUE(found.onScreen);
  EXPECT_FALSE(found.hasFocus);
}

TEST_F(X11AdoptedWindows, MayHaveTheFocusAlready) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const xcb_window_t inside = user.makeWindow({0, 0, 10, 10}, 0, game);
  user.map(inside);
  user.focus(inside);
  EXPECT_TRUE(adopt(game).hasFocus);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_F(X11AdoptedWindows, WithoutTheFocusLeaveTheApplicationInactive) {
  adopt(user.openGame(kGame, kGreen));
  deliver();
  EXPECT_THAT(reports.lines, ElementsAre("deactivated"));
}

TEST_F(X11AdoptedWindows, MayBeOffTheScreen) {
  EXPECT_FALSE(adopt(user.makeWindow(kGame, kGreen)).onScreen);
}

TEST_F(X11AdoptedWindows, AreRefusedWhereThereIsNone) {
  EXPECT_THAT(refusal(0x7654321), HasSubstr("window 0x7654321: there is no such window"));
  EXPECT_THAT(refusal(0), HasSubstr("no X11 window's id"));
  EXPECT_THAT(refusal(std::numeric_limits<std::uint64_t>::max()), HasSubstr("no X11 window's id"));
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11AdoptedWindows, AreRefusedWhereNothingCanBeShown) {
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

TEST_F(X11AdoptedWindows, AreRefusedWhereTheyAreTheBackEndsOwn) {
  WindowDescription description;
  description.frame = CGRectMake(0, 0, 100, 100);
  const WindowHandle own = open(description);
  std::string error;
  for (xcb_window_t id = idOf(own) - 1; id + 20 > idOf(own); --id) {
    EXPECT_FALSE(system().adoptWindow(id, error));
  }
  system().requestFocus(own);  // reads the server's time, through a window of that kind
  deliver();
}

TEST_F(X11AdoptedWindows, AreAdoptedOnce) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  adopt(game);
  EXPECT_THAT(refusal(game), HasSubstr("it is already adopted"));
}

TEST_F(X11AdoptedWindows, TellWhereTheyGo) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow found = adopt(game);
  user.configure(game, {10, 20, 800, 500});
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("frame", found.handle)); }));
  EXPECT_EQ(reports.frame, CGRectMake(10, 440, 800, 500));
}

TEST_F(X11AdoptedWindows, TellWhenTheyAreUnmappedAndMappedAgain) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow found = adopt(game);
  user.unmap(game);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("miniaturized", found.handle)); }));
  user.map(game);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("deminiaturized", found.handle)); }));
}

TEST_F(X11AdoptedWindows, TellWhenTheyAreGone) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow found = adopt(game);
  system().setScene(found.handle, whiteWithIndicator(found.frame.size));
  user.destroy(game);
  // Asked for before the end is known: no error of anybody's.
  system().setScene(found.handle, {});
  system().setStyleMask(found.handle, 1);
  system().requestFocus(found.handle);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("destroyed", found.handle)); }));
  system().setScene(found.handle, white(found.frame.size));
  deliver();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11AdoptedWindows, StayWhenTheyAreLetGo) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const AdoptedWindow found = adopt(game);
  system().setScene(found.handle, white(found.frame.size));
  system().setStyleMask(found.handle, NSWindowStyleMaskTitled);
  system().orderOut(found.handle);
  system().releaseWindow(found.handle);
  deliver();
  EXPECT_TRUE(user.isViewable(game));
  EXPECT_TRUE(user.picture(game).isAll(kGreen));
  EXPECT_FALSE(user.property(game, "_MOTIF_WM_HINTS").has_value());
  reports.lines.clear();
  user.configure(game, {0, 0, 100, 100});
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

class X11AdoptedWindowsWithManager : public X11TestWithManager {};

TEST_F(X11AdoptedWindowsWithManager, AreRefusedByTheFrameAroundThem) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
  xcb_window_t frame = 0;
  for (const xcb_window_t window : user.children(user.root())) {
    if (user.find("PlayerWindow", window) == game) {
      frame = window;
    }
  }
  ASSERT_NE(frame, 0U);
  std::string error;
  EXPECT_FALSE(system().adoptWindow(frame, error).has_value());
  EXPECT_THAT(error, HasSubstr("it is a window manager's frame"));
}

TEST_F(X11AdoptedWindowsWithManager, TellWhereTheyGoWithTheirFrame) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
  const AdoptedWindow found = adopt(game);
  user.configure(game, {300, 260, 500, 350});
  EXPECT_TRUE(waitFor([&] { return reports.frame.size == CGSize{500, 350}; }));
  const PixelRect place = user.frameOf(game);
  EXPECT_EQ(reports.frame.origin, (CGPoint{double(place.x), double(960 - place.y - 350)}));
}

TEST_F(X11AdoptedWindowsWithManager, TellWhenTheyAreMiniaturizedByTheUser) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
  const AdoptedWindow found = adopt(game);
  user.iconify(game);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("miniaturized", found.handle)); }));
  system().requestMiniaturized(found.handle, false);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("deminiaturized", found.handle)); }));
  EXPECT_TRUE(waitFor([&] { return user.isViewable(game); }));
}

TEST_F(X11AdoptedWindowsWithManager, GetTheFocusThatIsAskedFor) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  const xcb_window_t other = user.openGame({900, 150, 200, 200}, 0);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(other); }));
  const AdoptedWindow found = adopt(game);
  system().requestFocus(found.handle);
  EXPECT_TRUE(waitFor([&] { return reports.contains(line("focus", found.handle)); }));
}

}  // namespace
}  // namespace vel::test
