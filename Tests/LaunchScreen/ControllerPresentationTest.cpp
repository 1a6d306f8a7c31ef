// How the launch screen's controller presents its view, the cover. The cover is embedded in an
// existing window, shown in a new modal window, or shown as a sheet. A tracked cover is embedded in
// a window without a content view controller. Global variables own the tracked cover and its
// controller (EmbeddedCover.h). The fixture records events. The event "style 7" means that a window
// gets the style mask 7.
#include <limits>

#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

constexpr LaunchScreenPresentationMode kEmbedded = LaunchScreenPresentationEmbedded;
constexpr LaunchScreenPresentationMode kModalWindow = LaunchScreenPresentationModalWindow;
constexpr LaunchScreenPresentationMode kSheet = LaunchScreenPresentationSheet;

class ControllerPresentationTest : public CoverTest {
 protected:
  void present(const Strong<NSWindow>& window, LaunchScreenPresentationMode mode) {
    controller->presentForWindowWithPresentationMode(window, mode);
  }
  void expectNothingPresented() {
    EXPECT_EQ(controller->view()->window(), nullptr);
    EXPECT_EQ(controller->presentingViewController(), nullptr);
    EXPECT_EQ(controller->parentViewController(), nullptr);
    EXPECT_EQ(controller->appWindow(), nullptr);
    EXPECT_FALSE(hasTrackedCover());
  }
};

TEST_F(ControllerPresentationTest, EachPresentationModeHasAFixedValue) {
  EXPECT_EQ(kEmbedded, 0);
  EXPECT_EQ(kModalWindow, 1);
  EXPECT_EQ(kSheet, 2);
}

// Embedded in a window without a content view controller

TEST_F(ControllerPresentationTest, ACoverWithoutAParentControllerIsTrackedInTheContentView) {
  const auto window = openPlayerWindow();
  present(window, kEmbedded);
  EXPECT_EQ(controller->presentationMode(), 0);
  EXPECT_EQ(controller->appWindow(), window);
  EXPECT_EQ(controller->view()->superview(), window->contentView());
  EXPECT_EQ(controller->parentViewController(), nullptr);
  EXPECT_TRUE(isTrackedCover(window->contentView(), controller));
}

TEST_F(ControllerPresentationTest, AnEmbeddedCoverFillsTheWindowAndFollowsItsSize) {
  const auto window = openPlayerWindow();
  present(window, kEmbedded);
  EXPECT_EQ(controller->view()->frame(), CGRectMake(0, 0, 1280, 720));
  EXPECT_EQ(controller->view()->autoresizingMask(), 18u);  // width and height follow the superview
  window->setFrame(CGRectMake(50, 60, 800, 600));
  EXPECT_EQ(controller->view()->frame(), CGRectMake(0, 0, 800, 600));
}

TEST_F(ControllerPresentationTest, AnEmbeddedCoverMakesTheContentViewLayerBacked) {
  const auto window = openPlayerWindow();
  EXPECT_FALSE(window->contentView()->wantsLayer());
  present(window, kEmbedded);
  EXPECT_TRUE(window->contentView()->wantsLayer());
}

TEST_F(ControllerPresentationTest, AnEmbeddedCoverGetsTheFrameAndNotTheBoundsOfItsSuperview) {
  const auto window = openPlayerWindow();
  window->contentView()->setFrame(CGRectMake(10, 20, 300, 200));
  present(window, kEmbedded);
  EXPECT_EQ(controller->view()->frame(), CGRectMake(10, 20, 300, 200));
}

TEST_F(ControllerPresentationTest,
       AnEmbeddedCoverIsTrackedAndAsLargeAsTheWindowBeforeTheCoverAppears) {
  const auto window = openWindow("PlayerWindow", CGRectMake(30, 40, 640, 480));
  window->contentView()->setFrame(CGRectMake(10, 20, 300, 200));
  bool wasDelegateCalled = false;
  addDelegate("first")->onNext(CoverCall::WillPresent, [&] {
    wasDelegateCalled = true;
    EXPECT_EQ(controller->appWindow(), window);
    EXPECT_EQ(controller->view()->frame(), CGRectMake(0, 0, 640, 480));
    EXPECT_TRUE(isTrackedCover(window->contentView(), controller));
    // The presentation sets these two properties only after the cover has appeared.
    EXPECT_FALSE(window->contentView()->wantsLayer());
    EXPECT_EQ(controller->view()->autoresizingMask(), NSViewNotSizable);
  });
  present(window, kEmbedded);
  EXPECT_TRUE(wasDelegateCalled);
}

TEST_F(ControllerPresentationTest, ACoverInAClosedWindowAppearsWhenTheWindowOpens) {
  const auto window = openPlayerWindow();
  window->close();
  present(window, kEmbedded);
  takeEvents();
  EXPECT_EQ(window->styleMask(), kFullStyle);
  window->orderFront();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "window opened", "viewDidAppear", "style 7",
                                 "style 3", "style 1"}));
}

// Embedded in a window with a content view controller

TEST_F(ControllerPresentationTest,
       TheControllerIsAChildOfTheContentViewControllerAndTheCoverIsNotTracked) {
  const auto window = openPlayerWindowWithContentViewController();
  const auto contentViewController = window->contentViewController();
  present(window, kEmbedded);
  EXPECT_EQ(controller->appWindow(), window);
  EXPECT_EQ(controller->parentViewController(), contentViewController);
  EXPECT_EQ(contentViewController->childViewControllers(), NSArray<NSViewController>{controller});
  EXPECT_EQ(controller->view()->superview(), contentViewController->view());
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(ControllerPresentationTest,
       ACoverWithAParentControllerGetsTheFrameOfItsSuperviewAndMakesTheSuperviewLayerBacked) {
  const auto window = openPlayerWindowWithContentViewController();
  const auto hostView = window->contentViewController()->view();
  hostView->setFrame(CGRectMake(5, 6, 70, 80));
  present(window, kEmbedded);
  EXPECT_TRUE(hostView->wantsLayer());
  EXPECT_EQ(controller->view()->frame(), CGRectMake(5, 6, 70, 80));
  EXPECT_EQ(controller->view()->autoresizingMask(), 18u);
}

TEST_F(ControllerPresentationTest,
       TheControllerBecomesAChildOfTheContentViewControllerBeforeTheCoverAppears) {
  const auto window = openPlayerWindowWithContentViewController();
  bool wasDelegateCalled = false;
  addDelegate("first")->onNext(CoverCall::WillPresent, [&] {
    wasDelegateCalled = true;
    EXPECT_EQ(controller->parentViewController(), window->contentViewController());
    EXPECT_EQ(controller->view()->frame(), CGRectMake(0, 0, 1280, 720));
  });
  present(window, kEmbedded);
  EXPECT_TRUE(wasDelegateCalled);
}

// Embedded mode with a null window

TEST_F(ControllerPresentationTest, ACoverEmbeddedInANullWindowIsTrackedAndHasNoSuperview) {
  controller->view()->setFrame(CGRectMake(1, 2, 3, 4));
  controller->setAppWindow(openPlayerWindow());
  present(nullptr, kEmbedded);
  EXPECT_EQ(controller->appWindow(), nullptr);
  EXPECT_EQ(controller->view()->frame(), CGRectZero);
  EXPECT_EQ(controller->view()->superview(), nullptr);
  EXPECT_EQ(controller->view()->autoresizingMask(), 18u);
  EXPECT_TRUE(isTrackedCover(nullptr, controller));
}

// Several presentations

TEST_F(ControllerPresentationTest, ASecondCoverWithoutAParentControllerReplacesTheTrackedCover) {
  const auto window = openPlayerWindow();
  const auto otherWindow = openWindow("PlayerWindow");
  present(window, kEmbedded);
  const auto secondController = LaunchScreenViewController::init();
  secondController->presentForWindowWithPresentationMode(otherWindow, kEmbedded);
  EXPECT_TRUE(isTrackedCover(otherWindow->contentView(), secondController));
  EXPECT_EQ(controller->view()->superview(), window->contentView());
  EXPECT_EQ(controller->appWindow(), window);
}

TEST_F(ControllerPresentationTest, ASecondCoverWithAParentControllerDoesNotReplaceTheTrackedCover) {
  const auto window = openPlayerWindow();
  present(window, kEmbedded);
  const auto secondController = LaunchScreenViewController::init();
  secondController->presentForWindowWithPresentationMode(
      openPlayerWindowWithContentViewController(), kEmbedded);
  EXPECT_TRUE(isTrackedCover(window->contentView(), controller));
}

TEST_F(ControllerPresentationTest, ASecondPresentationMovesTheCoverToTheSecondWindow) {
  const auto firstWindow = openPlayerWindowWithContentViewController();
  const auto secondWindow = openPlayerWindowWithContentViewController();
  present(firstWindow, kEmbedded);
  present(secondWindow, kEmbedded);
  EXPECT_TRUE(firstWindow->contentViewController()->childViewControllers().empty());
  EXPECT_TRUE(firstWindow->contentViewController()->view()->subviews().empty());
  EXPECT_EQ(controller->parentViewController(), secondWindow->contentViewController());
  EXPECT_EQ(controller->view()->window(), secondWindow);
}

TEST_F(ControllerPresentationTest,
       ASecondPresentationWritesTheStyleOfTheFirstWindowToTheSecondWindow) {
  const auto firstWindow = openPlayerWindow();
  const auto secondWindow = openWindow("PlayerWindow", CGRectMake(0, 0, 800, 600), 7);
  present(firstWindow, kEmbedded);
  takeEvents();
  present(secondWindow, kEmbedded);
  // When the cover leaves the first window, `appWindow` is already the second window. The
  // controller writes the first window's saved style to the second window, and sets `appWindow` to
  // null. When the cover appears in the second window, the controller therefore overrides no style.
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15", "viewDidDisappear",  //
                                 "viewWillAppear", "viewDidAppear"}));
  EXPECT_EQ(firstWindow->styleMask(), NSWindowStyleMaskTitled);
  EXPECT_EQ(secondWindow->styleMask(), kFullStyle);
  EXPECT_EQ(controller->appWindow(), nullptr);
}

// Modal window

TEST_F(ControllerPresentationTest, TheContentViewControllerPresentsTheCoverInAModalWindow) {
  const auto window = openPlayerWindowWithContentViewController();
  const auto contentViewController = window->contentViewController();
  present(window, kModalWindow);
  EXPECT_EQ(controller->presentationMode(), 1);
  EXPECT_EQ(controller->presentingViewController(), contentViewController);
  EXPECT_EQ(contentViewController->presentedViewControllers(),
            NSArray<NSViewController>{controller});
  ASSERT_NE(controller->view()->window(), nullptr);
  EXPECT_NE(controller->view()->window(), window);
  EXPECT_TRUE(controller->view()->window()->isModalPanel());
}

TEST_F(ControllerPresentationTest,
       TheControllerPresentsItselfInAModalWindowIfThePlayerWindowHasNoContentViewController) {
  present(openPlayerWindow(), kModalWindow);
  EXPECT_EQ(controller->presentingViewController(), controller);
  ASSERT_NE(controller->view()->window(), nullptr);
  EXPECT_TRUE(controller->view()->window()->isModalPanel());
}

TEST_F(ControllerPresentationTest,
       TheControllerPresentsItselfInAModalWindowIfThePlayerWindowIsNull) {
  present(nullptr, kModalWindow);
  EXPECT_EQ(controller->presentingViewController(), controller);
  EXPECT_NE(controller->view()->window(), nullptr);
}

TEST_F(ControllerPresentationTest, ACoverInAModalWindowIsNotTrackedAndHasNoAppWindow) {
  present(openPlayerWindow(), kModalWindow);
  EXPECT_EQ(controller->appWindow(), nullptr);
  EXPECT_EQ(controller->view()->autoresizingMask(), NSViewNotSizable);
  EXPECT_FALSE(hasTrackedCover());
}

// Sheet

TEST_F(ControllerPresentationTest, TheContentViewControllerPresentsTheCoverAsASheet) {
  const auto window = openPlayerWindowWithContentViewController();
  present(window, kSheet);
  EXPECT_EQ(controller->presentationMode(), 2);
  EXPECT_EQ(controller->presentingViewController(), window->contentViewController());
  ASSERT_EQ(window->sheets().size(), 1u);
  EXPECT_EQ(controller->view()->window(), window->sheets().front());
  EXPECT_FALSE(controller->view()->window()->isModalPanel());
}

TEST_F(ControllerPresentationTest, ACoverInASheetIsNotTrackedAndHasNoAppWindow) {
  present(openPlayerWindowWithContentViewController(), kSheet);
  EXPECT_EQ(controller->appWindow(), nullptr);
  EXPECT_EQ(controller->view()->autoresizingMask(), NSViewNotSizable);
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(ControllerPresentationTest, AControllerInNoWindowCannotPresentItselfAsASheet) {
  present(openPlayerWindow(), kSheet);  // the window has no content view controller
  EXPECT_EQ(controller->presentationMode(), 2);
  expectNothingPresented();
  present(nullptr, kSheet);
  expectNothingPresented();
}

TEST_F(ControllerPresentationTest, AnEmbeddedControllerPresentsItselfAsASheetOfItsCurrentWindow) {
  const auto window = openPlayerWindow();
  present(window, kEmbedded);
  present(openWindow("PlayerWindow"), kSheet);
  EXPECT_EQ(controller->presentingViewController(), controller);
  ASSERT_EQ(window->sheets().size(), 1u);
  EXPECT_EQ(controller->view()->window(), window->sheets().front());
}

// Unknown modes

TEST_F(ControllerPresentationTest, AnUnknownModeIsStoredAndPresentsNothing) {
  const auto window = openPlayerWindowWithContentViewController();
  for (const LaunchScreenPresentationMode mode :
       {3, -1, std::numeric_limits<std::int32_t>::min()}) {
    present(window, mode);
    EXPECT_EQ(controller->presentationMode(), mode);
    expectNothingPresented();
  }
}

TEST_F(ControllerPresentationTest, AnUnknownModeWithoutAWindowPresentsNothing) {
  present(nullptr, 3);
  expectNothingPresented();
}

}  // namespace
}  // namespace vel::test
