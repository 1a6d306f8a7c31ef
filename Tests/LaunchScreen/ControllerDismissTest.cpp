// `dismiss` of the launch screen's controller removes the cover (the controller's view) without
// asking the delegates.
//
// An embedded cover has a parent if its window has a content view controller. The parent owns the
// controller of the cover. A cover without a parent is tracked: three global variables own the
// cover, its superview and its controller (EmbeddedCover.h).
//
// The fixture records events as lines. The line "style 15" means that the window gets a title and
// all controls again.
#include <limits>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

class ControllerDismissTest : public CoverTest {
 protected:
  void present(const Strong<NSWindow>& window, LaunchScreenPresentationMode mode) {
    controller->presentForWindowWithPresentationMode(window, mode);
    takeEvents();
  }
  void embed(const Strong<NSWindow>& window) { present(window, LaunchScreenPresentationEmbedded); }
};

// Modal window mode, sheet mode and unknown modes

TEST_F(ControllerDismissTest, AModalWindowIsClosed) {
  const auto window = openPlayerWindowWithContentViewController();
  present(window, LaunchScreenPresentationModalWindow);
  addDelegate("first");
  controller->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "window closed", "viewDidDisappear",
                                 "first: did dismiss"}));
  EXPECT_EQ(controller->view()->window(), nullptr);
  EXPECT_EQ(controller->presentingViewController(), nullptr);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(ControllerDismissTest, ASheetIsClosed) {
  const auto window = openPlayerWindowWithContentViewController();
  present(window, LaunchScreenPresentationSheet);
  addDelegate("first");
  controller->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "window closed", "viewDidDisappear",
                                 "first: did dismiss"}));
  EXPECT_TRUE(window->sheets().empty());
  EXPECT_TRUE(window->isVisible());
}

TEST_F(ControllerDismissTest, DismissClosesThePlayerWindowIfAnEmbeddedCoverIsSetToSheetMode) {
  const auto window = openPlayerWindow();
  embed(window);
  controller->setPresentationMode(LaunchScreenPresentationSheet);
  controller->dismiss();
  EXPECT_FALSE(window->isVisible());
}

TEST_F(ControllerDismissTest, DismissOfACoverThatIsNotPresentedClosesNoWindow) {
  const auto window = openPlayerWindow();
  addDelegate("first");
  takeEvents();
  for (const LaunchScreenPresentationMode mode :
       {LaunchScreenPresentationModalWindow, LaunchScreenPresentationSheet}) {
    controller->setPresentationMode(mode);
    controller->dismiss();
  }
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_TRUE(window->isVisible());
}

TEST_F(ControllerDismissTest, DismissInAnUnknownModeDoesNothing) {
  const auto window = openPlayerWindow();
  embed(window);
  addDelegate("first");
  for (const LaunchScreenPresentationMode mode :
       {3, -1, std::numeric_limits<std::int32_t>::min()}) {
    controller->setPresentationMode(mode);
    controller->dismiss();
  }
  platform.run(2);
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(controller->view()->window(), window);
  EXPECT_TRUE(isTrackedCover(window->contentView(), controller));
}

// Embedded without a parent: the tracked cover

TEST_F(ControllerDismissTest, ATrackedCoverNotifiesItsDelegatesBeforeItIsRemoved) {
  const auto window = openPlayerWindow();
  embed(window);
  const auto firstDelegate = addDelegate("first");
  controller->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
  EXPECT_EQ(firstDelegate->lastController.lock(), controller);
  EXPECT_EQ(controller->view()->window(), window);
  EXPECT_TRUE(isTrackedCover(window->contentView(), controller));
}

TEST_F(ControllerDismissTest, ATrackedCoverIsRemovedExactlyOneSecondAfterDismiss) {
  const auto window = openPlayerWindow();
  embed(window);
  addDelegate("first");
  platform.run(0.25);
  controller->dismiss();
  takeEvents();
  platform.run(0.999999999);
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(controller->view()->window(), window);
  platform.run(0.000000001);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15"}));
  EXPECT_EQ(controller->view()->superview(), nullptr);
  EXPECT_TRUE(window->contentView()->subviews().empty());
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(ControllerDismissTest, ATrackedCoverIsAlsoRemovedInModalPanelAndEventTrackingRunLoopMode) {
  for (const NSRunLoopMode mode : {NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode}) {
    embed(openPlayerWindow());
    controller->dismiss();
    NSApp->setRunLoopMode(mode);
    platform.run(1);
    EXPECT_FALSE(hasTrackedCover());
  }
}

TEST_F(ControllerDismissTest, TheControllerOfATrackedCoverIsRemovedFromAParentThatWasSetLater) {
  embed(openPlayerWindow());
  const auto parent = make<NamedViewController>("Parent");
  parent->addChildViewController(controller);
  controller->dismiss();
  EXPECT_EQ(controller->parentViewController(), parent);
  platform.run(1);
  EXPECT_EQ(controller->parentViewController(), nullptr);
}

TEST_F(ControllerDismissTest, TheStyleIsRestoredOnlyWhenTheCoverIsRemoved) {
  const auto window = openPlayerWindow();
  embed(window);
  controller->dismiss();
  platform.run(0.5);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  EXPECT_EQ(controller->appWindow(), window);
  platform.run(0.5);
  EXPECT_EQ(window->styleMask(), kFullStyle);
}

TEST_F(ControllerDismissTest, DismissOfAnotherControllerDismissesTheTrackedCover) {
  embed(openPlayerWindow());
  const auto firstDelegate = addDelegate("first");
  const auto otherController = LaunchScreenViewController::init();
  addDelegate("other", otherController);
  otherController->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
  EXPECT_EQ(firstDelegate->lastController.lock(), controller);
  platform.run(1);
  EXPECT_EQ(controller->view()->window(), nullptr);
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(ControllerDismissTest, OnlyTheSecondCoverIsRemovedIfItReplacesTheDismissedTrackedCover) {
  const auto window = openPlayerWindow();
  embed(window);
  controller->dismiss();
  platform.run(0.5);
  const auto secondController = LaunchScreenViewController::init();
  secondController->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  platform.run(0.5);
  EXPECT_EQ(secondController->view()->window(), nullptr);
  EXPECT_EQ(controller->view()->window(), window);
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(ControllerDismissTest, TwoDismissalsWithinOneSecondNotifyTwice) {
  embed(openPlayerWindow());
  addDelegate("first");
  controller->dismiss();
  platform.run(0.5);
  controller->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss",  //
                                 "viewDidDisappear", "first: did dismiss"}));
  platform.run(0.5);
  EXPECT_FALSE(hasTrackedCover());
  platform.run(0.5);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15"}));
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

TEST_F(ControllerDismissTest, DismissKeepsTheTrackedControllerAliveUntilAllDelegatesAreNotified) {
  embed(openPlayerWindow());
  const auto secondController = LaunchScreenViewController::init();
  const auto otherWindow = openWindow("PlayerWindow");
  addDelegate("first")->onNext(CoverCall::DidDismiss, [&] {
    // This call makes the second controller's view the tracked cover.
    secondController->presentForWindowWithPresentationMode(otherWindow, 0);
  });
  const auto lastDelegate = addDelegate("last");
  const Weak<LaunchScreenViewController> weakController = std::exchange(controller, nullptr);
  takeEvents();
  secondController->dismiss();  // dismisses the tracked cover, not `secondController`
  EXPECT_EQ(takeEvents().back(), "last: did dismiss");
  EXPECT_TRUE(weakController.expired());
  EXPECT_TRUE(isTrackedCover(otherWindow->contentView(), secondController));
}

// Dismissal of an embedded cover while at least one of the three global variables is null

TEST_F(ControllerDismissTest, DismissWithoutAWindowOnlyNotifiesTheDelegates) {
  embed(nullptr);
  const auto firstDelegate = addDelegate("first");
  controller->dismiss();
  EXPECT_EQ(takeEvents(), Lines{"first: did dismiss"});
  EXPECT_EQ(firstDelegate->lastController.lock(), controller);
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
  EXPECT_TRUE(isTrackedCover(nullptr, controller));
}

TEST_F(ControllerDismissTest, ACoverIsRemovedAtOnceIfOneGlobalVariableIsNull) {
  const auto window = openPlayerWindow();
  embed(window);
  embedded_cover::selfView = nullptr;
  controller->dismiss();
  EXPECT_EQ(controller->view()->window(), nullptr);
  EXPECT_EQ(embedded_cover::superView, window->contentView());
  EXPECT_EQ(embedded_cover::selfController, controller);

  embed(window);
  embedded_cover::selfController = nullptr;
  controller->dismiss();
  EXPECT_EQ(controller->view()->window(), nullptr);
  EXPECT_EQ(embedded_cover::selfView, controller->view());

  embed(window);
  embedded_cover::superView = nullptr;
  controller->dismiss();
  EXPECT_EQ(controller->view()->window(), nullptr);
  EXPECT_EQ(embedded_cover::selfController, controller);
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

TEST_F(ControllerDismissTest, ACoverThatIsRemovedAtOnceNotifiesTwice) {
  embed(openPlayerWindow());
  embedded_cover::superView = nullptr;
  addDelegate("first");
  addDelegate("second")->stopRespondingTo(CoverCall::DidDismiss);
  controller->dismiss();
  EXPECT_EQ(takeEvents(),
            (Lines{"viewWillDisappear", "style 15",           // the platform removes the view
                   "viewDidDisappear", "first: did dismiss",  // `viewDidDisappear` notifies
                   "first: did dismiss"}));                   // `dismiss` notifies again
}

TEST_F(ControllerDismissTest, ADelegateThatChangesTheDelegatesArrayRaisesTheMutationError) {
  embed(nullptr);
  addDelegate("first")->onNext(CoverCall::DidDismiss, [this] { addDelegate("late"); });
  addDelegate("second");
  EXPECT_THROW(controller->dismiss(), NSCollectionMutatedError);
  EXPECT_EQ(takeEvents(), Lines{"first: did dismiss"});
}

// Embedded with a parent view controller

TEST_F(ControllerDismissTest, ACoverWithAParentIsRemovedAtOnceWithItsController) {
  const auto window = openPlayerWindowWithContentViewController();
  embed(window);
  addDelegate("first");
  controller->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15",  //
                                 "viewDidDisappear", "first: did dismiss"}));
  EXPECT_EQ(controller->view()->superview(), nullptr);
  EXPECT_EQ(controller->parentViewController(), nullptr);
  EXPECT_TRUE(window->contentViewController()->childViewControllers().empty());
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

TEST_F(ControllerDismissTest, ACoverWithAParentInAClosedWindowDoesNotNotifyTheDelegates) {
  const auto window = openPlayerWindowWithContentViewController();
  // If the window is closed, the platform does not call `viewDidDisappear`, which would notify the
  // delegates.
  window->close();
  embed(window);
  addDelegate("first");
  controller->dismiss();
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(controller->view()->superview(), nullptr);
  EXPECT_EQ(controller->parentViewController(), nullptr);
}

TEST_F(ControllerDismissTest, TheControllerKeepsItsParentIfTheCoverIsInNoWindow) {
  embed(nullptr);
  const auto parent = make<NamedViewController>("Parent");
  parent->addChildViewController(controller);
  controller->dismiss();
  EXPECT_EQ(controller->parentViewController(), parent);
}

}  // namespace
}  // namespace vel::test
