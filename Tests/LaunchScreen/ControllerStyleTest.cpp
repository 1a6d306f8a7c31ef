// The launch screen's controller overrides the style mask of a window, and restores it later. The
// bits of a mask are title 1, close 2, miniaturise 4 and resize 8. The event "style 7" means that
// the mask 7 was set.
#include <cstddef>

#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

constexpr NSWindowStyleMask kNoSavedStyle = 0xFFFFFFFFFFFFFFFF;

class ControllerStyleTest : public CoverTest {
 protected:
  ControllerStyleTest() { takeEvents(); }

  static void setModeAndWindow(
      const Strong<LaunchScreenViewController>& launchScreenController,
      const Strong<NSWindow>& window,
      LaunchScreenPresentationMode mode = LaunchScreenPresentationEmbedded) {
    launchScreenController->setPresentationMode(mode);
    launchScreenController->setAppWindow(window);
  }
  // `setupPresentation` sets the style mask in three steps. In its next call, `appWindow` becomes
  // null during step `step`.
  void clearAppWindowDuringStep(std::size_t step) {
    platformJournal.onNextStyleMask([this, step] {
      if (step == 1) {
        controller->setAppWindow(nullptr);
      } else {
        clearAppWindowDuringStep(step - 1);
      }
    });
  }
  void embed(const Strong<NSWindow>& hostWindow) {
    controller->presentForWindowWithPresentationMode(hostWindow, LaunchScreenPresentationEmbedded);
  }

  Strong<NSWindow> window = openPlayerWindow();
};

// Overriding the style

TEST_F(ControllerStyleTest, SetupClearsResizableMiniaturizableAndClosableInThreeSteps) {
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  EXPECT_EQ(takeEvents(), (Lines{"style 7", "style 3", "style 1"}));
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
}

TEST_F(ControllerStyleTest, SetupKeepsAllOtherStyleBits) {
  window->setStyleMask(0x7FFFFFFFFFFFFFFF);
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  EXPECT_EQ(window->styleMask(), 0x7FFFFFFFFFFFFFF1);
}

TEST_F(ControllerStyleTest, SetupSetsTheStyleThreeTimesEvenIfTheStyleStaysTheSame) {
  window->setStyleMask(NSWindowStyleMaskTitled);
  takeEvents();
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  EXPECT_EQ(takeEvents(), (Lines{"style 1", "style 1", "style 1"}));
}

TEST_F(ControllerStyleTest, EachStepReadsTheCurrentStyle) {
  setModeAndWindow(controller, window);
  platformJournal.onNextStyleMask([this] { window->setStyleMask(0x8000 | kFullStyle); });
  controller->setupPresentation();
  // The lambda function sets the style 0x800F (32783) during the first step.
  EXPECT_EQ(takeEvents(), (Lines{"style 7", "style 32783", "style 32779", "style 32777"}));
}

TEST_F(ControllerStyleTest, TheStyleIsSavedBeforeItIsOverridden) {
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  EXPECT_EQ(controller->appWindowStyleMask(), kFullStyle);
  EXPECT_EQ(controller->appWindow(), window);
}

TEST_F(ControllerStyleTest, OnlyTheFirstSetupSavesTheStyle) {
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  window->setStyleMask(kFullStyle & ~NSWindowStyleMaskResizable);
  controller->setupPresentation();
  EXPECT_EQ(controller->appWindowStyleMask(), kFullStyle);
}

TEST_F(ControllerStyleTest, SetupOverridesNoStyleIfAppWindowIsNull) {
  setModeAndWindow(controller, nullptr);
  controller->setupPresentation();
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(controller->appWindowStyleMask(), kNoSavedStyle);
}

TEST_F(ControllerStyleTest, SetupOverridesNoStyleInSheetModeOrUnknownModes) {
  for (const LaunchScreenPresentationMode mode : {2, 3, -1}) {
    setModeAndWindow(controller, window, mode);
    controller->setupPresentation();
  }
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(controller->appWindowStyleMask(), kNoSavedStyle);
}

TEST_F(ControllerStyleTest, SetupSetsNoStyleAfterAppWindowBecomesNull) {
  for (const std::size_t step : {std::size_t{1}, std::size_t{2}, std::size_t{3}}) {
    window->setStyleMask(kFullStyle);
    setModeAndWindow(controller, window);
    takeEvents();
    clearAppWindowDuringStep(step);
    controller->setupPresentation();
    EXPECT_EQ(takeEvents().size(), step);
    EXPECT_EQ(controller->appWindow(), nullptr);
  }
}

// The modal window

TEST_F(ControllerStyleTest, SetupConfiguresTheModalWindow) {
  const auto modal = openWindow("NSWindow");
  modal->contentView()->addSubview(controller->view());
  takeEvents();
  setModeAndWindow(controller, window, LaunchScreenPresentationModalWindow);
  controller->setupPresentation();
  EXPECT_EQ(takeEvents(), Lines{"style 0"});
  EXPECT_EQ(modal->styleMask(), NSWindowStyleMaskBorderless);
  EXPECT_TRUE(modal->isMovableByWindowBackground());
  EXPECT_FALSE(modal->canHide());
}

TEST_F(ControllerStyleTest, SetupForAModalWindowDoesNotChangeAppWindow) {
  setModeAndWindow(controller, window, LaunchScreenPresentationModalWindow);
  controller->setupPresentation();  // the view is in no window, so no window gets a new style
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_FALSE(window->isMovableByWindowBackground());
  EXPECT_TRUE(window->canHide());
  EXPECT_EQ(controller->appWindowStyleMask(), kNoSavedStyle);
}

// Restoring the style

TEST_F(ControllerStyleTest, RestoreSetsTheSavedStyleAndReleasesTheWindow) {
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  takeEvents();
  controller->restorePresentation();
  EXPECT_EQ(takeEvents(), Lines{"style 15"});
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(controller->appWindow(), nullptr);
}

TEST_F(ControllerStyleTest, RestoreKeepsTheSavedStyle) {
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  controller->restorePresentation();
  EXPECT_EQ(controller->appWindowStyleMask(), kFullStyle);
}

TEST_F(ControllerStyleTest, ASecondRestoreChangesNothing) {
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  takeEvents();
  controller->restorePresentation();
  controller->restorePresentation();
  EXPECT_EQ(takeEvents(), Lines{"style 15"});
}

TEST_F(ControllerStyleTest, RestoreWithoutASavedStyleReleasesTheWindowAndSetsNoStyle) {
  setModeAndWindow(controller, window);
  controller->restorePresentation();
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(controller->appWindow(), nullptr);
}

TEST_F(ControllerStyleTest, ASecondPresentationDoesNotChangeTheSavedStyle) {
  embed(window);
  controller->dismissViewController(controller);
  platform.run(1);
  window->setStyleMask(NSWindowStyleMaskTitled | NSWindowStyleMaskClosable);
  embed(window);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  controller->restorePresentation();
  EXPECT_EQ(window->styleMask(), kFullStyle);
}

TEST_F(ControllerStyleTest, OnlyEmbeddedModeRestoresAStyle) {
  setModeAndWindow(controller, window);
  controller->setupPresentation();
  takeEvents();
  for (const LaunchScreenPresentationMode mode : {1, 2, 3, -1}) {
    controller->setPresentationMode(mode);
    controller->restorePresentation();
  }
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(controller->appWindow(), window);
}

// The tracked controller

// A global variable of the library owns the tracked controller (EmbeddedCover.h). Its `appWindow`
// is the tracked window. `embed` makes `controller` the tracked controller.

TEST_F(ControllerStyleTest, RestoreByAControllerWithoutAWindowSetsTheStyleOfTheTrackedWindow) {
  embed(window);
  takeEvents();
  const auto otherController = LaunchScreenViewController::init();
  otherController->restorePresentation();
  EXPECT_EQ(takeEvents(), Lines{"style 15"});
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(controller->appWindow(), nullptr);
  EXPECT_TRUE(isTrackedCover(window->contentView(), controller));
  EXPECT_EQ(otherController->appWindowStyleMask(), kNoSavedStyle);
}

TEST_F(ControllerStyleTest, RestoreSetsAllStyleBitsIfTheTrackedControllerHasSavedNoStyle) {
  embed(window);
  controller->setAppWindowStyleMask(kNoSavedStyle);
  takeEvents();
  LaunchScreenViewController::init()->restorePresentation();
  EXPECT_EQ(takeEvents(), Lines{"style 18446744073709551615"});
  EXPECT_EQ(window->styleMask(), kNoSavedStyle);
  EXPECT_EQ(controller->appWindow(), nullptr);
}

TEST_F(ControllerStyleTest, RestoreDoesNothingIfTheTrackedControllerHasNoWindow) {
  embed(window);
  controller->restorePresentation();
  takeEvents();
  LaunchScreenViewController::init()->restorePresentation();
  controller->restorePresentation();
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_TRUE(isTrackedCover(window->contentView(), controller));
}

TEST_F(ControllerStyleTest, AControllerWithAWindowDoesNotRestoreTheStyleOfTheTrackedWindow) {
  embed(window);
  const auto otherController = LaunchScreenViewController::init();
  const auto otherWindow = openWindow("PlayerWindow");
  setModeAndWindow(otherController, otherWindow);
  otherController->setupPresentation();
  otherController->restorePresentation();
  EXPECT_EQ(otherWindow->styleMask(), kFullStyle);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  EXPECT_EQ(controller->appWindow(), window);
}

TEST_F(ControllerStyleTest, AControllerInModalWindowModeDoesNotRestoreTheStyleOfTheTrackedWindow) {
  embed(window);
  takeEvents();
  const auto otherController = LaunchScreenViewController::init();
  otherController->setPresentationMode(LaunchScreenPresentationModalWindow);
  otherController->restorePresentation();
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(controller->appWindow(), window);
}

}  // namespace
}  // namespace vel::test
