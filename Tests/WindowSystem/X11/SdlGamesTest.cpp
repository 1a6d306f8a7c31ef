// An SDL 2 game changes the size of its covered window under real window managers.
#include <gmock/gmock.h>

#include <csignal>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kScreen{0, 0, 1280, 960};

/// A change that the game makes.
struct Change {
  const char* name;
  const char* argument;
  /// Returns true if the game's window has the area that the change requests.
  bool (*isDone)(PixelRect area);
};

bool isResized(PixelRect area) { return area.width == 800 && area.height == 600; }
bool isMaximized(PixelRect area) { return area.width > 1200 && area.height > 850; }
bool isFullscreen(PixelRect area) { return area == kScreen; }

constexpr Change kResize{"SetWindowSize", "resize", isResized};
constexpr Change kFullscreen{"Fullscreen", "fullscreen", isFullscreen};
constexpr Change kDesktop{"FullscreenDesktop", "desktop", isFullscreen};
constexpr Change kMaximize{"MaximizeWindow", "maximise", isMaximized};

struct SdlCase {
  Manager manager;
  const char* managerName;
  Change change;
  /// "resizable" or "fixed": the kind of the game's window.
  const char* kind;

  [[nodiscard]] std::string name() const {
    return std::string(change.name) + (kind == std::string_view("fixed") ? "OfAFixedWindow" : "") +
           "Under" + managerName;
  }
  friend void PrintTo(const SdlCase& sdlCase, std::ostream* out) { *out << sdlCase.name(); }
};

class X11SdlGames : public X11Test, public testing::WithParamInterface<SdlCase> {
 protected:
  void SetUp() override {
    startManager(GetParam().manager);
    program = server.start({SDL_GAME, GetParam().change.argument, GetParam().kind});
    ASSERT_TRUE(eventually([this] {
      game = client.findWindow("hosts-sdl2");
      return game != 0 && client.isViewable(game) && !client.screenPicture(game).isAll(0);
    }));
    adopted = adopt(game);
  }
  bool becomesWhite() {
    return waitFor([this] { return client.screenPicture(game).isAll(kWhite); });
  }
  bool becomesChanged() {
    return waitFor([this] { return GetParam().change.isDone(client.areaOnScreen(game)); });
  }

  Process program;
  xcb_window_t game = 0;
  AdoptedWindow adopted;
};

TEST_P(X11SdlGames, GetTheRequestedSizeWhileCoveredAndKeepItAfterwards) {
  const PixelRect areaBefore = client.areaOnScreen(game);
  system().setScene(adopted.handle, whiteScene({1280, 960}));
  system().setStyleMask(adopted.handle, NSWindowStyleMaskTitled);
  ASSERT_TRUE(waitFor([this] { return reports.count("controls kept") > 0; }));
  EXPECT_TRUE(becomesWhite());
  program.signal(SIGUSR1);
  EXPECT_TRUE(becomesChanged());
  EXPECT_TRUE(becomesWhite());
  system().setScene(adopted.handle, {});
  system().setStyleMask(adopted.handle, adopted.styleMask);
  EXPECT_TRUE(waitFor([this] { return client.screenPicture(game).colors().size() > 1; }));
  deliverFor(0.3);  // the window manager processes the restored hints
  EXPECT_TRUE(GetParam().change.isDone(client.areaOnScreen(game)));
  // The game can undo the change.
  program.signal(SIGUSR1);
  EXPECT_TRUE(waitFor([&] {
    const PixelRect area = client.areaOnScreen(game);
    return area.width == areaBefore.width && area.height == areaBefore.height;
  }));
}

// Metacity and Openbox are tested with all changes, the other window managers only with `kDesktop`
// and `kMaximize`.
std::vector<SdlCase> allCases() {
  std::vector<SdlCase> cases;
  for (const auto& [manager, name] :
       {std::pair{Manager::Metacity, "Metacity"}, std::pair{Manager::Openbox, "Openbox"}}) {
    for (const Change& change : {kResize, kFullscreen, kDesktop}) {
      cases.push_back({manager, name, change, "resizable"});
      cases.push_back({manager, name, change, "fixed"});
    }
    cases.push_back({manager, name, kMaximize, "resizable"});
  }
  for (const auto& [manager, name] :
       {std::pair{Manager::Xfwm4, "Xfwm4"}, std::pair{Manager::IceWM, "IceWM"},
        std::pair{Manager::Marco, "Marco"}}) {
    cases.push_back({manager, name, kDesktop, "resizable"});
    cases.push_back({manager, name, kMaximize, "resizable"});
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(X11, X11SdlGames, testing::ValuesIn(allCases()),
                         [](const testing::TestParamInfo<SdlCase>& testInfo) {
                           return testInfo.param.name();
                         });

}  // namespace
}  // namespace vel::test
