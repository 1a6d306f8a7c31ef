// A view controller presents another view controller in a modal window or in a sheet. Two
// properties link the controllers: `presentedViewControllers` of the presenting controller, and
// `presentingViewController` of the presented controller.
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class PresentationTest : public EventRecordingTest {
 protected:
  PresentationTest() {
    window->setContentViewController(host);
    recorder.takeEvents();
  }

  static Strong<NSWindow> windowOf(const Strong<NSViewController>& controller) {
    return controller->view()->window();
  }

  Strong<NSWindow> window = openKeyWindow("A");
  Strong<RecordingController> host = makeController("host");    // presents
  Strong<RecordingController> guest = makeController("guest");  // is presented
};

TEST_F(PresentationTest, AModalWindowIsANewNSWindow) {
  host->presentViewControllerAsModalWindow(guest);
  const Strong<NSWindow> modalWindow = windowOf(guest);
  ASSERT_NE(modalWindow, nullptr);
  EXPECT_EQ(modalWindow->className(), "NSWindow");
  EXPECT_EQ(modalWindow->styleMask(), 11u);  // titled, closable, resizable
  EXPECT_EQ(modalWindow->contentViewController(), guest);
  EXPECT_EQ(modalWindow->contentView(), guest->view());
  EXPECT_EQ(modalWindow->sheetParent(), nullptr);
  EXPECT_EQ(modalWindow->parentWindow(), nullptr);
}

TEST_F(PresentationTest, AModalWindowHasTheSizeOfItsView) {
  guest->view()->setFrame(CGRectMake(7, 8, 300, 200));
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(windowOf(guest)->frame().size, (CGSize{300, 200}));
}

TEST_F(PresentationTest, AModalWindowIs480By270IfItsViewHasNoSize) {
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(windowOf(guest)->frame().size, (CGSize{480, 270}));
  EXPECT_EQ(guest->view()->frame(), CGRectMake(0, 0, 480, 270));
}

TEST_F(PresentationTest, AModalWindowIsCentredOverTheWindowOfItsPresentingController) {
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(windowOf(guest)->frame().origin, (CGPoint{260, 165}));
  const auto* state = platform.windowSystem().window(windowOf(guest)->handle());
  EXPECT_EQ(state->description.kind, WindowKind::Modal);
  EXPECT_EQ(state->description.ownerWindow, window->handle());
}

TEST_F(PresentationTest, PresentAsModalWindowOpensAKeyWindowBeforeItReturns) {
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(recorder.takeEvents(), (Events{"guest will appear", "A resigns key",
                                           "NSWindow becomes key", "guest did appear"}));
  EXPECT_EQ(NSApp->keyWindow(), windowOf(guest));
  EXPECT_EQ(windowOrder(), (Events{"NSWindow", "A"}));
}

TEST_F(PresentationTest, TheLinksAndTheModalSessionExistWhenViewWillAppearIsCalled) {
  bool isLinked = false;
  bool isModal = false;
  recorder.onNext("guest will appear", [&] {
    isLinked = guest->presentingViewController() == host &&
               host->presentedViewControllers() == NSArray<NSViewController>{guest};
    isModal = windowOf(guest)->isModalPanel();
  });
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_TRUE(isLinked);
  EXPECT_TRUE(isModal);
}

TEST_F(PresentationTest, AControllerWithoutAWindowCanPresentAModalWindow) {
  const auto windowlessController = makeController("windowless");
  windowlessController->presentViewControllerAsModalWindow(guest);
  EXPECT_TRUE(windowOf(guest)->isOnScreen());
  EXPECT_EQ(guest->presentingViewController(), windowlessController);
}

TEST_F(PresentationTest, AControllerCanPresentItselfInAModalWindow) {
  guest->presentViewControllerAsModalWindow(guest);
  EXPECT_TRUE(windowOf(guest)->isModalPanel());
  EXPECT_EQ(guest->presentingViewController(), guest);
  EXPECT_TRUE(guest->presentedViewControllers().empty());
  guest->dismissViewController(guest);
  EXPECT_EQ(guest->presentingViewController(), nullptr);
  EXPECT_EQ(windowOf(guest), nullptr);
}

TEST_F(PresentationTest, AControllerInAWindowCanPresentItselfAsASheet) {
  const auto shownController = addController(window, "shown");
  recorder.takeEvents();
  shownController->presentViewControllerAsSheet(shownController);
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"shown will disappear", "shown did disappear", "shown will appear",
                    "A resigns key", "NSWindow becomes key", "shown did appear"}));
  EXPECT_EQ(windowOf(shownController)->sheetParent(), window);
  EXPECT_EQ(shownController->presentingViewController(), shownController);
  EXPECT_TRUE(shownController->presentedViewControllers().empty());
}

TEST_F(PresentationTest, ASheetBelongsToTheWindowOfItsPresentingController) {
  host->presentViewControllerAsSheet(guest);
  const Strong<NSWindow> sheet = windowOf(guest);
  EXPECT_EQ(sheet->className(), "NSWindow");
  EXPECT_EQ(sheet->styleMask(), 65u);  // titled, DocModalWindow
  EXPECT_EQ(sheet->sheetParent(), window);
  EXPECT_EQ(sheet->parentWindow(), nullptr);
  EXPECT_EQ(window->sheets(), NSArray<NSWindow>{sheet});
  EXPECT_EQ(sheet->frame(), CGRectMake(260, 330, 480, 270));
}

TEST_F(PresentationTest, ASheetBecomesKeyAndStartsNoModalSession) {
  host->presentViewControllerAsSheet(guest);
  EXPECT_EQ(recorder.takeEvents(), (Events{"guest will appear", "A resigns key",
                                           "NSWindow becomes key", "guest did appear"}));
  EXPECT_FALSE(windowOf(guest)->isModalPanel());
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(guest->presentingViewController(), host);
  EXPECT_EQ(host->presentedViewControllers(), NSArray<NSViewController>{guest});
}

TEST_F(PresentationTest, ASheetMovesWithItsSheetParent) {
  host->presentViewControllerAsSheet(guest);
  EXPECT_EQ(windowOf(guest)->frame(), CGRectMake(260, 330, 480, 270));
  window->setFrame(CGRectMake(150, 120, 900, 600));
  EXPECT_EQ(windowOf(guest)->frame(), CGRectMake(360, 450, 480, 270));
}

TEST_F(PresentationTest, AControllerWithoutAnOpenWindowCannotPresentASheet) {
  const auto closedWindow = makeClosedWindow("B");
  const auto controllerInClosedWindow = addController(closedWindow, "in a closed window");
  for (const auto& receiver : {makeController("windowless"), controllerInClosedWindow}) {
    receiver->presentViewControllerAsSheet(guest);
    EXPECT_EQ(windowOf(guest), nullptr);
    EXPECT_EQ(guest->presentingViewController(), nullptr);
    EXPECT_TRUE(receiver->presentedViewControllers().empty());
  }
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, APresentedControllerCannotBePresentedAgain) {
  const auto otherController = addController(window, "other");
  host->presentViewControllerAsSheet(guest);
  const Strong<NSWindow> sheet = windowOf(guest);
  recorder.takeEvents();
  otherController->presentViewControllerAsSheet(guest);
  otherController->presentViewControllerAsModalWindow(guest);
  host->presentViewControllerAsModalWindow(guest);
  EXPECT_EQ(windowOf(guest), sheet);
  EXPECT_EQ(guest->presentingViewController(), host);
  EXPECT_TRUE(otherController->presentedViewControllers().empty());
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, PresentingOrDismissingANullControllerDoesNothing) {
  host->presentViewControllerAsSheet(nullptr);
  host->presentViewControllerAsModalWindow(nullptr);
  host->dismissViewController(nullptr);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, PresentedControllersAreListedInOrderOfPresentation) {
  const auto secondGuest = makeController("second");
  host->presentViewControllerAsSheet(guest);
  host->presentViewControllerAsModalWindow(secondGuest);
  EXPECT_EQ(host->presentedViewControllers(), (NSArray<NSViewController>{guest, secondGuest}));
  host->dismissViewController(guest);
  EXPECT_EQ(host->presentedViewControllers(), NSArray<NSViewController>{secondGuest});
}

// Dismissal

TEST_F(PresentationTest, DismissClosesTheModalWindowAndClearsTheLinksBeforeViewDidDisappear) {
  host->presentViewControllerAsModalWindow(guest);
  const Strong<NSWindow> modalWindow = windowOf(guest);
  recorder.takeEvents();
  Events states;
  const auto recordState = [&] {
    states.push_back(std::string(modalWindow->isOnScreen() ? "on screen" : "closed") +
                     (windowOf(guest) == modalWindow ? ", with the view" : ", without the view") +
                     (modalWindow->isModalPanel() ? ", modal" : "") +
                     (guest->presentingViewController() ? ", linked" : ""));
  };
  recorder.onNext("guest will disappear", recordState);
  recorder.onNext("guest did disappear", recordState);
  host->dismissViewController(guest);
  EXPECT_EQ(recorder.takeEvents(), (Events{"guest will disappear", "guest did disappear",
                                           "NSWindow resigns key", "A becomes key"}));
  EXPECT_EQ(states,
            (Events{"on screen, with the view, modal, linked", "closed, without the view"}));
}

TEST_F(PresentationTest, TheViewOfASheetDisappearsBeforeTheSheetResignsKey) {
  host->presentViewControllerAsSheet(guest);
  recorder.takeEvents();
  host->dismissViewController(guest);
  EXPECT_EQ(recorder.takeEvents(), (Events{"guest will disappear", "guest did disappear",
                                           "NSWindow resigns key", "A becomes key"}));
  EXPECT_TRUE(window->sheets().empty());
  EXPECT_TRUE(host->presentedViewControllers().empty());
}

TEST_F(PresentationTest, AnyControllerCanDismissAPresentedController) {
  host->presentViewControllerAsModalWindow(guest);
  makeController("other")->dismissViewController(guest);
  EXPECT_EQ(windowOf(guest), nullptr);
  EXPECT_EQ(guest->presentingViewController(), nullptr);
}

TEST_F(PresentationTest, DismissingAControllerThatIsNotPresentedDoesNothing) {
  recorder.takeEvents();
  host->dismissViewController(host);
  host->dismissViewController(guest);
  EXPECT_EQ(windowOf(host), window);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, ClosingTheModalWindowEndsThePresentation) {
  host->presentViewControllerAsModalWindow(guest);
  const Strong<NSWindow> modalWindow = windowOf(guest);
  recorder.takeEvents();
  platform.windowSystem().userClosesWindow(modalWindow->handle());
  EXPECT_EQ(recorder.takeEvents(), (Events{"guest will disappear", "guest did disappear",
                                           "NSWindow resigns key", "A becomes key"}));
  EXPECT_EQ(guest->presentingViewController(), nullptr);
  EXPECT_EQ(modalWindow->contentView(), nullptr);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(PresentationTest, DestroyingTheSheetEndsThePresentation) {
  host->presentViewControllerAsSheet(guest);
  recorder.takeEvents();
  platform.windowSystem().ownerDestroysWindow(windowOf(guest)->handle());
  EXPECT_EQ(recorder.takeEvents(), (Events{"guest will disappear", "guest did disappear",
                                           "NSWindow resigns key", "A becomes key"}));
  EXPECT_TRUE(window->sheets().empty());
  EXPECT_EQ(guest->presentingViewController(), nullptr);
}

TEST_F(PresentationTest, ADismissedControllerCanBePresentedAgain) {
  for (int round = 0; round < 3; ++round) {
    host->presentViewControllerAsModalWindow(guest);
    EXPECT_TRUE(windowOf(guest)->isOnScreen());
    host->dismissViewController(guest);
    host->presentViewControllerAsSheet(guest);
    EXPECT_TRUE(windowOf(guest)->isOnScreen());
    host->dismissViewController(guest);
  }
  EXPECT_EQ(platform.windowSystem().windowCount(), 1u);
}

TEST_F(PresentationTest, ViewDidDisappearMayPresentTheDismissedControllerAgain) {
  host->presentViewControllerAsSheet(guest);
  recorder.onNext("guest did disappear", [&] { host->presentViewControllerAsModalWindow(guest); });
  host->dismissViewController(guest);
  EXPECT_TRUE(windowOf(guest)->isModalPanel());
  EXPECT_EQ(guest->presentingViewController(), host);
  EXPECT_EQ(NSApp->keyWindow(), windowOf(guest));
}

TEST_F(PresentationTest, DestroyingThePresentingControllerClearsPresentingViewController) {
  auto windowlessController = makeController("windowless");
  windowlessController->presentViewControllerAsModalWindow(guest);
  windowlessController.reset();
  EXPECT_EQ(guest->presentingViewController(), nullptr);
  host->dismissViewController(guest);
  EXPECT_EQ(windowOf(guest), nullptr);
}

// Child view controllers and views

TEST_F(PresentationTest, AddChildViewControllerReplacesThePreviousParent) {
  host->addChildViewController(guest);
  EXPECT_EQ(guest->parentViewController(), host);
  EXPECT_EQ(host->childViewControllers(), NSArray<NSViewController>{guest});
  const auto otherController = makeController("other");
  otherController->addChildViewController(guest);
  EXPECT_EQ(guest->parentViewController(), otherController);
  EXPECT_TRUE(host->childViewControllers().empty());
}

TEST_F(PresentationTest, AddingAChildAgainChangesNothing) {
  const auto secondGuest = makeController("second");
  host->addChildViewController(guest);
  host->addChildViewController(secondGuest);
  host->addChildViewController(guest);
  EXPECT_EQ(host->childViewControllers(), (NSArray<NSViewController>{guest, secondGuest}));
}

TEST_F(PresentationTest, AControllerCannotHaveNullOrItselfAsAChild) {
  host->addChildViewController(nullptr);
  host->addChildViewController(host);
  EXPECT_TRUE(host->childViewControllers().empty());
  EXPECT_EQ(host->parentViewController(), nullptr);
}

TEST_F(PresentationTest, ARemovedChildHasNoParent) {
  host->addChildViewController(guest);
  guest->removeFromParentViewController();
  guest->removeFromParentViewController();
  EXPECT_EQ(guest->parentViewController(), nullptr);
  EXPECT_TRUE(host->childViewControllers().empty());
}

TEST_F(PresentationTest, AddingAChildCallsNoLifeCycleMethodAndLoadsNoView) {
  host->addChildViewController(guest);
  EXPECT_FALSE(guest->isViewLoaded());
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PresentationTest, AControllerLoadsItsViewAtTheFirstUse) {
  EXPECT_FALSE(guest->isViewLoaded());
  const Strong<NSView> view = guest->view();
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(view->className(), "NSView");
  EXPECT_EQ(view->frame(), CGRectZero);
  EXPECT_TRUE(view->subviews().empty());
  EXPECT_EQ(view->viewController(), guest);
  EXPECT_EQ(guest->view(), view);
  EXPECT_EQ(guest->loadCount(), 1);
}

TEST_F(PresentationTest, AControllerLoadsNoViewAfterSetView) {
  const auto view = NSView::initWithFrame(CGRectMake(0, 0, 5, 5));
  guest->setView(view);
  EXPECT_EQ(guest->view(), view);
  EXPECT_EQ(guest->loadCount(), 0);
  guest->setView(nullptr);
  EXPECT_EQ(view->viewController(), nullptr);
}

TEST_F(PresentationTest, InitWithNibNameBundleMakesAnNSViewControllerWithTheBundle) {
  const auto bundle = NSBundle::bundleForClass<RecordingController>();
  const auto controller = NSViewController::initWithNibNameBundle("", bundle);
  EXPECT_EQ(controller->className(), "NSViewController");
  EXPECT_EQ(controller->nibBundle(), bundle);
}

}  // namespace
}  // namespace vel::test
