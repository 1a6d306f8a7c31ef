// Covers over hosts that do unusual things to their own windows.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <thread>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::IsEmpty;

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;
constexpr std::uint32_t kRed = 0xC02020;
constexpr PixelRect kInsideGame{300, 250, 400, 200};
constexpr int kPictures = 40;

/// Fills a window and all windows inside it, like a program that draws with IncludeInferiors.
class InferiorsPainter {
 public:
  InferiorsPainter(XClient& client, xcb_window_t window)
      : client_(client), window_(window), context_(xcb_generate_id(client.get())) {
    const std::array<std::uint32_t, 2> values{kRed, XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS};
    xcb_create_gc(client_.get(), context_, window_, XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE,
                  values.data());
  }
  void paint() {
    constexpr xcb_rectangle_t kEverything{0, 0, 2000, 2000};
    xcb_poly_fill_rectangle(client_.get(), window_, context_, 1, &kEverything);
    client_.settle();
  }

 private:
  XClient& client_;
  xcb_window_t window_;
  xcb_gcontext_t context_;
};

/// Repeats an action in a thread. The destructor ends the thread. The action has a connection of
/// its own.
class Repetition {
 public:
  Repetition(const std::string& display, std::function<void(XClient&)> action)
      : client_(display), thread_([this, action = std::move(action)] {
          while (!isEnded_) {
            action(client_);
            client_.settle();
            waitForInput(-1, steadyNow() + kNanosecondsPerSecond / 500);
          }
        }) {}
  Repetition(const Repetition&) = delete;
  Repetition& operator=(const Repetition&) = delete;
  Repetition(Repetition&&) = delete;
  Repetition& operator=(Repetition&&) = delete;
  ~Repetition() {
    isEnded_ = true;
    thread_.join();
  }

 private:
  XClient client_;
  std::atomic<bool> isEnded_ = false;
  std::thread thread_;
};

class X11CoverOfForeignHost : public X11Test, public testing::WithParamInterface<Manager> {
 protected:
  X11CoverOfForeignHost() : X11Test(GetParam()) {}

  void SetUp() override {
    game = user.openGame(kGame, kGreen);
    ASSERT_TRUE(
        waitFor([this] { return user.isViewable(game) && user.picture(game).isAll(kGreen); }));
    deliverFor(0.2);  // the window manager draws the frame of the game
    handle = adopt(game).handle;
  }
  void cover() {
    const PixelRect frame = user.frameOf(game);
    system().setScene(handle,
                      white({static_cast<double>(frame.width), static_cast<double>(frame.height)}));
    deliver();
  }
  bool isWhite() { return user.picture(game).isAll(kWhite); }
  int picturesThatAreNotWhite() {
    int count = 0;
    for (int i = 0; i < kPictures; ++i) {
      deliverFor(0.003);
      count += isWhite() ? 0 : 1;
    }
    return count;
  }
  bool gameGetsClicks() {
    const PixelRect frame = user.frameOf(game);
    user.events();
    user.click(frame.x + 50, frame.y + 50);
    return std::ranges::count(user.events(), XCB_BUTTON_PRESS) > 0;
  }

  xcb_window_t game = 0;
  WindowHandle handle = WindowHandle::None;
};

TEST_P(X11CoverOfForeignHost, IsMappedInAHostThatRedirectsItsChildren) {
  user.selectEvents(game, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_BUTTON_PRESS);
  system().setScene(handle, whiteWithIndicator({640, 400}));
  deliver();
  EXPECT_EQ(user.picture(game).at(5, 5), kWhite);
  ASSERT_FALSE(user.children(game).empty());
  for (const xcb_window_t child : user.children(game)) {
    EXPECT_TRUE(user.isViewable(child));
  }
  EXPECT_FALSE(gameGetsClicks());
}

TEST_P(X11CoverOfForeignHost, ShieldIsMappedInAHostThatRedirectsItsChildren) {
  user.selectEvents(game, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_BUTTON_PRESS);
  const WindowHandle modal =
      open({.className = "Modal", .title = "", .frame = {{900, 700}, {100, 100}}});
  system().setModalWindow(modal);
  deliver();
  EXPECT_FALSE(gameGetsClicks());
}

TEST_P(X11CoverOfForeignHost, HidesDrawingOverChildren) {
  cover();
  InferiorsPainter painter(user, game);
  painter.paint();
  EXPECT_TRUE(isWhite());
}

TEST_P(X11CoverOfForeignHost, HidesDrawingOverChildrenAtEachFrame) {
  cover();
  const Repetition drawing(server.display(),
                           [this](XClient& client) { InferiorsPainter(client, game).paint(); });
  EXPECT_EQ(picturesThatAreNotWhite(), 0);
}

TEST_P(X11CoverOfForeignHost, HidesDrawingOverChildrenAfterTheHostMovesAndGrows) {
  cover();
  user.configure(game, {100, 80, 900, 700});
  deliverFor(0.3);
  ASSERT_EQ(user.frameOf(game).width, 900);
  InferiorsPainter painter(user, game);
  painter.paint();
  EXPECT_TRUE(isWhite());
  user.configure(game, {300, 200, 300, 200});
  deliverFor(0.3);
  ASSERT_EQ(user.frameOf(game).width, 300);
  painter.paint();
  EXPECT_TRUE(isWhite());
}

TEST_P(X11CoverOfForeignHost, HidesChildrenThatTheHostRaises) {
  const xcb_window_t child = user.makeWindow({50, 50, 100, 100}, kRed, game);
  user.map(child);
  cover();
  const Repetition raising(server.display(), [child](XClient& client) { client.raise(child); });
  EXPECT_EQ(picturesThatAreNotWhite(), 0);
}

TEST_P(X11CoverOfForeignHost, HidesChildrenThatTheHostAddsAtOnce) {
  cover();
  const xcb_window_t child = user.makeWindow({50, 50, 100, 100}, kRed, game);
  user.map(child);
  EXPECT_TRUE(isWhite());
}

TEST_P(X11CoverOfForeignHost, ComesBackWhenTheHostUnmapsItsChildren) {
  user.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS);
  cover();
  xcb_unmap_subwindows(user.get(), game);
  deliver();
  EXPECT_TRUE(isWhite());
  EXPECT_FALSE(gameGetsClicks());
  EXPECT_TRUE(user.isViewable(user.children(game).back()));
}

TEST_P(X11CoverOfForeignHost, ComesBackWhenTheHostDestroysItsChildren) {
  user.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS);
  cover();
  xcb_destroy_subwindows(user.get(), game);
  deliver();
  EXPECT_TRUE(isWhite());
  EXPECT_FALSE(gameGetsClicks());
  ASSERT_FALSE(user.children(game).empty());
  system().setScene(handle, {});
  deliver();
  EXPECT_TRUE(user.children(game).empty());
  EXPECT_TRUE(user.picture(game).isAll(kGreen));
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, ShieldComesBackWhenTheHostUnmapsOrDestroysItsChildren) {
  user.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS);
  const WindowHandle modal =
      open({.className = "Modal", .title = "", .frame = {{900, 700}, {100, 100}}});
  system().setModalWindow(modal);
  deliver();
  xcb_unmap_subwindows(user.get(), game);
  deliver();
  EXPECT_FALSE(gameGetsClicks());
  xcb_destroy_subwindows(user.get(), game);
  deliver();
  EXPECT_FALSE(gameGetsClicks());
  system().setModalWindow(WindowHandle::None);
  deliver();
  EXPECT_TRUE(user.children(game).empty());
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, IsWhiteAgainWhenTheHostIsMappedAgain) {
  cover();
  const Repetition drawing(server.display(),
                           [this](XClient& client) { InferiorsPainter(client, game).paint(); });
  for (int i = 0; i < 3; ++i) {
    user.unmap(game);
    EXPECT_TRUE(waitFor([this] { return !user.isViewable(game); }));
    deliverFor(0.1);
    EXPECT_EQ(user.picture(kInsideGame).colors().count(kWhite), 0U);
    user.map(game);
    EXPECT_TRUE(waitFor([this] { return user.isViewable(game); }));
    deliverFor(0.1);
    EXPECT_EQ(picturesThatAreNotWhite(), 0);
  }
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, FollowsTheHostIntoAnotherWindowAndBack) {
  if (GetParam() != Manager::None) {
    GTEST_SKIP() << "a window manager takes the window back";
  }
  cover();
  const xcb_window_t other = user.openGame({50, 50, 1000, 800}, kGreen);
  InferiorsPainter painter(user, game);
  xcb_reparent_window(user.get(), game, other, 30, 40);
  user.settle();
  user.map(game);
  EXPECT_TRUE(waitFor([&] { return user.isViewable(game) && user.children(other).size() == 2; }));
  painter.paint();
  EXPECT_TRUE(isWhite());
  // The rest of the other window stays visible.
  EXPECT_EQ(user.picture(other).at(10, 10), kGreen);
  EXPECT_EQ(user.picture(other).at(900, 600), kGreen);
  xcb_reparent_window(user.get(), game, user.root(), 100, 100);
  user.settle();
  user.map(game);
  EXPECT_TRUE(waitFor([&] { return user.isViewable(game) && user.children(other).empty(); }));
  deliverFor(0.2);
  painter.paint();
  EXPECT_TRUE(isWhite());
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, IsDestroyedWithTheWindow) {
  const std::size_t before = user.children(user.root()).size();
  cover();
  user.destroy(game);
  EXPECT_TRUE(waitFor([this] { return reports.contains(line("destroyed", handle)); }));
  EXPECT_TRUE(waitFor([&] { return user.picture(kInsideGame).colors().count(kWhite) == 0; }));
  EXPECT_LE(user.children(user.root()).size(), before);
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, LeavesTheWindowsAboveTheHostVisible) {
  cover();
  const xcb_window_t above = user.openGame({400, 250, 200, 100}, kGreen);
  user.raise(above);
  deliverFor(0.2);
  EXPECT_TRUE(user.picture(above).isAll(kGreen));
}

TEST_P(X11CoverOfForeignHost, IsAsLargeAsTheWindow) {
  const Picture before = user.picture(PixelRect{0, 0, 1280, 960});
  const PixelRect frame = user.frameOf(game);
  cover();
  const Picture during = user.picture(PixelRect{0, 0, 1280, 960});
  int changedOutside = 0;
  for (int y = 0; y < 960; ++y) {
    for (int x = 0; x < 1280; ++x) {
      const bool isInside =
          x >= frame.x && x < frame.x + frame.width && y >= frame.y && y < frame.y + frame.height;
      changedOutside += !isInside && before.at(x, y) != during.at(x, y) ? 1 : 0;
    }
  }
  EXPECT_EQ(changedOutside, 0);
  EXPECT_TRUE(isWhite());
}

std::string nameOfManager(const testing::TestParamInfo<Manager>& run) {
  constexpr std::array<const char*, 3> kNames{"Bare", "Metacity", "Openbox"};
  return kNames.at(static_cast<std::size_t>(run.param));
}

INSTANTIATE_TEST_SUITE_P(Managers, X11CoverOfForeignHost,
                         testing::Values(Manager::None, Manager::Metacity, Manager::Openbox),
                         nameOfManager);

class X11CoverAndManagers : public X11Test {};

TEST_F(X11CoverAndManagers, IsWhiteAgainAfterTheManagerIsKilledOrReplaced) {
  startManager(Manager::Openbox);
  const xcb_window_t game = user.openGame(kGame, kGreen);
  ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
  deliverFor(0.2);  // the window manager draws the frame of the game
  system().setScene(adopt(game).handle, white({640, 400}));
  deliver();
  const Repetition drawing(server.display(),
                           [game](XClient& client) { InferiorsPainter(client, game).paint(); });
  const auto isWhite = [&] { return user.isViewable(game) && user.picture(game).isAll(kWhite); };
  manager.kill();
  EXPECT_TRUE(waitFor(isWhite));
  startManager(Manager::Metacity);
  deliverFor(0.3);
  EXPECT_TRUE(waitFor(isWhite));
  manager.end();
  deliverFor(0.3);
  EXPECT_TRUE(waitFor(isWhite));
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11CoverAndManagers, IsReportedWhileTheServerDoesNotMapIt) {
  const xcb_window_t game = user.openGame(kGame, kGreen);
  deliver();
  const WindowHandle handle = adopt(game).handle;
  deliver();  // before the grab, because a round trip would block during the grab
  xcb_grab_server(user.get());
  user.settle();
  system().setScene(handle, white({640, 400}));
  deliverFor(1.2);
  xcb_ungrab_server(user.get());
  user.settle();
  EXPECT_THAT(log, testing::ElementsAre("X11: the cover of window " + std::to_string(game) +
                                        " is not on the screen: the server has not mapped it"));
  deliver();
  EXPECT_EQ(system().nextDeadline(), kNever);
  EXPECT_EQ(log.size(), 1U);
}

TEST_F(X11CoverAndManagers, IsInsideAnOwnWindowOnly) {
  const WindowHandle own =
      open({.className = "Own", .title = "", .frame = {{100, 100}, {200, 100}}});
  const auto before = user.children(user.root());
  system().setScene(own, white({200, 100}));
  deliver();
  EXPECT_EQ(user.children(user.root()), before);
  EXPECT_EQ(user.children(idOf(own)).size(), 1U);
}

}  // namespace
}  // namespace vel::test
