// A cover hides the window of a host. The host is another program: here a game that does unusual
// things to its own window. The cover has child windows inside the host's window, and an overlay: a
// window directly above the host's window. The host can draw over the child windows, but not over
// the overlay. While another window is modal, a shield (an invisible child window) takes the clicks
// on the host's window.
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

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;
constexpr std::uint32_t kRed = 0xC02020;
constexpr PixelRect kAreaInsideGame{300, 250, 400, 200};
constexpr int kPictureCount = 40;

/// Fills a window and all windows inside it: draws with the X11 mode IncludeInferiors.
class InferiorsPainter {
 public:
  InferiorsPainter(XClient& client, xcb_window_t window)
      : client_(client), window_(window), context_(xcb_generate_id(client.connection())) {
    const std::array<std::uint32_t, 2> values{kRed, XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS};
    xcb_create_gc(client_.connection(), context_, window_,
                  XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE, values.data());
  }
  void paint() {
    constexpr xcb_rectangle_t kWholeWindow{0, 0, 2000, 2000};
    xcb_poly_fill_rectangle(client_.connection(), window_, context_, 1, &kWholeWindow);
    client_.waitForServer();
  }

 private:
  XClient& client_;
  xcb_window_t window_;
  xcb_gcontext_t context_;
};

/// Repeats an action in a thread with its own connection to the X server. The destructor ends the
/// thread.
class Repetition {
 public:
  Repetition(const std::string& display, std::function<void(XClient&)> action)
      : client_(display), thread_([this, action = std::move(action)] {
          while (!isEnded_) {
            action(client_);
            client_.waitForServer();
            waitForInput(-1, steadyNow() + kNanosecondsPerSecond / 500);  // sleeps for 2 ms
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
    game = client.openGameWindow(kGameFrame, kGreen);
    ASSERT_TRUE(waitFor(
        [this] { return client.isViewable(game) && client.screenPicture(game).isAll(kGreen); }));
    deliverFor(0.2);  // the window manager adds its frame
    handle = adopt(game).handle;
  }
  void cover() {
    const PixelRect frame = client.areaOnScreen(game);
    system().setScene(
        handle, whiteScene({static_cast<double>(frame.width), static_cast<double>(frame.height)}));
    deliver();
    ASSERT_TRUE(showsOnly(kWhite, game));
  }
  bool isWhite() { return showsOnly(kWhite, game); }
  int countPicturesThatAreNotWhite() {
    int count = 0;
    // Capturing the screen of a compositor takes longer.
    const int pictureCount = compositor == nullptr ? kPictureCount : kPictureCount / 4;
    for (int i = 0; i < pictureCount; ++i) {
      deliverFor(0.003);
      count += client.screenPicture(game).isAll(kWhite) ? 0 : 1;
    }
    return count;
  }
  bool gameGetsClicks() {
    const PixelRect frame = client.areaOnScreen(game);
    client.takeEventTypes();
    client.click(frame.x + 50, frame.y + 50);
    return std::ranges::count(client.takeEventTypes(), XCB_BUTTON_PRESS) > 0;
  }

  xcb_window_t game = 0;  // the host's window
  WindowHandle handle = WindowHandle::None;
};

TEST_P(X11CoverOfForeignHost, IsMappedInAHostThatRedirectsMapRequests) {
  client.selectEvents(game, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_BUTTON_PRESS);
  system().setScene(handle, whiteSceneWithSpinner({640, 400}));
  deliver();
  EXPECT_TRUE(waitFor([this] { return client.screenPicture(game).at(5, 5) == kWhite; }));
  ASSERT_FALSE(client.children(game).empty());
  for (const xcb_window_t child : client.children(game)) {
    EXPECT_TRUE(client.isViewable(child));
  }
  EXPECT_FALSE(gameGetsClicks());
}

TEST_P(X11CoverOfForeignHost, TheShieldIsMappedInAHostThatRedirectsMapRequests) {
  client.selectEvents(game, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_BUTTON_PRESS);
  const WindowHandle modal =
      openOwnWindow({.className = "Modal", .title = "modal", .frame = {{20, 20}, {100, 100}}});
  system().setModalWindow(modal);
  deliver();
  EXPECT_FALSE(gameGetsClicks());
}

// If the cover's child window were mapped first, the host could visibly draw over it before the
// overlay is mapped.
TEST_P(X11CoverOfForeignHost, MapsTheOverlayBeforeTheChildWindow) {
  const auto tree = x11::XcbPointer<xcb_query_tree_reply_t>(xcb_query_tree_reply(
      client.connection(), xcb_query_tree(client.connection(), game), nullptr));
  client.selectEvents(tree->parent, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  client.selectEvents(game, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  client.takeEventTypes();
  system().setScene(handle, whiteSceneWithSpinner({640, 400}));
  deliver();
  std::vector<xcb_window_t> parentsOfMappedWindows;
  while (const x11::Event event{xcb_poll_for_event(client.connection())}) {
    if (x11::typeOf(*event) == XCB_MAP_NOTIFY) {
      parentsOfMappedWindows.push_back(x11::eventAs<xcb_map_notify_event_t>(*event).event);
    }
  }
  EXPECT_THAT(parentsOfMappedWindows, testing::ElementsAre(tree->parent, game));
}

TEST_P(X11CoverOfForeignHost, HidesWhatTheHostDrawsOverTheChildWindows) {
  cover();
  InferiorsPainter painter(client, game);
  painter.paint();
  EXPECT_TRUE(isWhite());
}

TEST_P(X11CoverOfForeignHost, HidesWhatTheHostRepeatedlyDrawsOverTheChildWindows) {
  cover();
  const Repetition drawing(server.display(),
                           [this](XClient& drawer) { InferiorsPainter(drawer, game).paint(); });
  EXPECT_EQ(countPicturesThatAreNotWhite(), 0);
}

TEST_P(X11CoverOfForeignHost, HidesWhatTheHostDrawsAfterItMovesAndResizesItsWindow) {
  cover();
  client.configure(game, {100, 80, 900, 700});
  deliverFor(0.3);
  ASSERT_TRUE(waitFor([this] { return client.areaOnScreen(game).width == 900; }));
  InferiorsPainter painter(client, game);
  painter.paint();
  EXPECT_TRUE(isWhite());
  client.configure(game, {300, 200, 300, 200});
  deliverFor(0.3);
  ASSERT_TRUE(waitFor([this] { return client.areaOnScreen(game).width == 300; }));
  painter.paint();
  EXPECT_TRUE(isWhite());
}

TEST_P(X11CoverOfForeignHost, HidesAnotherChildWindowThatTheHostRaises) {
  const xcb_window_t child = client.makeWindow({50, 50, 100, 100}, kRed, game);
  client.map(child);
  cover();
  const Repetition raising(server.display(), [child](XClient& raiser) { raiser.raise(child); });
  EXPECT_EQ(countPicturesThatAreNotWhite(), 0);
}

TEST_P(X11CoverOfForeignHost, HidesANewChildWindowBeforeTheBackEndHandlesEvents) {
  cover();
  const xcb_window_t child = client.makeWindow({50, 50, 100, 100}, kRed, game);
  client.map(child);
  EXPECT_TRUE(isWhite());
}

TEST_P(X11CoverOfForeignHost, IsMappedAgainAfterTheHostUnmapsAllChildWindows) {
  client.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS);
  cover();
  xcb_unmap_subwindows(client.connection(), game);
  deliver();
  EXPECT_TRUE(isWhite());
  EXPECT_FALSE(gameGetsClicks());
  EXPECT_TRUE(client.isViewable(client.children(game).back()));
}

TEST_P(X11CoverOfForeignHost, IsRecreatedAfterTheHostDestroysAllChildWindows) {
  client.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS);
  cover();
  xcb_destroy_subwindows(client.connection(), game);
  deliver();
  EXPECT_TRUE(isWhite());
  EXPECT_FALSE(gameGetsClicks());
  ASSERT_FALSE(client.children(game).empty());
  system().setScene(handle, {});
  deliver();
  EXPECT_TRUE(client.children(game).empty());
  EXPECT_TRUE(showsOnly(kGreen, game));
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, TheShieldIsRestoredAfterTheHostUnmapsOrDestroysAllChildWindows) {
  client.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS);
  const WindowHandle modal =
      openOwnWindow({.className = "Modal", .title = "modal", .frame = {{20, 20}, {100, 100}}});
  system().setModalWindow(modal);
  deliver();
  xcb_unmap_subwindows(client.connection(), game);
  deliver();
  EXPECT_FALSE(gameGetsClicks());
  xcb_destroy_subwindows(client.connection(), game);
  deliver();
  EXPECT_FALSE(gameGetsClicks());
  system().setModalWindow(WindowHandle::None);
  deliver();
  EXPECT_TRUE(client.children(game).empty());
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, IsWhiteAgainAfterTheHostUnmapsAndMapsItsWindow) {
  cover();
  const Repetition drawing(server.display(),
                           [this](XClient& drawer) { InferiorsPainter(drawer, game).paint(); });
  for (int i = 0; i < 3; ++i) {
    client.unmap(game);
    EXPECT_TRUE(waitFor([this] { return !client.isViewable(game); }));
    deliverFor(0.1);
    EXPECT_TRUE(waitFor(
        [this] { return client.screenPicture(kAreaInsideGame).colors().count(kWhite) == 0; }));
    client.map(game);
    EXPECT_TRUE(waitFor([this] { return client.isViewable(game); }));
    deliverFor(0.1);
    EXPECT_TRUE(isWhite());
    EXPECT_EQ(countPicturesThatAreNotWhite(), 0);
  }
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, FollowsTheHostsWindowIntoAnotherWindowAndBack) {
  if (GetParam() != Manager::None) {
    GTEST_SKIP() << "a window manager takes the window back";
  }
  cover();
  const xcb_window_t otherWindow = client.openGameWindow({50, 50, 1000, 800}, kGreen);
  InferiorsPainter painter(client, game);
  xcb_reparent_window(client.connection(), game, otherWindow, 30, 40);
  client.waitForServer();
  client.map(game);
  // The two children are the game's window and the overlay.
  EXPECT_TRUE(
      waitFor([&] { return client.isViewable(game) && client.children(otherWindow).size() == 2; }));
  painter.paint();
  EXPECT_TRUE(isWhite());
  // The rest of the other window stays visible.
  EXPECT_EQ(client.screenPicture(otherWindow).at(10, 10), kGreen);
  EXPECT_EQ(client.screenPicture(otherWindow).at(900, 600), kGreen);
  xcb_reparent_window(client.connection(), game, client.root(), 100, 100);
  client.waitForServer();
  client.map(game);
  EXPECT_TRUE(
      waitFor([&] { return client.isViewable(game) && client.children(otherWindow).empty(); }));
  deliverFor(0.2);
  painter.paint();
  EXPECT_TRUE(isWhite());
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, IsDestroyedWithTheHostsWindow) {
  const std::size_t windowCountBefore = client.children(client.root()).size();
  cover();
  client.destroy(game);
  EXPECT_TRUE(waitFor([this] { return reports.contains(reportLine("destroyed", handle)); }));
  EXPECT_TRUE(
      waitFor([&] { return client.screenPicture(kAreaInsideGame).colors().count(kWhite) == 0; }));
  EXPECT_LE(client.children(client.root()).size(), windowCountBefore);
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11CoverOfForeignHost, DoesNotHideWindowsAboveTheHostsWindow) {
  cover();
  const xcb_window_t upperWindow = client.openGameWindow({400, 250, 200, 100}, kGreen);
  client.raise(upperWindow);
  ASSERT_TRUE(waitFor([&] { return client.isViewable(upperWindow); }));
  deliverFor(0.2);
  EXPECT_TRUE(showsOnly(kGreen, upperWindow));
}

TEST_P(X11CoverOfForeignHost, HidesExactlyTheAreaOfTheHostsWindow) {
  const Picture pictureBefore = client.screenPicture(client.screenArea());
  const PixelRect frame = client.areaOnScreen(game);
  cover();
  EXPECT_TRUE(isWhite());
  const Picture pictureWhileCovered = client.screenPicture(client.screenArea());
  int changedPixelsOutside = 0;
  for (int y = 0; y < pictureBefore.height; ++y) {
    for (int x = 0; x < pictureBefore.width; ++x) {
      const bool isInside =
          x >= frame.x && x < frame.x + frame.width && y >= frame.y && y < frame.y + frame.height;
      changedPixelsOutside +=
          !isInside && pictureBefore.at(x, y) != pictureWhileCovered.at(x, y) ? 1 : 0;
    }
  }
  EXPECT_EQ(changedPixelsOutside, 0);
}

INSTANTIATE_TEST_SUITE_P(Managers, X11CoverOfForeignHost,
                         testing::ValuesIn(withXwayland({Manager::None, Manager::Metacity,
                                                         Manager::Openbox})),
                         nameOfManager);

class X11CoverAndManagers : public X11Test {};

TEST_F(X11CoverAndManagers, TheCoverIsWhiteAgainAfterTheManagerIsKilledOrReplaced) {
  startManager(Manager::Openbox);
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  ASSERT_TRUE(waitFor([&] { return client.isViewable(game); }));
  deliverFor(0.2);  // the window manager adds its frame
  system().setScene(adopt(game).handle, whiteScene({640, 400}));
  deliver();
  const Repetition drawing(server.display(),
                           [game](XClient& drawer) { InferiorsPainter(drawer, game).paint(); });
  const auto isWhite = [&] {
    return client.isViewable(game) && client.screenPicture(game).isAll(kWhite);
  };
  managerProcess.kill();
  EXPECT_TRUE(waitFor(isWhite));
  startManager(Manager::Metacity);
  deliverFor(0.3);
  EXPECT_TRUE(waitFor(isWhite));
  managerProcess.end();
  deliverFor(0.3);
  EXPECT_TRUE(waitFor(isWhite));
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(X11CoverAndManagers, ACoverThatTheServerDoesNotMapIsLoggedAsMissing) {
  const xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  deliver();
  const WindowHandle handle = adopt(game).handle;
  // Handles the events of the adoption now: this needs round trips, which the grab below would
  // block.
  deliver();
  xcb_grab_server(client.connection());
  client.waitForServer();
  system().setScene(handle, whiteScene({640, 400}));
  deliverFor(1.2);
  xcb_ungrab_server(client.connection());
  client.waitForServer();
  EXPECT_THAT(log, testing::ElementsAre("X11: the cover of window " + std::to_string(game) +
                                        " is not on the screen: the server has not mapped it"));
  deliver();
  EXPECT_EQ(system().nextDeadline(), kNever);
  EXPECT_EQ(log.size(), 1U);
}

TEST_F(X11CoverAndManagers, ACoverInAWindowOfTheBackEndHasNoOverlay) {
  const WindowHandle ownWindow =
      openOwnWindow({.className = "Own", .title = "", .frame = {{100, 100}, {200, 100}}});
  const auto windowsBefore = client.children(client.root());
  system().setScene(ownWindow, whiteScene({200, 100}));
  deliver();
  EXPECT_EQ(client.children(client.root()), windowsBefore);
  EXPECT_EQ(client.children(idOf(ownWindow)).size(), 1U);
}

}  // namespace
}  // namespace vel::test
