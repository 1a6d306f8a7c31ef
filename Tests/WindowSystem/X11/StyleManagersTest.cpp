// The launch screen covers a game's window under a real window manager. The tests check which
// controls the user can still use, and that the game can change its window.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;
// The bits of a style mask are title 1, close 2, miniaturise 4 and resize 8.
constexpr NSWindowStyleMask kAllControls = 15;
// How many seconds the tests wait for a window manager to react to the user's input.
constexpr double kReactionTime = 0.6;
// How many seconds a window manager needs to update a window and its frame.
constexpr double kSettlingTime = 0.2;

/// The distance of a title bar's button from the top right corner of the window's content.
struct ButtonOffset {
  int x;
  int y;
};

struct ManagerCase {
  Manager manager;
  /// The miniaturise, maximise and close buttons, in this order.
  std::array<ButtonOffset, 3> buttons = {};
  /// The controls that the user can still use while the window is covered.
  std::vector<std::string> controlsWhileCovered = {};
  /// The controls of the covered window that the back end reports as remaining. They can differ
  /// from `controlsWhileCovered`.
  NSWindowStyleMask remainingControls = 0;
  /// The height that the window loses when it leaves the fullscreen state. fluxbox then adds a
  /// resize handle without enlarging the frame.
  int lostHeight = 0;

  friend void PrintTo(const ManagerCase& managerCase, std::ostream* out) {
    *out << nameOf(managerCase.manager);
  }
};

class X11ControlsUnderManagers : public X11Test, public testing::WithParamInterface<ManagerCase> {
 protected:
  X11ControlsUnderManagers() : X11Test(GetParam().manager) {}

  void SetUp() override {
    game = client.openGameWindow(kGameFrame, kGreen);
    ASSERT_TRUE(waitFor([&] { return client.isViewable(game); }));
    deliverFor(kSettlingTime);  // the manager adds its frame
    handle = adopt(game).handle;
  }
  void cover() {
    system().setScene(handle, whiteScene({1280, 960}));
    system().setStyleMask(handle, NSWindowStyleMaskTitled);
    // If the window manager does not publish the allowed actions, the back end may send no report.
    EXPECT_TRUE(waitFor([&] {
      return reports.count("remaining controls") > 0 ||
             !featuresOf(GetParam().manager).publishesAllowedActions;
    }));
    deliverFor(kSettlingTime);  // the manager updates the buttons
  }
  void uncover(const std::optional<Property>& expectedMotifHints = std::nullopt) {
    system().setScene(handle, {});
    system().setStyleMask(handle, kAllControls);
    EXPECT_TRUE(
        waitFor([&] { return client.property(game, "_MOTIF_WM_HINTS") == expectedMotifHints; }));
    deliverFor(kSettlingTime);
  }
  /// Returns false if the condition does not become true within the reaction time.
  bool becomesTrue(const std::function<bool()>& condition) {
    const Nanoseconds limit = steadyNow() + nanosecondsFromSeconds(kReactionTime);
    while (!condition()) {
      if (steadyNow() >= limit) {
        return false;
      }
      deliverFor(0.01);
    }
    return true;
  }
  [[nodiscard]] bool hasSize(int width, int height) const {
    const PixelRect frame = client.areaOnScreen(game);
    return frame.width == width && frame.height == height;
  }
  [[nodiscard]] bool isMaximized() const {
    const PixelRect area = client.areaOnScreen(game);
    const PixelRect screen = client.screenArea();
    // The 80 and 110 pixels leave room for the window's frame and for panels.
    return area.width > screen.width - 80 && area.height > screen.height - 110;
  }
  [[nodiscard]] bool isIconic() const {
    const auto state = client.numbers(game, "WM_STATE");
    return !state.empty() && state.front() == 3;  // IconicState
  }
  bool becomesWhite() {
    return waitFor([&] { return client.screenPicture(game).isAll(kWhite); });
  }

  /// Tries each control with the mouse, and returns the names of the controls that work.
  std::vector<std::string> findWorkingControls() {
    std::vector<std::string> controls;
    // The drag must come before the clicks. If a click maximises the covered window, the back end
    // allows resizing until the cover is removed.
    if (isResizedByDrag()) {
      controls.emplace_back("resize");
    }
    for (const ButtonOffset offset : GetParam().buttons) {
      const std::string effect = effectOfClick(offset);
      if (!effect.empty()) {
        controls.push_back(effect);
      }
    }
    return controls;
  }
  /// Clicks a button of the title bar and undoes the effect of the click. Returns "miniaturise",
  /// "maximise" or "close", or an empty text if the click has no effect.
  std::string effectOfClick(ButtonOffset offset) {
    const PixelRect frame = client.areaOnScreen(game);
    std::string effect;
    client.takeEventTypes();
    client.click(frame.x + frame.width + offset.x, frame.y + offset.y);
    becomesTrue([&] {
      if (isIconic()) {
        effect = "miniaturise";
      } else if (isMaximized()) {
        effect = "maximise";
      } else if (std::ranges::count(client.takeEventTypes(), XCB_CLIENT_MESSAGE) > 0) {
        effect = "close";
      }
      return !effect.empty();
    });
    if (effect == "miniaturise") {
      EXPECT_TRUE(waitFor([&] { return !client.isViewable(game); }));
      deliverFor(kSettlingTime);  // xfwm4 ignores requests while it hides the window
      client.requestActivation(game);
      EXPECT_TRUE(waitFor([&] { return client.isViewable(game); }));
    } else if (effect == "maximise") {
      client.requestRemoveStates(game, kMaximizedVert, kMaximizedHorz);
      EXPECT_TRUE(waitFor([&] { return !isMaximized(); }));
      deliverFor(kSettlingTime);
      client.configure(game, frame);  // fluxbox does not restore the height
      EXPECT_TRUE(waitFor([&] { return hasSize(frame.width, frame.height); }));
    }
    // If xfwm4 has removed a button, the click can hit the shade button, which rolls up the window.
    client.requestRemoveStates(game, "_NET_WM_STATE_SHADED");
    deliverFor(kSettlingTime);
    return effect;
  }
  /// Drags the lower right corner of the frame, and then restores the size. Returns true if the
  /// drag has changed the size.
  bool isResizedByDrag() {
    const PixelRect areaBefore = client.areaOnScreen(game);
    const auto extents = client.numbers(game, "_NET_FRAME_EXTENTS");  // left, right, top, bottom
    // `inset` is the distance from the outer edges of the frame. The position of the resize handle
    // depends on the window manager.
    for (const int inset : {2, 5}) {
      const int right = areaBefore.x + areaBefore.width + static_cast<int>(extents.at(1)) - inset;
      const int bottom = areaBefore.y + areaBefore.height + static_cast<int>(extents.at(3)) - inset;
      client.movePointer(right, bottom);
      client.pressButton();
      for (int step = 10; step <= 40; step += 10) {
        client.movePointer(right + step, bottom + step);
        deliverFor(0.02);
      }
      client.releaseButton();
      const bool isResized =
          becomesTrue([&] { return !hasSize(areaBefore.width, areaBefore.height); });
      client.configure(game, areaBefore);
      EXPECT_TRUE(waitFor([&] { return hasSize(areaBefore.width, areaBefore.height); }));
      deliverFor(kSettlingTime);
      if (isResized) {
        return true;
      }
    }
    return false;
  }

  static constexpr std::string_view kFullscreen = "_NET_WM_STATE_FULLSCREEN";
  static constexpr std::string_view kMaximizedVert = "_NET_WM_STATE_MAXIMIZED_VERT";
  static constexpr std::string_view kMaximizedHorz = "_NET_WM_STATE_MAXIMIZED_HORZ";
  xcb_window_t game = 0;
  WindowHandle handle = WindowHandle::None;
};

TEST_P(X11ControlsUnderManagers, AreRemovedAndRestored) {
  const auto sizeHintsBefore = client.property(game, "WM_NORMAL_HINTS");
  const std::vector<std::string> controlsBefore = findWorkingControls();
  EXPECT_THAT(controlsBefore, UnorderedElementsAre("close", "maximise", "miniaturise", "resize"));
  cover();
  EXPECT_TRUE(reports.contains(reportLine("remaining controls", handle) + " " +
                               std::to_string(GetParam().remainingControls)));
  EXPECT_THAT(findWorkingControls(), UnorderedElementsAreArray(GetParam().controlsWhileCovered));
  uncover();
  EXPECT_EQ(client.property(game, "WM_NORMAL_HINTS"), sizeHintsBefore);
  EXPECT_THAT(findWorkingControls(), UnorderedElementsAreArray(controlsBefore));
}

// SDL 2 writes a _MOTIF_WM_HINTS property with decorations but without functions.
TEST_P(X11ControlsUnderManagers, OfAGameThatSetsOnlyDecorationsAreRestored) {
  constexpr std::array<std::uint32_t, 5> kAllDecorations{2, 0, 1, 0, 0};
  const Property motifHints = Property::ofNumbers(client.atom("_MOTIF_WM_HINTS"), kAllDecorations);
  client.setProperty(game, "_MOTIF_WM_HINTS", motifHints);
  deliverFor(kSettlingTime);
  const std::vector<std::string> controlsBefore = findWorkingControls();
  EXPECT_THAT(controlsBefore, UnorderedElementsAre("close", "maximise", "miniaturise", "resize"));
  cover();
  uncover(motifHints);
  EXPECT_THAT(findWorkingControls(), UnorderedElementsAreArray(controlsBefore));
}

class X11GamesUnderManagers : public X11ControlsUnderManagers {};

TEST_P(X11GamesUnderManagers, ChangeTheSizeOfTheirCoveredWindow) {
  cover();
  PixelRect frame = client.areaOnScreen(game);
  frame.width = 800;
  frame.height = 500;
  client.configure(game, frame);
  EXPECT_TRUE(waitFor([&] { return hasSize(800, 500); }));
  EXPECT_TRUE(becomesWhite());
  uncover();
  EXPECT_TRUE(hasSize(800, 500));
}

TEST_P(X11GamesUnderManagers, MaximiseTheirCoveredWindow) {
  const ManagerFeatures features = featuresOf(GetParam().manager);
  if (!features.maximizes) {
    GTEST_SKIP() << "the compositor does not maximise windows of X clients";
  }
  cover();
  client.requestAddStates(game, kMaximizedVert, kMaximizedHorz);
  EXPECT_TRUE(waitFor([&] { return isMaximized(); }));
  EXPECT_TRUE(becomesWhite());
  // The back end does not remove the resize control of a maximised window.
  const NSWindowStyleMask remainingControls =
      GetParam().remainingControls | NSWindowStyleMaskResizable;
  EXPECT_TRUE(waitFor([&] {
    return !features.publishesAllowedActions ||
           reports.contains(reportLine("remaining controls", handle) + " " +
                            std::to_string(remainingControls));
  }));
  uncover();
  EXPECT_TRUE(isMaximized());
}

TEST_P(X11GamesUnderManagers, EnterAndLeaveFullscreenWhileCovered) {
  cover();
  PixelRect areaAfterFullscreen = client.areaOnScreen(game);
  areaAfterFullscreen.height -= GetParam().lostHeight;
  client.requestAddStates(game, kFullscreen);
  EXPECT_TRUE(waitFor([&] { return client.areaOnScreen(game) == client.screenArea(); }));
  EXPECT_TRUE(becomesWhite());
  // For a fullscreen window, the back end writes hints that allow resizing.
  deliverFor(kSettlingTime);  // the manager processes the hints
  client.requestRemoveStates(game, kFullscreen);
  EXPECT_TRUE(waitFor([&] { return client.areaOnScreen(game) == areaAfterFullscreen; }));
  // sway ignores the next fullscreen request until the screen shows the smaller window.
  EXPECT_TRUE(waitFor([&] { return client.screenPicture({0, 0, 1, 1}).at(0, 0) != kWhite; }));
  deliverFor(kSettlingTime);
  client.requestAddStates(game, kFullscreen);
  EXPECT_TRUE(waitFor([&] { return client.areaOnScreen(game) == client.screenArea(); }));
  uncover();
  EXPECT_EQ(client.areaOnScreen(game), client.screenArea());
}

const std::vector<ManagerCase>& managerCases() {
  static const std::vector<ManagerCase> cases{
      {.manager = Manager::Metacity,
       .buttons = {{{-86, -19}, {-52, -19}, {-18, -19}}},
       .controlsWhileCovered = {"resize"},
       .remainingControls = 8},
      {.manager = Manager::Openbox,
       .buttons = {{{-42, -10}, {-26, -10}, {-10, -10}}},
       .controlsWhileCovered = {"close", "miniaturise"},
       .remainingControls = 6},
      {.manager = Manager::Xfwm4,
       .buttons = {{{-57, -14}, {-34, -14}, {-11, -14}}},
       .controlsWhileCovered = {},
       .remainingControls = 2},
      {.manager = Manager::IceWM,
       .buttons = {{{-58, -9}, {-38, -9}, {-12, -9}}},
       .controlsWhileCovered = {},
       .remainingControls = 0},
      {.manager = Manager::Marco,
       .buttons = {{{-49, -12}, {-30, -12}, {-11, -12}}},
       .controlsWhileCovered = {"resize"},
       .remainingControls = 8},
      {.manager = Manager::Fluxbox,
       .buttons = {{{-45, -10}, {-27, -10}, {-10, -10}}},
       .controlsWhileCovered = {"close", "maximise", "miniaturise"},
       .remainingControls = 6,
       .lostHeight = 3}};
  return cases;
}

std::vector<ManagerCase> managerCasesWithXwayland() {
  std::vector<ManagerCase> cases = managerCases();
  for (const Manager compositor : withXwayland({})) {
    cases.push_back({.manager = compositor});
  }
  return cases;
}

std::string nameOfCase(const testing::TestParamInfo<ManagerCase>& testInfo) {
  return nameOf(testInfo.param.manager);
}

INSTANTIATE_TEST_SUITE_P(X11, X11ControlsUnderManagers, testing::ValuesIn(managerCases()),
                         nameOfCase);
INSTANTIATE_TEST_SUITE_P(X11, X11GamesUnderManagers, testing::ValuesIn(managerCasesWithXwayland()),
                         nameOfCase);

}  // namespace
}  // namespace vel::test
