// `dismiss` of the launch screen's controller ("the cover") removes the launch screen without
// asking the delegates. A cover that is embedded in a window without a content view controller has
// no parent view controller that could own it. The library then tracks the cover: three global
// variables own the cover, its view and the superview of its view (EmbeddedCover.h).
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
    cover->presentForWindowWithPresentationMode(window, mode);
    takeEvents();
  }
  void embed(const Strong<NSWindow>& window) { present(window, LaunchScreenPresentationEmbedded); }
};

// Modal window mode, sheet mode and unknown modes

TEST_F(ControllerDismissTest, AModalWindowIsClosed) {
  const auto window = openPlayerWindowWithContentViewController();
  present(window, LaunchScreenPresentationModalWindow);
  addDelegate("first");
  cover->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "window closed", "viewDidDisappear",
                                 "first: did dismiss"}));
  EXPECT_EQ(cover->view()->window(), nullptr);
  EXPECT_EQ(cover->presentingViewController(), nullptr);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(ControllerDismissTest, ASheetIsClosed) {
  const auto window = openPlayerWindowWithContentViewController();
  present(window, LaunchScreenPresentationSheet);
  addDelegate("first");
  cover->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "window closed", "viewDidDisappear",
                                 "first: did dismiss"}));
  EXPECT_TRUE(window->sheets().empty());
  EXPECT_TRUE(window->isVisible());
}

TEST_F(ControllerDismissTest, IfAnEmbeddedCoverIsSetToSheetModeDismissClosesThePlayerWindow) {
  const auto window = openPlayerWindow();
  embed(window);
  cover->setPresentationMode(LaunchScreenPresentationSheet);
  cover->dismiss();
  EXPECT_FALSE(window->isVisible());
}

TEST_F(ControllerDismissTest, DismissOfACoverThatIsNotPresentedClosesNoWindow) {
  const auto window = openPlayerWindow();
  addDelegate("first");
  takeEvents();
  for (const LaunchScreenPresentationMode mode :
       {LaunchScreenPresentationModalWindow, LaunchScreenPresentationSheet}) {
    cover->setPresentationMode(mode);
    cover->dismiss();
  }
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_TRUE(window->isVisible());
}

TEST_F(ControllerDismissTest, InAnUnknownModeDismissDoesNothing) {
  const auto window = openPlayerWindow();
  embed(window);
  addDelegate("first");
  for (const LaunchScreenPresentationMode mode :
       {3, -1, std::numeric_limits<std::int32_t>::min()}) {
    cover->setPresentationMode(mode);
    cover->dismiss();
  }
  platform.run(2);
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(cover->view()->window(), window);
  EXPECT_TRUE(isTrackedCover(window->contentView(), cover));
}

// Embedded without a parent: the tracked cover

TEST_F(ControllerDismissTest, ATrackedCoverNotifiesItsDelegatesBeforeItIsRemoved) {
  const auto window = openPlayerWindow();
  embed(window);
  const auto firstDelegate = addDelegate("first");
  cover->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
  EXPECT_EQ(firstDelegate->lastController.lock(), cover);
  EXPECT_EQ(cover->view()->window(), window);
  EXPECT_TRUE(isTrackedCover(window->contentView(), cover));
}

TEST_F(ControllerDismissTest, ATrackedCoverIsRemovedExactlyOneSecondAfterDismiss) {
  const auto window = openPlayerWindow();
  embed(window);
  addDelegate("first");
  platform.run(0.25);
  cover->dismiss();
  takeEvents();
  platform.run(0.999999999);
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(cover->view()->window(), window);
  platform.run(0.000000001);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15"}));
  EXPECT_EQ(cover->view()->superview(), nullptr);
  EXPECT_TRUE(window->contentView()->subviews().empty());
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(ControllerDismissTest, ATrackedCoverIsAlsoRemovedInModalPanelAndEventTrackingRunLoopMode) {
  for (const NSRunLoopMode mode : {NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode}) {
    embed(openPlayerWindow());
    cover->dismiss();
    NSApp->setRunLoopMode(mode);
    platform.run(1);
    EXPECT_FALSE(hasTrackedCover());
  }
}

TEST_F(ControllerDismissTest, ATrackedCoverIsAlsoRemovedFromAParentThatItGotLater) {
  embed(openPlayerWindow());
  const auto parent = make<NamedViewController>("Parent");
  parent->addChildViewController(cover);
  cover->dismiss();
  EXPECT_EQ(cover->parentViewController(), parent);
  platform.run(1);
  EXPECT_EQ(cover->parentViewController(), nullptr);
}

TEST_F(ControllerDismissTest, TheStyleIsRestoredOnlyWhenTheCoverIsRemoved) {
  const auto window = openPlayerWindow();
  embed(window);
  cover->dismiss();
  platform.run(0.5);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  EXPECT_EQ(cover->appWindow(), window);
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
  EXPECT_EQ(firstDelegate->lastController.lock(), cover);
  platform.run(1);
  EXPECT_EQ(cover->view()->window(), nullptr);
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(ControllerDismissTest, ASecondCoverTrackedAfterDismissIsRemovedInsteadOfTheFirst) {
  const auto window = openPlayerWindow();
  embed(window);
  cover->dismiss();
  platform.run(0.5);
  const auto secondController = LaunchScreenViewController::init();
  secondController->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  platform.run(0.5);
  EXPECT_EQ(secondController->view()->window(), nullptr);
  EXPECT_EQ(cover->view()->window(), window);
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(ControllerDismissTest, TwoDismissalsWithinOneSecondNotifyTwice) {
  embed(openPlayerWindow());
  addDelegate("first");
  cover->dismiss();
  platform.run(0.5);
  cover->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss",  //
                                 "viewDidDisappear", "first: did dismiss"}));
  platform.run(0.5);
  EXPECT_FALSE(hasTrackedCover());
  platform.run(0.5);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15"}));
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

TEST_F(ControllerDismissTest, DismissKeepsTheTrackedCoverAliveUntilAllDelegatesAreNotified) {
  embed(openPlayerWindow());
  const auto secondController = LaunchScreenViewController::init();
  const auto otherWindow = openWindow("PlayerWindow");
  addDelegate("first")->onNext(CoverCall::DidDismiss, [&] {
    // This call makes the second cover the tracked cover.
    secondController->presentForWindowWithPresentationMode(otherWindow, 0);
  });
  const auto lastDelegate = addDelegate("last");
  const Weak<LaunchScreenViewController> weakCover = std::exchange(cover, nullptr);
  takeEvents();
  secondController->dismiss();  // dismisses the tracked cover, not `secondController`
  EXPECT_EQ(takeEvents().back(), "last: did dismiss");
  EXPECT_TRUE(weakCover.expired());
  EXPECT_TRUE(isTrackedCover(otherWindow->contentView(), secondController));
}

// Dismissal of an embedded cover while at least one of the three global variables is null

TEST_F(ControllerDismissTest, IfTheWindowIsNullDismissOnlyNotifiesTheDelegates) {
  embed(nullptr);
  const auto firstDelegate = addDelegate("first");
  cover->dismiss();
  EXPECT_EQ(takeEvents(), Lines{"first: did dismiss"});
  EXPECT_EQ(firstDelegate->lastController.lock(), cover);
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
  EXPECT_TRUE(isTrackedCover(nullptr, cover));
}

TEST_F(ControllerDismissTest, IfOneGlobalVariableIsNullTheViewIsRemovedAtOnce) {
  const auto window = openPlayerWindow();
  embed(window);
  embedded_cover::selfView = nullptr;
  cover->dismiss();
  EXPECT_EQ(cover->view()->window(), nullptr);
  EXPECT_EQ(embedded_cover::superView, window->contentView());
  EXPECT_EQ(embedded_cover::selfController, cover);

  embed(window);
  embedded_cover::selfController = nullptr;
  cover->dismiss();
  EXPECT_EQ(cover->view()->window(), nullptr);
  EXPECT_EQ(embedded_cover::selfView, cover->view());

  embed(window);
  embedded_cover::superView = nullptr;
  cover->dismiss();
  EXPECT_EQ(cover->view()->window(), nullptr);
  EXPECT_EQ(embedded_cover::selfController, cover);
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

TEST_F(ControllerDismissTest, ACoverThatIsRemovedAtOnceNotifiesTwice) {
  embed(openPlayerWindow());
  embedded_cover::superView = nullptr;
  addDelegate("first");
  addDelegate("second")->stopRespondingTo(CoverCall::DidDismiss);
  cover->dismiss();
  EXPECT_EQ(takeEvents(),
            (Lines{"viewWillDisappear", "style 15",           // the platform removes the view
                   "viewDidDisappear", "first: did dismiss",  // `viewDidDisappear` notifies
                   "first: did dismiss"}));                   // `dismiss` notifies again
}

TEST_F(ControllerDismissTest, ADelegateThatChangesTheDelegatesArrayRaisesTheMutationError) {
  embed(nullptr);
  addDelegate("first")->onNext(CoverCall::DidDismiss, [this] { addDelegate("late"); });
  addDelegate("second");
  EXPECT_THROW(cover->dismiss(), NSCollectionMutatedError);
  EXPECT_EQ(takeEvents(), Lines{"first: did dismiss"});
}

// Embedded with a parent view controller

TEST_F(ControllerDismissTest, WithAParentTheViewAndItsControllerAreRemovedAtOnce) {
  const auto window = openPlayerWindowWithContentViewController();
  embed(window);
  addDelegate("first");
  cover->dismiss();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15",  //
                                 "viewDidDisappear", "first: did dismiss"}));
  EXPECT_EQ(cover->view()->superview(), nullptr);
  EXPECT_EQ(cover->parentViewController(), nullptr);
  EXPECT_TRUE(window->contentViewController()->childViewControllers().empty());
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

TEST_F(ControllerDismissTest, WithAParentTheDelegatesAreNotNotifiedIfTheWindowIsClosed) {
  const auto window = openPlayerWindowWithContentViewController();
  // If the window is closed, the platform does not call `viewDidDisappear`, which would notify the
  // delegates.
  window->close();
  embed(window);
  addDelegate("first");
  cover->dismiss();
  EXPECT_EQ(takeEvents(), Lines{});
  EXPECT_EQ(cover->view()->superview(), nullptr);
  EXPECT_EQ(cover->parentViewController(), nullptr);
}

TEST_F(ControllerDismissTest, IfTheViewIsInNoWindowTheCoverKeepsItsParent) {
  embed(nullptr);
  const auto parent = make<NamedViewController>("Parent");
  parent->addChildViewController(cover);
  cover->dismiss();
  EXPECT_EQ(cover->parentViewController(), parent);
}

}  // namespace
}  // namespace vel::test
