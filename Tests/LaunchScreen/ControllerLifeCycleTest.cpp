// The cover's controller at the steps of its life on screen.
#include "Platform/AppKit/NSColor.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

constexpr CGColor kWhite{.red = 1, .green = 1, .blue = 1, .alpha = 1};

class ControllerLifeCycleTest : public CoverTest {
 protected:
  ControllerLifeCycleTest() { takeEvents(); }

  void present(const Strong<NSWindow>& over, LaunchScreenPresentationMode mode) {
    cover->presentForWindowWithPresentationMode(over, mode);
  }

  Strong<NSWindow> window = openPlayerWindowWithContentViewController();
};

// The order of a presentation, mode by mode

TEST_F(ControllerLifeCycleTest, EmbeddedTheWindowIsTakenOverAfterTheViewHasAppeared) {
  addDelegate("first");
  addDelegate("second");
  present(window, LaunchScreenPresentationEmbedded);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present", "second: will present",
                                 "viewDidAppear", "style 7", "style 3", "style 1"}));
}

TEST_F(ControllerLifeCycleTest, EmbeddedWithoutAParentTheOrderIsTheSame) {
  window = openPlayerWindow();
  takeEvents();
  addDelegate("first");
  present(window, LaunchScreenPresentationEmbedded);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present", "viewDidAppear",
                                 "style 7", "style 3", "style 1"}));
}

TEST_F(ControllerLifeCycleTest, AModalWindowIsPreparedBeforeItIsOnScreen) {
  addDelegate("first");
  present(window, LaunchScreenPresentationModalWindow);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present", "style 0",
                                 "window opened", "viewDidAppear"}));
  const auto modal = cover->view()->window();
  EXPECT_EQ(modal->styleMask(), NSWindowStyleMaskBorderless);
  EXPECT_TRUE(modal->isMovableByWindowBackground());
  EXPECT_FALSE(modal->canHide());
  EXPECT_EQ(window->styleMask(), kFullStyle);
}

TEST_F(ControllerLifeCycleTest, ASheetIsNotPreparedAtAll) {
  addDelegate("first");
  present(window, LaunchScreenPresentationSheet);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present", "window opened",  //
                                 "viewDidAppear"}));
  const auto sheet = cover->view()->window();
  EXPECT_EQ(sheet->styleMask(), NSWindowStyleMaskTitled | NSWindowStyleMaskDocModalWindow);
  EXPECT_FALSE(sheet->isMovableByWindowBackground());
  EXPECT_TRUE(sheet->canHide());
}

// Step by step

TEST_F(ControllerLifeCycleTest, ADelegateHearsOfThePresentationFromTheControllerItself) {
  const auto first = addDelegate("first");
  cover->viewWillAppear();
  EXPECT_EQ(first->lastController.lock(), cover);
}

TEST_F(ControllerLifeCycleTest, WillAppearPreparesInModalWindowModeOnly) {
  window->contentView()->addSubview(cover->view());
  cover->setAppWindow(window);
  for (const LaunchScreenPresentationMode mode : {0, 2, 3, -1}) {
    cover->setPresentationMode(mode);
    takeEvents();
    cover->viewWillAppear();
    EXPECT_EQ(takeEvents(), Lines{"viewWillAppear"});
  }
  cover->setPresentationMode(1);
  cover->viewWillAppear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "style 0"}));
}

TEST_F(ControllerLifeCycleTest, DidAppearPreparesInEmbeddedModeOnly) {
  window->contentView()->addSubview(cover->view());
  cover->setAppWindow(window);
  for (const LaunchScreenPresentationMode mode : {1, 2, 3, -1}) {
    cover->setPresentationMode(mode);
    takeEvents();
    cover->viewDidAppear();
    EXPECT_EQ(takeEvents(), Lines{"viewDidAppear"});
  }
  cover->setPresentationMode(0);
  cover->viewDidAppear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidAppear", "style 7", "style 3", "style 1"}));
}

TEST_F(ControllerLifeCycleTest, WillDisappearGivesTheStyleBack) {
  present(window, LaunchScreenPresentationEmbedded);
  takeEvents();
  cover->viewWillDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15"}));
  EXPECT_EQ(cover->appWindow(), nullptr);
}

TEST_F(ControllerLifeCycleTest, TheUserWhoClosesTheHostWindowEndsTheLaunchScreen) {
  present(window, LaunchScreenPresentationEmbedded);
  addDelegate("first");
  takeEvents();
  window->close();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15", "window closed",
                                 "viewDidDisappear", "first: did dismiss"}));
}

// What it looks like

TEST_F(ControllerLifeCycleTest, TheViewIsLayerBackedAndWhiteByTheTimeTheDelegatesHear) {
  bool heard = false;
  addDelegate("first")->onNext(CoverCall::WillPresent, [&] {
    heard = true;
    ASSERT_TRUE(cover->view()->wantsLayer());
    EXPECT_EQ(cover->view()->layer()->backgroundColor(), kWhite);
  });
  cover->viewWillAppear();
  EXPECT_TRUE(heard);
}

TEST_F(ControllerLifeCycleTest, TheWindowShowsOneWhiteRectangle) {
  present(window, LaunchScreenPresentationEmbedded);
  const Scene expected{
      {.kind = SceneItem::Kind::Fill, .frame = CGRectMake(0, 0, 1280, 720), .color = kWhite}};
  EXPECT_EQ(platform.windowSystem().window(window->handle())->scene, expected);
}

TEST_F(ControllerLifeCycleTest, WithoutAnIndicatorTheWholeLifeMakesNone) {
  for (const LaunchScreenPresentationMode mode : {0, 1, 2}) {
    present(window, mode);
    EXPECT_EQ(cover->activityIndicator(), nullptr);
    EXPECT_TRUE(cover->view()->subviews().empty());
    cover->dismissViewController(cover);
    EXPECT_EQ(cover->activityIndicator(), nullptr);
    EXPECT_TRUE(cover->view()->subviews().empty());
    EXPECT_TRUE(cover->view()->constraints().empty());
  }
}

// The indicator that an outside caller has given it

class IndicatorLifeCycleTest : public ControllerLifeCycleTest {
 protected:
  IndicatorLifeCycleTest() { cover->setActivityIndicator(indicator); }

  // The name of the appearance that the indicator has after appearing on such a system.
  std::string_view appearanceOn(NSOperatingSystemVersion version) {
    NSProcessInfo::setOperatingSystemVersion(version);
    indicator->setAppearance(nullptr);
    cover->viewWillAppear();
    return indicator->appearance() != nullptr ? indicator->appearance()->name() : "none";
  }

  Strong<NSProgressIndicator> indicator = NSProgressIndicator::initWithFrame(CGRectZero);
};

TEST_F(IndicatorLifeCycleTest, BeforeVersion10_14ItsAppearanceIsLeftAlone) {
  EXPECT_EQ(appearanceOn({10, 13, 6}), "none");
  EXPECT_EQ(appearanceOn({10, 13, 99}), "none");
  EXPECT_EQ(appearanceOn({9, 15, 0}), "none");
}

TEST_F(IndicatorLifeCycleTest, FromVersion10_14OnItsAppearanceIsAqua) {
  EXPECT_EQ(appearanceOn({10, 14, 0}), "NSAppearanceNameAqua");
  EXPECT_EQ(appearanceOn({10, 14, 1}), "NSAppearanceNameAqua");
  EXPECT_EQ(appearanceOn({11, 0, 0}), "NSAppearanceNameAqua");
}

TEST_F(IndicatorLifeCycleTest, ItsAppearanceIsSetByTheTimeTheDelegatesHear) {
  bool heard = false;
  addDelegate("first")->onNext(CoverCall::WillPresent, [&] {
    heard = true;
    EXPECT_NE(indicator->appearance(), nullptr);
  });
  cover->viewWillAppear();
  EXPECT_TRUE(heard);
}

TEST_F(IndicatorLifeCycleTest, ItIsAnimatedOnceTheViewHasAppeared) {
  cover->viewWillAppear();
  EXPECT_FALSE(indicator->isAnimating());
  cover->viewDidAppear();
  EXPECT_TRUE(indicator->isAnimating());
}

TEST_F(IndicatorLifeCycleTest, ItIsAnimatedBeforeTheWindowIsTakenOver) {
  platformJournal.onNextStyleMask([this] { EXPECT_TRUE(indicator->isAnimating()); });
  present(window, LaunchScreenPresentationEmbedded);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
}

TEST_F(IndicatorLifeCycleTest, ItIsNeverStopped) {
  present(window, LaunchScreenPresentationEmbedded);
  cover->dismissViewController(cover);
  EXPECT_TRUE(indicator->isAnimating());
}

}  // namespace
}  // namespace vel::test
