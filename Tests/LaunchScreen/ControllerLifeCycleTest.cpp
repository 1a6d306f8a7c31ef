// What the launch screen's controller does in each life-cycle method. The fixture records events.
// The event "style 7" means that a window gets the style mask 7. The mask of a window with a title
// and all controls is 15. The controller's view is the cover. If the cover is embedded in a window,
// the controller removes the window's controls one by one: "style 7", "style 3", "style 1".
#include "Platform/AppKit/NSColor.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

constexpr CGColor kWhite{.red = 1, .green = 1, .blue = 1, .alpha = 1};

class ControllerLifeCycleTest : public CoverTest {
 protected:
  ControllerLifeCycleTest() { takeEvents(); }

  void present(const Strong<NSWindow>& hostWindow, LaunchScreenPresentationMode mode) {
    controller->presentForWindowWithPresentationMode(hostWindow, mode);
  }

  Strong<NSWindow> window = openPlayerWindowWithContentViewController();
};

// Presentation in each mode: the order of the events

TEST_F(ControllerLifeCycleTest, AnEmbeddedCoverOverridesTheStyleAfterTheViewHasAppeared) {
  addDelegate("first");
  addDelegate("second");
  present(window, LaunchScreenPresentationEmbedded);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present", "second: will present",
                                 "viewDidAppear", "style 7", "style 3", "style 1"}));
}

TEST_F(ControllerLifeCycleTest,
       AnEmbeddedCoverWithoutAParentControllerOverridesTheStyleAfterTheViewHasAppeared) {
  window = openPlayerWindow();
  takeEvents();
  addDelegate("first");
  present(window, LaunchScreenPresentationEmbedded);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present", "viewDidAppear",
                                 "style 7", "style 3", "style 1"}));
}

TEST_F(ControllerLifeCycleTest, AModalWindowGetsItsStyleBeforeItIsOnScreen) {
  addDelegate("first");
  present(window, LaunchScreenPresentationModalWindow);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present", "style 0",
                                 "window opened", "viewDidAppear"}));
  const auto modal = controller->view()->window();
  EXPECT_EQ(modal->styleMask(), NSWindowStyleMaskBorderless);
  EXPECT_TRUE(modal->isMovableByWindowBackground());
  EXPECT_FALSE(modal->canHide());
  EXPECT_EQ(window->styleMask(), kFullStyle);
}

TEST_F(ControllerLifeCycleTest, ASheetKeepsItsStyle) {
  addDelegate("first");
  present(window, LaunchScreenPresentationSheet);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present", "window opened",  //
                                 "viewDidAppear"}));
  const auto sheet = controller->view()->window();
  EXPECT_EQ(sheet->styleMask(), NSWindowStyleMaskTitled | NSWindowStyleMaskDocModalWindow);
  EXPECT_FALSE(sheet->isMovableByWindowBackground());
  EXPECT_TRUE(sheet->canHide());
}

// Direct calls of a life-cycle method

TEST_F(ControllerLifeCycleTest, TheDelegateReceivesTheController) {
  const auto firstDelegate = addDelegate("first");
  controller->viewWillAppear();
  EXPECT_EQ(firstDelegate->lastController.lock(), controller);
}

TEST_F(ControllerLifeCycleTest, WillAppearSetsTheStyleOnlyInModalWindowMode) {
  window->contentView()->addSubview(controller->view());
  controller->setAppWindow(window);
  // Embedded, sheet, and two values that are not modes.
  for (const LaunchScreenPresentationMode mode : {0, 2, 3, -1}) {
    controller->setPresentationMode(mode);
    takeEvents();
    controller->viewWillAppear();
    EXPECT_EQ(takeEvents(), Lines{"viewWillAppear"});
  }
  controller->setPresentationMode(LaunchScreenPresentationModalWindow);
  controller->viewWillAppear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "style 0"}));
}

TEST_F(ControllerLifeCycleTest, DidAppearOverridesTheStyleOnlyInEmbeddedMode) {
  window->contentView()->addSubview(controller->view());
  controller->setAppWindow(window);
  // Modal window, sheet, and two values that are not modes.
  for (const LaunchScreenPresentationMode mode : {1, 2, 3, -1}) {
    controller->setPresentationMode(mode);
    takeEvents();
    controller->viewDidAppear();
    EXPECT_EQ(takeEvents(), Lines{"viewDidAppear"});
  }
  controller->setPresentationMode(LaunchScreenPresentationEmbedded);
  controller->viewDidAppear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidAppear", "style 7", "style 3", "style 1"}));
}

TEST_F(ControllerLifeCycleTest, WillDisappearRestoresTheStyle) {
  present(window, LaunchScreenPresentationEmbedded);
  takeEvents();
  controller->viewWillDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15"}));
  EXPECT_EQ(controller->appWindow(), nullptr);
}

// Closing the window

TEST_F(ControllerLifeCycleTest, ClosingTheWindowOfAnEmbeddedCoverDismissesTheCover) {
  present(window, LaunchScreenPresentationEmbedded);
  addDelegate("first");
  takeEvents();
  window->close();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15", "window closed",
                                 "viewDidDisappear", "first: did dismiss"}));
}

// What the cover looks like

TEST_F(ControllerLifeCycleTest, TheViewIsLayerBackedAndWhiteBeforeTheDelegatesAreNotified) {
  bool wasNotified = false;
  addDelegate("first")->onNext(CoverCall::WillPresent, [&] {
    wasNotified = true;
    ASSERT_TRUE(controller->view()->wantsLayer());
    EXPECT_EQ(controller->view()->layer()->backgroundColor(), kWhite);
  });
  controller->viewWillAppear();
  EXPECT_TRUE(wasNotified);
}

TEST_F(ControllerLifeCycleTest, TheWindowShowsOneWhiteRectangle) {
  present(window, LaunchScreenPresentationEmbedded);
  const Scene expected{
      {.kind = SceneItem::Kind::Fill, .frame = CGRectMake(0, 0, 1280, 720), .color = kWhite}};
  EXPECT_EQ(platform.windowSystem().window(window->handle())->scene, expected);
}

TEST_F(ControllerLifeCycleTest, TheLifeCycleCreatesNoIndicator) {
  for (const LaunchScreenPresentationMode mode : {0, 1, 2}) {
    present(window, mode);
    EXPECT_EQ(controller->activityIndicator(), nullptr);
    EXPECT_TRUE(controller->view()->subviews().empty());
    controller->dismissViewController(controller);
    EXPECT_EQ(controller->activityIndicator(), nullptr);
    EXPECT_TRUE(controller->view()->subviews().empty());
    EXPECT_TRUE(controller->view()->constraints().empty());
  }
}

// A controller with an activity indicator

class IndicatorLifeCycleTest : public ControllerLifeCycleTest {
 protected:
  IndicatorLifeCycleTest() { controller->setActivityIndicator(indicator); }

  // Sets the system version and calls `viewWillAppear`. Returns the name of the indicator's
  // appearance, or "none".
  std::string_view appearanceOn(NSOperatingSystemVersion version) {
    NSProcessInfo::setOperatingSystemVersion(version);
    indicator->setAppearance(nullptr);
    controller->viewWillAppear();
    return indicator->appearance() != nullptr ? indicator->appearance()->name() : "none";
  }

  Strong<NSProgressIndicator> indicator = NSProgressIndicator::initWithFrame(CGRectZero);
};

TEST_F(IndicatorLifeCycleTest, AppearanceIsNotSetBeforeVersion10_14) {
  EXPECT_EQ(appearanceOn({10, 13, 6}), "none");
  EXPECT_EQ(appearanceOn({10, 13, 99}), "none");
  EXPECT_EQ(appearanceOn({9, 15, 0}), "none");
}

TEST_F(IndicatorLifeCycleTest, AppearanceIsAquaSinceVersion10_14) {
  EXPECT_EQ(appearanceOn({10, 14, 0}), "NSAppearanceNameAqua");
  EXPECT_EQ(appearanceOn({10, 14, 1}), "NSAppearanceNameAqua");
  EXPECT_EQ(appearanceOn({11, 0, 0}), "NSAppearanceNameAqua");
}

TEST_F(IndicatorLifeCycleTest, AppearanceIsSetBeforeTheDelegatesAreNotified) {
  bool wasNotified = false;
  addDelegate("first")->onNext(CoverCall::WillPresent, [&] {
    wasNotified = true;
    EXPECT_NE(indicator->appearance(), nullptr);
  });
  controller->viewWillAppear();
  EXPECT_TRUE(wasNotified);
}

TEST_F(IndicatorLifeCycleTest, ViewDidAppearStartsTheAnimation) {
  controller->viewWillAppear();
  EXPECT_FALSE(indicator->isAnimating());
  controller->viewDidAppear();
  EXPECT_TRUE(indicator->isAnimating());
}

TEST_F(IndicatorLifeCycleTest, TheAnimationStartsBeforeTheStyleIsOverridden) {
  platformJournal.onNextStyleMask([this] { EXPECT_TRUE(indicator->isAnimating()); });
  present(window, LaunchScreenPresentationEmbedded);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
}

TEST_F(IndicatorLifeCycleTest, TheAnimationContinuesAfterTheDismissal) {
  present(window, LaunchScreenPresentationEmbedded);
  controller->dismissViewController(controller);
  EXPECT_TRUE(indicator->isAnimating());
}

}  // namespace
}  // namespace vel::test
