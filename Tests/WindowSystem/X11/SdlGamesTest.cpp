// An SDL 2 game changes the size of its window while the launch screen covers the window. The tests
// run under real window managers.
#include <gmock/gmock.h>

#include <csignal>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr std::uint32_t kGameColor = 0x461E5A;  // the background of the game

/// A change that the game makes to its window on SIGUSR1. On the next SIGUSR1, the game undoes the
/// change.
struct Change {
  const char* name;      // part of the test's name
  const char* argument;  // the name of the change on the game's command line
  /// Returns true if the game's window has the area that the change requests.
  bool (*isDone)(PixelRect area, PixelRect screen);
};

bool isResized(PixelRect area, PixelRect /*screen*/) {
  return area.width == 800 && area.height == 600;
}
bool isMaximized(PixelRect area, PixelRect screen) {
  // The 80 and 110 pixels leave room for the window's frame and for panels.
  return area.width > screen.width - 80 && area.height > screen.height - 110;
}
bool isFullscreen(PixelRect area, PixelRect screen) { return area == screen; }

constexpr Change kResize{"SetWindowSize", "resize", isResized};
constexpr Change kFullscreen{"Fullscreen", "fullscreen", isFullscreen};
constexpr Change kFullscreenDesktop{"FullscreenDesktop", "desktop", isFullscreen};
constexpr Change kMaximize{"MaximizeWindow", "maximise", isMaximized};

struct SdlCase {
  Manager manager;
  Change change;
  /// "resizable", or "fixed" if the user cannot resize the game's window.
  const char* kind;

  [[nodiscard]] std::string name() const {
    return std::string(change.name) +
           (kind == std::string_view("fixed") ? "OfANonResizableWindow" : "") + "Under" +
           nameOf(manager);
  }
  friend void PrintTo(const SdlCase& sdlCase, std::ostream* out) { *out << sdlCase.name(); }
};

class X11SdlGames : public X11Test, public testing::WithParamInterface<SdlCase> {
 protected:
  X11SdlGames() : X11Test(GetParam().manager) {}

  void SetUp() override {
    program = server.start({SDL_GAME, GetParam().change.argument, GetParam().kind});
    ASSERT_TRUE(eventually([this] {
      game = client.findWindow("hosts-sdl2");  // the title of the game's window
      return game != 0 && client.isViewable(game) &&
             client.screenPicture(game).colors().contains(kGameColor);
    }));
    adoptedWindow = adopt(game);
  }
  bool becomesWhite() {
    return waitFor([this] { return client.screenPicture(game).isAll(kWhite); });
  }
  [[nodiscard]] bool isChanged() const {
    return GetParam().change.isDone(client.areaOnScreen(game), client.screenArea());
  }

  Process program;
  xcb_window_t game = 0;
  AdoptedWindow adoptedWindow;
};

TEST_P(X11SdlGames, GetTheRequestedSizeWhileCoveredAndKeepItAfterwards) {
  const PixelRect areaBefore = client.areaOnScreen(game);
  system().setScene(adoptedWindow.handle, whiteScene({1280, 960}));  // the size of the screen
  system().setStyleMask(adoptedWindow.handle, NSWindowStyleMaskTitled);
  // After the style mask has changed, the back end reports the controls that the window manager
  // still offers. The report needs a window manager that publishes the allowed actions.
  ASSERT_TRUE(waitFor([this] {
    return reports.count("remaining controls") > 0 ||
           !featuresOf(GetParam().manager).publishesAllowedActions;
  }));
  EXPECT_TRUE(becomesWhite());
  program.signal(SIGUSR1);
  EXPECT_TRUE(waitFor([this] { return isChanged(); }));
  EXPECT_TRUE(becomesWhite());
  system().setScene(adoptedWindow.handle, {});
  system().setStyleMask(adoptedWindow.handle, adoptedWindow.styleMask);
  // The picture of the game has several colours.
  EXPECT_TRUE(waitFor([this] { return client.screenPicture(game).colors().size() > 1; }));
  deliverFor(0.3);  // time for the window manager to process the restored hints
  EXPECT_TRUE(isChanged());
  program.signal(SIGUSR1);
  EXPECT_TRUE(waitFor([&] {
    const PixelRect area = client.areaOnScreen(game);
    return area.width == areaBefore.width && area.height == areaBefore.height;
  }));
}

std::vector<SdlCase> allCases() {
  std::vector<SdlCase> cases;
  for (const Manager manager : {Manager::Metacity, Manager::Openbox}) {
    for (const Change& change : {kResize, kFullscreen, kFullscreenDesktop}) {
      cases.push_back({manager, change, "resizable"});
      cases.push_back({manager, change, "fixed"});
    }
    cases.push_back({manager, kMaximize, "resizable"});
  }
  for (const Manager manager : {Manager::Xfwm4, Manager::IceWM, Manager::Marco}) {
    cases.push_back({manager, kFullscreenDesktop, "resizable"});
    cases.push_back({manager, kMaximize, "resizable"});
  }
  for (const Manager compositor : withXwayland({})) {
    cases.push_back({compositor, kResize, "fixed"});
    cases.push_back({compositor, kFullscreenDesktop, "resizable"});
    if (featuresOf(compositor).maximizes) {
      cases.push_back({compositor, kMaximize, "resizable"});
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(X11, X11SdlGames, testing::ValuesIn(allCases()),
                         [](const testing::TestParamInfo<SdlCase>& testInfo) {
                           return testInfo.param.name();
                         });

}  // namespace
}  // namespace vel::test
