// Tests the style mask of an adopted window. The game owns the window and writes the window's
// hints. The back end overrides `_MOTIF_WM_HINTS` to remove controls, and later restores the game's
// value. It reports which of the removed controls the window manager still offers.
#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using testing::UnorderedElementsAre;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
// The bits of a style mask are title 1, close 2, miniaturise 4 and resize 8.
constexpr NSWindowStyleMask kAllControls = 15;
constexpr std::string_view kMotifHints = "_MOTIF_WM_HINTS";
constexpr std::string_view kNormalHints = "WM_NORMAL_HINTS";

class X11Style : public X11Test {
 protected:
  xcb_window_t game = client.openGameWindow(kGameFrame, 0);

  /// Returns a `_MOTIF_WM_HINTS` property. Its fields are:
  /// - flags, which name the valid fields: functions 1, decorations 2, input mode 4, status 8
  /// - functions: resize 2, move 4, minimise 8, maximise 16, close 32. With bit 1, the field lists
  ///   the functions that the window does not have.
  /// - decorations: border 2, resize handles 4, title 8, menu 16, minimise 32, maximise 64
  /// - input mode
  /// - status
  Property motifHints(std::vector<std::uint32_t> fields) {
    return Property::ofNumbers(client.atom(kMotifHints), fields);
  }
};

TEST_F(X11Style, AdoptionDoesNotChangeTheHints) {
  const auto normalHints = client.property(game, kNormalHints);
  adopt(game);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), std::nullopt);
  EXPECT_EQ(client.property(game, kNormalHints), normalHints);
}

TEST_F(X11Style, RemovesTheControlsOneByOne) {
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, kAllControls & ~NSWindowStyleMaskResizable);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 44, 58, 0, 0}));
  system().setStyleMask(handle, NSWindowStyleMaskTitled | NSWindowStyleMaskClosable);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 36, 26, 0, 0}));
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 4, 26, 0, 0}));
}

TEST_F(X11Style, NeverChangesTheSizeHintsOfTheGame) {
  const auto hintsBefore = client.property(game, kNormalHints);
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_EQ(client.property(game, kNormalHints), hintsBefore);
  client.configure(game, {0, 0, 800, 600});
  EXPECT_TRUE(waitFor([&] { return reports.count("frame") > 0; }));
  EXPECT_EQ(client.property(game, kNormalHints), hintsBefore);
}

TEST_F(X11Style, RestoresTheOwnersHintsToTheByte) {
  // `motifBefore` allows all functions except closing. CARDINAL is not the usual type.
  const Property motifBefore{.type = XCB_ATOM_CARDINAL,
                             .format = 32,
                             .bytes = motifHints({1 | 4, 1 | 32, 77, 2, 9}).bytes};
  // ICCCM defines 18 fields. Older programs write only 15.
  const std::vector<std::uint32_t> shortHints{64 | 256, 1, 2, 3, 4, 5, 6, 7, 8, 3, 5, 1, 2, 3, 4};
  const Property normalBefore = Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, shortHints);
  client.setProperty(game, kMotifHints, motifBefore);
  client.setProperty(game, kNormalHints, normalBefore);
  const AdoptedWindow adoptedWindow = adopt(game);
  EXPECT_EQ(adoptedWindow.styleMask, kAllControls & ~NSWindowStyleMaskClosable);
  system().setStyleMask(adoptedWindow.handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_NE(client.property(game, kMotifHints), motifBefore);
  EXPECT_EQ(client.property(game, kNormalHints), normalBefore);
  system().setStyleMask(adoptedWindow.handle, adoptedWindow.styleMask);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), motifBefore);
  EXPECT_EQ(client.property(game, kNormalHints), normalBefore);
}

TEST_F(X11Style, RestoringDeletesHintsThatTheOverrideAdded) {
  client.setProperty(game, kNormalHints, std::nullopt);
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_NE(client.property(game, kMotifHints), std::nullopt);
  system().setStyleMask(handle, kAllControls);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), std::nullopt);
  EXPECT_EQ(client.property(game, kNormalHints), std::nullopt);
}

TEST_F(X11Style, RestoresHintsIfTheMaskHasEveryBit) {
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  system().setStyleMask(handle, ~NSWindowStyleMask{0});
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), std::nullopt);
}

TEST_F(X11Style, RestoresHintsThatTheGameWroteDuringTheOverride) {
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  const Property ownersHints = motifHints({2, 0, 2 | 8, 0, 0});
  client.setProperty(game, kMotifHints, ownersHints);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 4, 10, 0, 0}));
  system().setStyleMask(handle, kAllControls);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), ownersHints);
}

TEST_F(X11Style, KeepsHintsThatTheGameWroteJustBeforeTheOverrideEnded) {
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  const Property ownersHints = motifHints({2, 0, 2 | 8, 0, 0});
  client.setProperty(game, kMotifHints, ownersHints);
  // The back end has not yet read the `PropertyNotify` event.
  system().setStyleMask(handle, kAllControls);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), ownersHints);
}

TEST_F(X11Style, OverridesHintsThatTheGameWroteJustBeforeTheOverride) {
  const WindowHandle handle = adopt(game).handle;
  const Property ownersHints = motifHints({2, 0, 2 | 8, 0, 0});
  client.setProperty(game, kMotifHints, ownersHints);
  // The back end has not yet read the `PropertyNotify` event.
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 4, 10, 0, 0}));
  system().setStyleMask(handle, kAllControls);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), ownersHints);
}

TEST_F(X11Style, RestoresHintsThatTheBackEndHadNotReadBeforeTheOverrideEnded) {
  const WindowHandle handle = adopt(game).handle;
  const Property ownersHints = motifHints({2, 0, 2 | 8, 0, 0});
  client.setProperty(game, kMotifHints, ownersHints);
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  system().setStyleMask(handle, kAllControls);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), ownersHints);
}

TEST_F(X11Style, OverridesHintsThatTheGameWroteBetweenTwoChangesOfTheStyleMask) {
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, kAllControls & ~NSWindowStyleMaskClosable);
  client.waitForServer();
  const Property ownersHints = motifHints({2, 0, 2 | 8, 0, 0});
  client.setProperty(game, kMotifHints, ownersHints);
  client.waitForServer();
  // The back end has not yet read the `PropertyNotify` event.
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 4, 10, 0, 0}));
  system().setStyleMask(handle, kAllControls);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), ownersHints);
}

TEST_F(X11Style, DoesNotChangeWmProtocols) {
  const auto protocols = client.property(game, "WM_PROTOCOLS");
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_EQ(client.property(game, "WM_PROTOCOLS"), protocols);
}

TEST_F(X11Style, ReportsNoRemainingControlsWithoutAWindowManager) {
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  EXPECT_TRUE(waitFor([&] { return reports.count("remaining controls") > 0; }));
  EXPECT_TRUE(reports.contains(reportLine("remaining controls", handle) + " 0"));
}

class X11StyleWithManager : public X11Test {
 protected:
  xcb_window_t openManagedGame(Manager manager) {
    startManager(manager);
    const xcb_window_t game = client.openGameWindow(kGameFrame, 0);
    EXPECT_TRUE(waitFor([&] { return client.isViewable(game); }));
    return game;
  }
  /// Returns those of the close, minimise and resize actions that the window manager allows.
  std::vector<std::string> allowedActions(xcb_window_t game) {
    std::vector<std::string> actions = client.atomNames(game, "_NET_WM_ALLOWED_ACTIONS");
    std::erase_if(actions, [](const std::string& action) {
      return action != "_NET_WM_ACTION_CLOSE" && action != "_NET_WM_ACTION_MINIMIZE" &&
             action != "_NET_WM_ACTION_RESIZE";
    });
    return actions;
  }
};

TEST_F(X11StyleWithManager, MetacityStopsOfferingTheRemovedControlsExceptResizing) {
  const xcb_window_t game = openManagedGame(Manager::Metacity);
  const AdoptedWindow adoptedWindow = adopt(game);
  ASSERT_EQ(adoptedWindow.styleMask, kAllControls);
  EXPECT_THAT(allowedActions(game), SizeIs(3));
  system().setStyleMask(adoptedWindow.handle, NSWindowStyleMaskTitled);
  EXPECT_TRUE(waitFor([&] { return reports.count("remaining controls") > 0; }));
  EXPECT_TRUE(reports.contains(reportLine("remaining controls", adoptedWindow.handle) + " 8"));
  EXPECT_THAT(allowedActions(game), ElementsAre("_NET_WM_ACTION_RESIZE"));
  system().setStyleMask(adoptedWindow.handle, adoptedWindow.styleMask);
  EXPECT_TRUE(waitFor([&] { return allowedActions(game).size() == 3; }));
}

TEST_F(X11StyleWithManager, ReportsTheRemovedControlsThatOpenboxStillOffers) {
  const xcb_window_t game = openManagedGame(Manager::Openbox);
  const WindowHandle handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  EXPECT_TRUE(waitFor([&] { return reports.count("remaining controls") > 0; }));
  // Openbox no longer offers resizing, but still offers closing (2) and miniaturising (4).
  EXPECT_THAT(allowedActions(game),
              UnorderedElementsAre("_NET_WM_ACTION_CLOSE", "_NET_WM_ACTION_MINIMIZE"));
  EXPECT_TRUE(reports.contains(reportLine("remaining controls", handle) + " 6"));
}

}  // namespace
}  // namespace vel::test
