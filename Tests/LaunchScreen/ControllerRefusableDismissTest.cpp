// `dismissViewController` of the launch screen's controller asks each delegate whether it agrees.
// If all delegates agree, the operation dismisses a controller: in embedded mode the launch
// screen's controller, and in every other mode the argument. The fixture records events as lines.
// The line "style 15" means that the window gets a title and all controls again.
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

constexpr LaunchScreenPresentationMode kEmbedded = LaunchScreenPresentationEmbedded;
constexpr LaunchScreenPresentationMode kModalWindow = LaunchScreenPresentationModalWindow;
constexpr LaunchScreenPresentationMode kSheet = LaunchScreenPresentationSheet;

class ControllerRefusableDismissTest : public CoverTest {
 protected:
  void present(LaunchScreenPresentationMode mode) {
    controller->presentForWindowWithPresentationMode(window, mode);
    takeEvents();
  }
  [[nodiscard]] bool isShown() const { return controller->view()->window() != nullptr; }

  Strong<NSWindow> window = openPlayerWindowWithContentViewController();
};

// Asking the delegates

TEST_F(ControllerRefusableDismissTest, OneRefusalPreventsTheDismissal) {
  present(kEmbedded);
  addDelegate("first");
  addDelegate("second")->agrees = false;
  controller->dismissViewController(controller);
  EXPECT_EQ(takeEvents(), (Lines{"first: can dismiss", "second: can dismiss"}));
  EXPECT_TRUE(isShown());
}

TEST_F(ControllerRefusableDismissTest, AllDelegatesAreAskedEvenIfTheFirstRefuses) {
  present(kEmbedded);
  addDelegate("first")->agrees = false;
  addDelegate("second");
  addDelegate("third")->agrees = false;
  controller->dismissViewController(controller);
  EXPECT_EQ(takeEvents(),
            (Lines{"first: can dismiss", "second: can dismiss", "third: can dismiss"}));
  EXPECT_TRUE(isShown());
}

TEST_F(ControllerRefusableDismissTest, ARefusalLogsNothingAndChangesNothing) {
  present(kEmbedded);
  addDelegate("first")->agrees = false;
  controller->dismissViewController(controller);
  EXPECT_TRUE(platform.log.empty());
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  EXPECT_EQ(controller->appWindow(), window);
  EXPECT_EQ(controller->presentationMode(), kEmbedded);
  EXPECT_EQ(controller->parentViewController(), window->contentViewController());
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

TEST_F(ControllerRefusableDismissTest, TheDelegatesAreAskedAboutTheControllerNotAboutTheArgument) {
  present(kModalWindow);
  const auto firstDelegate = addDelegate("first");
  firstDelegate->agrees = false;
  controller->dismissViewController(make<NamedViewController>("Other"));
  EXPECT_EQ(firstDelegate->lastController.lock(), controller);
}

TEST_F(ControllerRefusableDismissTest, ADelegateThatDoesNotRespondToCanDismissIsNotAsked) {
  present(kEmbedded);
  const auto firstDelegate = addDelegate("first");
  firstDelegate->stopRespondingTo(CoverCall::CanDismiss);
  firstDelegate->agrees = false;
  controller->dismissViewController(controller);
  EXPECT_EQ(takeEvents().front(), "style 15");
  EXPECT_FALSE(isShown());
}

TEST_F(ControllerRefusableDismissTest, TheControllerIsDismissedIfItHasNoDelegatesArray) {
  present(kEmbedded);
  controller->dismissViewController(controller);
  EXPECT_FALSE(isShown());
}

TEST_F(ControllerRefusableDismissTest, TheControllerIsDismissedIfItsDelegatesArrayIsEmpty) {
  present(kEmbedded);
  controller->addDelegate(nullptr);  // creates the array and adds nothing
  controller->dismissViewController(controller);
  EXPECT_FALSE(isShown());
}

TEST_F(ControllerRefusableDismissTest,
       ADelegateThatChangesTheDelegatesArrayRaisesTheMutationError) {
  present(kEmbedded);
  addDelegate("first")->onNext(CoverCall::CanDismiss, [this] {
    controller->deactivate();  // removes all delegates
  });
  EXPECT_THROW(controller->dismissViewController(controller), NSCollectionMutatedError);
  EXPECT_TRUE(isShown());
}

// The dismissal after all delegates have agreed

TEST_F(ControllerRefusableDismissTest,
       TheViewOfAControllerWithAParentIsRemovedAfterTheStyleIsRestored) {
  present(kEmbedded);
  addDelegate("first");
  controller->dismissViewController(controller);
  EXPECT_EQ(takeEvents(), (Lines{"first: can dismiss", "style 15",  //
                                 "viewWillDisappear", "viewDidDisappear", "first: did dismiss"}));
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(controller->parentViewController(), nullptr);
}

TEST_F(ControllerRefusableDismissTest,
       TheViewOfAControllerWithoutAParentIsRemovedOneSecondAfterTheStyleIsRestored) {
  window = openPlayerWindow();
  present(kEmbedded);
  addDelegate("first");
  controller->dismissViewController(controller);
  EXPECT_EQ(takeEvents(), (Lines{"first: can dismiss", "style 15",  //
                                 "viewDidDisappear", "first: did dismiss"}));
  EXPECT_TRUE(isShown());
  platform.run(1);
  EXPECT_EQ(takeEvents(), Lines{"viewWillDisappear"});  // the style is already restored
  EXPECT_FALSE(isShown());
}

TEST_F(ControllerRefusableDismissTest, EmbeddedModeDismissesTheControllerAndIgnoresTheArgument) {
  present(kEmbedded);
  const auto otherController = make<NamedViewController>("Other");
  window->contentViewController()->presentViewControllerAsSheet(otherController);
  controller->dismissViewController(otherController);
  EXPECT_FALSE(isShown());
  EXPECT_EQ(window->sheets().size(), 1u);
  present(kEmbedded);
  controller->dismissViewController(nullptr);
  EXPECT_FALSE(isShown());
}

TEST_F(ControllerRefusableDismissTest, ThePlatformDismissesAModalWindow) {
  present(kModalWindow);
  addDelegate("first");
  controller->dismissViewController(controller);
  EXPECT_EQ(takeEvents(), (Lines{"first: can dismiss", "viewWillDisappear", "window closed",
                                 "viewDidDisappear", "first: did dismiss"}));
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(ControllerRefusableDismissTest, ThePlatformDismissesASheet) {
  present(kSheet);
  addDelegate("first");
  controller->dismissViewController(controller);
  EXPECT_EQ(takeEvents(), (Lines{"first: can dismiss", "viewWillDisappear", "window closed",
                                 "viewDidDisappear", "first: did dismiss"}));
  EXPECT_TRUE(window->sheets().empty());
}

TEST_F(ControllerRefusableDismissTest, ModalWindowModeAndSheetModeDismissTheArgument) {
  for (const LaunchScreenPresentationMode mode : {kModalWindow, kSheet}) {
    present(mode);
    const auto otherController = make<NamedViewController>("Other");
    controller->presentViewControllerAsSheet(otherController);
    controller->dismissViewController(nullptr);
    EXPECT_EQ(controller->presentedViewControllers().size(), 1u);
    controller->dismissViewController(otherController);
    EXPECT_TRUE(controller->presentedViewControllers().empty());
    EXPECT_TRUE(isShown());
    controller->dismissViewController(controller);
    EXPECT_FALSE(isShown());
  }
}

TEST_F(ControllerRefusableDismissTest, AnUnknownModeDismissesTheArgument) {
  present(kSheet);
  for (const LaunchScreenPresentationMode mode : {3, -1}) {
    const auto otherController = make<NamedViewController>("Other");
    controller->presentViewControllerAsSheet(otherController);
    controller->setPresentationMode(mode);
    controller->dismissViewController(otherController);
    EXPECT_TRUE(controller->presentedViewControllers().empty());
    EXPECT_TRUE(isShown());
  }
}

TEST_F(ControllerRefusableDismissTest, ModalWindowModeDoesNotRestoreTheStyle) {
  present(kModalWindow);
  controller->setAppWindow(window);
  controller->setAppWindowStyleMask(7);  // differs from the window's style
  controller->dismissViewController(controller);
  EXPECT_EQ(window->styleMask(), kFullStyle);
}

TEST_F(ControllerRefusableDismissTest, TheModeIsReadAfterTheDelegatesWereAsked) {
  present(kModalWindow);
  addDelegate("first")->onNext(CoverCall::CanDismiss,
                               [this] { controller->setPresentationMode(kEmbedded); });
  controller->dismissViewController(nullptr);  // in modal window mode, null would dismiss nothing
  EXPECT_FALSE(isShown());
}

TEST_F(ControllerRefusableDismissTest, TheModeIsReadBeforeTheStyleIsRestored) {
  present(kEmbedded);
  const auto otherController = make<NamedViewController>("Other");
  controller->presentViewControllerAsSheet(otherController);
  // In the unknown mode 3, the platform would dismiss the sheet.
  platformJournal.onNextStyleMask([this] { controller->setPresentationMode(3); });
  controller->dismissViewController(otherController);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(window->sheets().size(), 1u);
}

}  // namespace
}  // namespace vel::test
