// Controllers presented as modal windows and as sheets, and child controllers.
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class PresentationTest : public RecordedTest {
 protected:
  PresentationTest() {
    window->setContentViewController(host);
    recorder.take();
  }

  static Strong<NSWindow> windowOf(const Strong<NSViewController>& controller) {
    return controller->view()->window();
  }

  Strong<NSWindow> window = openKey("A");
  Strong<RecordingController> host = recordingController("host");
  Strong<RecordingController> guest = recordingController("guest");
};

TEST_F(PresentationTest, AModalWindowIsAPlainNSWindowOfItsOwn) {
  host->presentViewControllerAsModalWindow(guest);
  const Strong<NSWindow> modal = windowOf(guest);
  ASSERT_NE(modal, nullptr);
  EXPECT_EQ(modal->className(), "NSWindow");
  EXPECT_EQ(modal->styleMask(), 11u);
  EXPECT_EQ(modal->contentViewController(), guest);
  EXPECT_EQ(modal->contentView(), guest->view());
  EXPECT_EQ(modal->sheetParent(), nullptr);
  EXPECT_EQ(modal->parentWindow(), nullptr);
}

TEST_F(PresentationTest, AModalWindowHasTheSizeOfTheView) {
  guest->view()->setFrame(CGRectMake(7, 8, 300, 200));
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(windowOf(guest)->frame().size, (CGSize{300, 200}));
}

TEST_F(PresentationTest, AModalWindowOfAViewWithoutSizeIs480By270) {
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(windowOf(guest)->frame().size, (CGSize{480, 270}));
  EXPECT_EQ(guest->view()->frame(), CGRectMake(0, 0, 480, 270));
}

TEST_F(PresentationTest, AModalWindowLiesOverTheMiddleOfItsOwner) {
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(windowOf(guest)->frame().origin, (CGPoint{260, 165}));
  const auto* shown = platform.user().window(windowOf(guest)->handle());
  EXPECT_EQ(shown->description.kind, WindowKind::Modal);
  EXPECT_EQ(shown->description.owner, window->handle());
}

TEST_F(PresentationTest, AModalWindowIsShownKeyWithinTheCall) {
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(recorder.take(),
            (Events{"guest will appear", "A resigns", "NSWindow becomes key", "guest did appear"}));
  EXPECT_EQ(NSApp->keyWindow(), windowOf(guest));
  EXPECT_EQ(order(), (Events{"NSWindow", "A"}));
}

TEST_F(PresentationTest, LinksAndModalRunStandWhenAModalWindowAppears) {
  bool linked = false;
  bool modal = false;
  recorder.onNext("guest will appear", [&] {
    linked = guest->presentingViewController() == host &&
             host->presentedViewControllers() == NSArray<NSViewController>{guest};
    modal = windowOf(guest)->isModalPanel();
  });
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_TRUE(linked);
  EXPECT_TRUE(modal);
}

TEST_F(PresentationTest, AHostWithoutAWindowPresentsAModalWindowAllTheSame) {
  const auto loose = recordingController("loose");
  loose->presentViewControllerAsModalWindow(guest);
  EXPECT_TRUE(windowOf(guest)->isOnScreen());
  EXPECT_EQ(guest->presentingViewController(), loose);
}

TEST_F(PresentationTest, AControllerMayPresentItselfInAModalWindow) {
  guest->presentViewControllerAsModalWindow(guest);
  EXPECT_TRUE(windowOf(guest)->isModalPanel());
  EXPECT_EQ(guest->presentingViewController(), guest);
  EXPECT_TRUE(guest->presentedViewControllers().empty());
  guest->dismissViewController(guest);
  EXPECT_EQ(guest->presentingViewController(), nullptr);
  EXPECT_EQ(windowOf(guest), nullptr);
}

TEST_F(PresentationTest, AShownControllerThatPresentsItselfMovesToItsNewWindow) {
  const auto shown = recordingControllerIn(window, "shown");
  recorder.take();
  shown->presentViewControllerAsSheet(shown);
  EXPECT_EQ(recorder.take(),
            (Events{"shown will disappear", "shown did disappear", "shown will appear", "A resigns",
                    "NSWindow becomes key", "shown did appear"}));
  EXPECT_EQ(windowOf(shown)->sheetParent(), window);
  EXPECT_EQ(shown->presentingViewController(), shown);
  EXPECT_TRUE(shown->presentedViewControllers().empty());
}

TEST_F(PresentationTest, ASheetBelongsToTheWindowThatShowsTheReceiver) {
  host->presentViewControllerAsSheet(guest);
  const Strong<NSWindow> sheet = windowOf(guest);
  EXPECT_EQ(sheet->className(), "NSWindow");
  EXPECT_EQ(sheet->styleMask(), 65u);
  EXPECT_EQ(sheet->sheetParent(), window);
  EXPECT_EQ(sheet->parentWindow(), nullptr);
  EXPECT_EQ(window->sheets(), NSArray<NSWindow>{sheet});
  EXPECT_EQ(sheet->frame(), CGRectMake(260, 330, 480, 270));
}

TEST_F(PresentationTest, ASheetIsShownKeyWithoutAModalRun) {
  host->presentViewControllerAsSheet(guest);
  EXPECT_EQ(recorder.take(),
            (Events{"guest will appear", "A resigns", "NSWindow becomes key", "guest did appear"}));
  EXPECT_FALSE(windowOf(guest)->isModalPanel());
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(guest->presentingViewController(), host);
  EXPECT_EQ(host->presentedViewControllers(), NSArray<NSViewController>{guest});
}

TEST_F(PresentationTest, ASheetFollowsItsWindow) {
  host->presentViewControllerAsSheet(guest);
  window->setFrame(CGRectMake(100, 100, 800, 500));
  EXPECT_EQ(windowOf(guest)->frame(), CGRectMake(260, 330, 480, 270));
}

TEST_F(PresentationTest, AReceiverInNoOpenWindowPresentsNoSheet) {
  const auto closed = closedWindow("B");
  const auto inClosed = recordingControllerIn(closed, "in a closed window");
  for (const auto& receiver : {recordingController("loose"), inClosed}) {
    receiver->presentViewControllerAsSheet(guest);
    EXPECT_EQ(windowOf(guest), nullptr);
    EXPECT_EQ(guest->presentingViewController(), nullptr);
    EXPECT_TRUE(receiver->presentedViewControllers().empty());
  }
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, APresentedControllerIsNotPresentedAgain) {
  const auto other = recordingControllerIn(window, "other");
  host->presentViewControllerAsSheet(guest);
  const Strong<NSWindow> sheet = windowOf(guest);
  recorder.take();
  other->presentViewControllerAsSheet(guest);
  other->presentViewControllerAsModalWindow(guest);
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(windowOf(guest), sheet);
  EXPECT_EQ(guest->presentingViewController(), host);
  EXPECT_TRUE(other->presentedViewControllers().empty());
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, NoControllerIsNotPresented) {
  host->presentViewControllerAsSheet(nullptr);
  host->presentViewControllerAsModalWindow(nullptr);
  host->dismissViewController(nullptr);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, SeveralArePresentedInTheirOrder) {
  const auto second = recordingController("second");
  host->presentViewControllerAsSheet(guest);
  host->presentViewControllerAsModalWindow(second);
  EXPECT_EQ(host->presentedViewControllers(), (NSArray<NSViewController>{guest, second}));
  host->dismissViewController(guest);
  EXPECT_EQ(host->presentedViewControllers(), NSArray<NSViewController>{second});
}

// Ending

TEST_F(PresentationTest, EndingGoesStepThenWindowThenLinksThenStepThenKey) {
  host->presentViewControllerAsModalWindow(guest);
  const Strong<NSWindow> modal = windowOf(guest);
  recorder.take();
  Events states;
  const auto look = [&] {
    states.push_back(std::string(modal->isOnScreen() ? "on screen" : "gone") +
                     (windowOf(guest) == modal ? ", has the view" : ", gave up the view") +
                     (modal->isModalPanel() ? ", modal" : "") +
                     (guest->presentingViewController() ? ", linked" : ""));
  };
  recorder.onNext("guest will disappear", look);
  recorder.onNext("guest did disappear", look);
  host->dismissViewController(guest);
  EXPECT_EQ(recorder.take(), (Events{"guest will disappear", "guest did disappear",
                                     "NSWindow resigns", "A becomes key"}));
  EXPECT_EQ(states, (Events{"on screen, has the view, modal, linked", "gone, gave up the view"}));
}

TEST_F(PresentationTest, ASheetEndsInTheSameOrder) {
  host->presentViewControllerAsSheet(guest);
  recorder.take();
  host->dismissViewController(guest);
  EXPECT_EQ(recorder.take(), (Events{"guest will disappear", "guest did disappear",
                                     "NSWindow resigns", "A becomes key"}));
  EXPECT_TRUE(window->sheets().empty());
  EXPECT_TRUE(host->presentedViewControllers().empty());
}

TEST_F(PresentationTest, AnyControllerMayEndThePresentation) {
  host->presentViewControllerAsModalWindow(guest);
  recordingController("stranger")->dismissViewController(guest);
  EXPECT_EQ(windowOf(guest), nullptr);
  EXPECT_EQ(guest->presentingViewController(), nullptr);
}

TEST_F(PresentationTest, AControllerThatIsNotPresentedIsLeftAlone) {
  recorder.take();
  host->dismissViewController(host);
  host->dismissViewController(guest);
  EXPECT_EQ(windowOf(host), window);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, ClosingTheWindowEndsThePresentation) {
  host->presentViewControllerAsModalWindow(guest);
  const Strong<NSWindow> modal = windowOf(guest);
  recorder.take();
  platform.user().userClosesWindow(modal->handle());
  EXPECT_EQ(recorder.take(), (Events{"guest will disappear", "guest did disappear",
                                     "NSWindow resigns", "A becomes key"}));
  EXPECT_EQ(guest->presentingViewController(), nullptr);
  EXPECT_EQ(modal->contentView(), nullptr);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(PresentationTest, AVanishedWindowEndsThePresentation) {
  host->presentViewControllerAsSheet(guest);
  recorder.take();
  platform.user().windowVanishes(windowOf(guest)->handle());
  EXPECT_EQ(recorder.take(), (Events{"guest will disappear", "guest did disappear",
                                     "NSWindow resigns", "A becomes key"}));
  EXPECT_TRUE(window->sheets().empty());
  EXPECT_EQ(guest->presentingViewController(), nullptr);
}

TEST_F(PresentationTest, AnEndedPresentationCanBeginAgain) {
  for (int round = 0; round < 3; ++round) {
    host->presentViewControllerAsModalWindow(guest);
    EXPECT_TRUE(windowOf(guest)->isOnScreen());
    host->dismissViewController(guest);
    host->presentViewControllerAsSheet(guest);
    EXPECT_TRUE(windowOf(guest)->isOnScreen());
    host->dismissViewController(guest);
  }
  EXPECT_EQ(platform.user().windowCount(), 1u);
}

TEST_F(PresentationTest, AStepMayPresentAnew) {
  host->presentViewControllerAsSheet(guest);
  recorder.onNext("guest did disappear", [&] { host->presentViewControllerAsModalWindow(guest); });
  host->dismissViewController(guest);
  EXPECT_TRUE(windowOf(guest)->isModalPanel());
  EXPECT_EQ(guest->presentingViewController(), host);
  EXPECT_EQ(NSApp->keyWindow(), windowOf(guest));
}

TEST_F(PresentationTest, APresentingControllerThatDiesLeavesNoLink) {
  auto loose = recordingController("loose");
  loose->presentViewControllerAsModalWindow(guest);
  loose.reset();
  EXPECT_EQ(guest->presentingViewController(), nullptr);
  host->dismissViewController(guest);
  EXPECT_EQ(windowOf(guest), nullptr);
}

// Children and views

TEST_F(PresentationTest, AChildHasOneParent) {
  host->addChildViewController(guest);
  EXPECT_EQ(guest->parentViewController(), host);
  EXPECT_EQ(host->childViewControllers(), NSArray<NSViewController>{guest});
  const auto other = recordingController("other");
  other->addChildViewController(guest);
  EXPECT_EQ(guest->parentViewController(), other);
  EXPECT_TRUE(host->childViewControllers().empty());
}

TEST_F(PresentationTest, AddingAChildAgainChangesNothing) {
  const auto second = recordingController("second");
  host->addChildViewController(guest);
  host->addChildViewController(second);
  host->addChildViewController(guest);
  EXPECT_EQ(host->childViewControllers(), (NSArray<NSViewController>{guest, second}));
}

TEST_F(PresentationTest, NoneAndItselfAreNoChildren) {
  host->addChildViewController(nullptr);
  host->addChildViewController(host);
  EXPECT_TRUE(host->childViewControllers().empty());
  EXPECT_EQ(host->parentViewController(), nullptr);
}

TEST_F(PresentationTest, AChildThatIsRemovedHasNoParent) {
  host->addChildViewController(guest);
  guest->removeFromParentViewController();
  guest->removeFromParentViewController();
  EXPECT_EQ(guest->parentViewController(), nullptr);
  EXPECT_TRUE(host->childViewControllers().empty());
}

TEST_F(PresentationTest, AddingAChildRunsNoStepAndPlacesNoView) {
  host->addChildViewController(guest);
  EXPECT_FALSE(guest->isViewLoaded());
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, TheViewOfAPlainControllerIsMadeWhenFirstAskedFor) {
  EXPECT_FALSE(guest->isViewLoaded());
  const Strong<NSView> view = guest->view();
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(view->className(), "NSView");
  EXPECT_EQ(view->frame(), CGRectZero);
  EXPECT_TRUE(view->subviews().empty());
  EXPECT_EQ(view->viewController(), guest);
  EXPECT_EQ(guest->view(), view);
  EXPECT_EQ(guest->timesLoaded(), 1);
}

TEST_F(PresentationTest, AControllerMayBeGivenItsView) {
  const auto view = NSView::initWithFrame(CGRectMake(0, 0, 5, 5));
  guest->setView(view);
  EXPECT_EQ(guest->view(), view);
  EXPECT_EQ(guest->timesLoaded(), 0);
  guest->setView(nullptr);
  EXPECT_EQ(view->viewController(), nullptr);
}

TEST_F(PresentationTest, APlainControllerIsMadeByNibNameAndBundle) {
  const auto bundle = NSBundle::bundleForClass<RecordingController>();
  const auto controller = NSViewController::initWithNibNameBundle("", bundle);
  EXPECT_EQ(controller->className(), "NSViewController");
  EXPECT_EQ(controller->nibBundle(), bundle);
}

}  // namespace
}  // namespace vel::test
