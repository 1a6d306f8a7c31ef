// The four steps of a controller's life on screen.
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class LifeCycleTest : public RecordedTest {
 protected:
  const Events kAppears{"view will appear", "view did appear"};
  const Events kDisappears{"view will disappear", "view did disappear"};

  Strong<NSWindow> window = open("A");
};

TEST_F(LifeCycleTest, AViewAddedToAnOpenWindowAppears) {
  const auto view = recordingControllerIn(window, "view");
  EXPECT_EQ(recorder.take(), kAppears);
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleTest, AViewAddedToAClosedWindowDoesNot) {
  const auto view = recordingControllerIn(closedWindow("B"), "view");
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, AViewInNoWindowDoesNot) {
  const auto view = recordingController("view");
  NSView::initWithFrame(CGRectZero)->addSubview(view->view());
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, AViewAddedIsInPlaceInBothSteps) {
  const auto view = recordingController("view");
  Events places;
  const auto look = [&] { places.push_back(nameOf(view->view()->window())); };
  recorder.onNext("view will appear", look);
  recorder.onNext("view did appear", look);
  window->contentView()->addSubview(view->view());
  EXPECT_EQ(places, (Events{"A", "A"}));
}

TEST_F(LifeCycleTest, OrderingAWindowInShowsTheControllersInIt) {
  const auto closed = closedWindow("B");
  recordingControllerIn(closed, "view");
  closed->orderFront();
  EXPECT_EQ(recorder.take(), kAppears);
}

TEST_F(LifeCycleTest, OrderingAnOpenWindowToTheFrontRunsNoStep) {
  recordingControllerIn(window, "view");
  recorder.take();
  window->orderFront();
  window->makeKeyAndOrderFront();
  EXPECT_EQ(recorder.take(), Events{"A becomes key"});
}

TEST_F(LifeCycleTest, WhenAWindowIsOrderedInTheFirstStepFindsItOpenButNotOnScreen) {
  const auto closed = closedWindow("B");
  recordingControllerIn(closed, "view");
  bool isOpen = false;
  Events onScreen;
  recorder.onNext("view will appear", [&] {
    isOpen = closed->isVisible();
    onScreen = order();
  });
  closed->orderFront();
  EXPECT_TRUE(isOpen);
  EXPECT_EQ(onScreen, Events{"A"});
}

TEST_F(LifeCycleTest, WhenAWindowIsOrderedInTheSecondStepFindsItOnScreen) {
  const auto closed = closedWindow("B");
  recordingControllerIn(closed, "view");
  Events onScreen;
  recorder.onNext("view did appear", [&] { onScreen = order(); });
  closed->orderFront();
  EXPECT_EQ(onScreen, (Events{"B", "A"}));
}

TEST_F(LifeCycleTest, AWindowBecomesKeyBetweenTheTwoSteps) {
  const auto closed = closedWindow("B");
  recordingControllerIn(closed, "view");
  closed->makeKeyAndOrderFront();
  EXPECT_EQ(recorder.take(), (Events{"view will appear", "B becomes key", "view did appear"}));
}

TEST_F(LifeCycleTest, TheContentViewControllerOfAnOpenWindowAppears) {
  const auto view = recordingController("view");
  recorder.onNext("view will appear", [&] { EXPECT_EQ(window->contentView(), view->view()); });
  window->setContentViewController(view);
  EXPECT_EQ(recorder.take(), kAppears);
  EXPECT_EQ(window->contentViewController(), view);
  EXPECT_EQ(view->view()->frame(), window->contentView()->frame());
}

TEST_F(LifeCycleTest, AReplacedContentViewControllerDisappearsFirst) {
  window->setContentViewController(recordingController("former"));  // only the window keeps it
  recorder.take();
  window->setContentViewController(recordingController("view"));
  EXPECT_EQ(recorder.take(), (Events{"former will disappear", "former did disappear",
                                     "view will appear", "view did appear"}));
}

TEST_F(LifeCycleTest, NoContentViewControllerGivesAPlainView) {
  window->setContentViewController(recordingController("view"));
  recorder.take();
  window->setContentViewController(nullptr);
  EXPECT_EQ(recorder.take(), kDisappears);
  ASSERT_NE(window->contentView(), nullptr);
  EXPECT_EQ(window->contentView()->viewController(), nullptr);
}

TEST_F(LifeCycleTest, TheSameContentViewControllerAgainRunsNoStep) {
  const auto view = recordingController("view");
  window->setContentViewController(view);
  recorder.take();
  window->setContentViewController(view);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, AViewTakenAwayDisappears) {
  const auto view = recordingControllerIn(window, "view");
  recorder.take();
  Events places;
  const auto look = [&] { places.push_back(nameOf(view->view()->window())); };
  recorder.onNext("view will disappear", look);
  recorder.onNext("view did disappear", look);
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), kDisappears);
  EXPECT_EQ(places, (Events{"A", "none"}));
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, TheContentViewTakenAwayDisappears) {
  window->setContentViewController(recordingController("view"));
  recorder.take();
  window->contentView()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), kDisappears);
  EXPECT_EQ(window->contentView(), nullptr);
}

TEST_F(LifeCycleTest, ClosingAWindowLetsItsControllersDisappear) {
  const auto view = recordingControllerIn(window, "view");
  recorder.take();
  Events onScreen;
  recorder.onNext("view will disappear",
                  [&] { onScreen.push_back(order().empty() ? "closed" : "open"); });
  recorder.onNext("view did disappear",
                  [&] { onScreen.push_back(order().empty() ? "closed" : "open"); });
  window->close();
  EXPECT_EQ(recorder.take(), kDisappears);
  EXPECT_EQ(onScreen, (Events{"open", "closed"}));
  EXPECT_EQ(view->view()->superview(), window->contentView());  // in place for the next time
  window->orderFront();
  EXPECT_EQ(recorder.take(), kAppears);
}

TEST_F(LifeCycleTest, OuterControllersComeBeforeInnerOnes) {
  const auto closed = closedWindow("B");
  const auto outer = recordingControllerIn(closed, "outer");
  const auto inner = recordingController("inner");
  const auto between = NSView::initWithFrame(CGRectZero);
  outer->view()->addSubview(between);
  between->addSubview(inner->view());
  closed->orderFront();
  EXPECT_EQ(recorder.take(), (Events{"outer will appear", "inner will appear", "outer did appear",
                                     "inner did appear"}));
  closed->close();
  EXPECT_EQ(recorder.take(), (Events{"outer will disappear", "inner will disappear",
                                     "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleTest, OfTwoBesideEachOtherTheBackOneComesFirst) {
  const auto closed = closedWindow("B");
  recordingControllerIn(closed, "back");
  recordingControllerIn(closed, "front");
  closed->orderFront();
  EXPECT_EQ(recorder.take(), (Events{"back will appear", "front will appear", "back did appear",
                                     "front did appear"}));
}

TEST_F(LifeCycleTest, AViewAddedInsideAShownOneAppearsAlone) {
  const auto outer = recordingControllerIn(window, "outer");
  const auto inner = recordingController("inner");
  recorder.take();
  outer->view()->addSubview(inner->view());
  EXPECT_EQ(recorder.take(), (Events{"inner will appear", "inner did appear"}));
}

// Moving

TEST_F(LifeCycleTest, AViewMovedWithinItsWindowRunsNoStep) {
  const auto view = recordingControllerIn(window, "view");
  const auto other = NSView::initWithFrame(CGRectZero);
  window->contentView()->addSubview(other);
  recorder.take();
  other->addSubview(view->view());
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_EQ(view->view()->superview(), other);
  EXPECT_EQ(window->contentView()->subviews(), NSArray<NSView>{other});
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleTest, AViewAddedToItsOwnSuperviewComesToTheFront) {
  const auto view = recordingControllerIn(window, "view");
  const auto other = NSView::initWithFrame(CGRectZero);
  window->contentView()->addSubview(other);
  recorder.take();
  window->contentView()->addSubview(view->view());
  EXPECT_EQ(window->contentView()->subviews(), (NSArray<NSView>{other, view->view()}));
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, AViewMovedToAnotherWindowDisappearsThereAndAppearsHere) {
  const auto view = recordingControllerIn(window, "view");
  const auto other = open("B");
  recorder.take();
  Events places;
  for (const std::string line :
       {"view will disappear", "view did disappear", "view will appear", "view did appear"}) {
    recorder.onNext(line, [&] { places.push_back(nameOf(view->view()->window())); });
  }
  other->contentView()->addSubview(view->view());
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear",
                                     "view will appear", "view did appear"}));
  EXPECT_EQ(places, (Events{"A", "none", "B", "B"}));
  EXPECT_TRUE(window->contentView()->subviews().empty());
}

TEST_F(LifeCycleTest, AViewMovedToAClosedWindowDisappears) {
  const auto view = recordingControllerIn(window, "view");
  recorder.take();
  closedWindow("B")->contentView()->addSubview(view->view());
  EXPECT_EQ(recorder.take(), kDisappears);
}

TEST_F(LifeCycleTest, AContentViewThatBecomesASubviewLeavesItsWindow) {
  const auto view = recordingController("view");
  window->setContentViewController(view);
  const auto other = open("B");
  recorder.take();
  other->contentView()->addSubview(view->view());
  EXPECT_EQ(window->contentView(), nullptr);
  EXPECT_EQ(nameOf(view->view()->window()), "B");
  EXPECT_EQ(recorder.take().size(), 4u);
}

// Once each

TEST_F(LifeCycleTest, AStepThatWasSentByHandIsNotSentAgainInThatShowing) {
  const auto view = recordingControllerIn(window, "view");
  recorder.take();
  view->viewDidDisappear();
  EXPECT_EQ(recorder.take(), Events{"view did disappear"});
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), Events{"view will disappear"});
}

TEST_F(LifeCycleTest, BothLastStepsByHandLeaveNothingToSend) {
  const auto view = recordingControllerIn(window, "view");
  view->viewWillDisappear();
  view->viewDidDisappear();
  recorder.take();
  view->view()->removeFromSuperview();
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, ByHandTheFirstStepsMayRunAgain) {
  const auto view = recordingControllerIn(window, "view");
  recorder.take();
  view->viewWillAppear();
  EXPECT_EQ(recorder.take(), Events{"view will appear"});
}

TEST_F(LifeCycleTest, StepsByHandBeforeAShowingDoNotCountForIt) {
  const auto view = recordingController("view");
  view->viewWillAppear();
  view->viewDidDisappear();
  recorder.take();
  window->contentView()->addSubview(view->view());
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take().size(), 4u);
}

TEST_F(LifeCycleTest, EachShowingHasItsOwnSteps) {
  const auto view = recordingControllerIn(window, "view");
  view->viewDidDisappear();
  view->view()->removeFromSuperview();
  recorder.take();
  window->contentView()->addSubview(view->view());
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take().size(), 4u);
}

TEST_F(LifeCycleTest, TheBaseClassesStepIsWhatCounts) {
  // Forgets to run the base class's step: then it has not run.
  class Forgetful final : public Class<Forgetful, "Forgetful", NSViewController> {
   public:
    void viewDidDisappear() override { ++disappeared; }
    int disappeared = 0;
  };
  const auto view = make<Forgetful>();
  window->contentView()->addSubview(view->view());
  view->viewDidDisappear();
  view->view()->removeFromSuperview();
  EXPECT_EQ(view->disappeared, 2);
}

TEST_F(LifeCycleTest, AnObserverHearsEachStepAsItBeginsWhoeverSendsIt) {
  struct Observer final : PlatformObserver {
    void lifeCycleStepBegan(NSViewController& /*controller*/, LifeCycleStep step) override {
      steps.push_back(step);
    }
    std::vector<LifeCycleStep> steps;
  } observer;
  setPlatformObserver(&observer);
  const auto view = recordingControllerIn(window, "view");
  view->viewDidDisappear();
  view->view()->removeFromSuperview();
  EXPECT_EQ(observer.steps,
            (std::vector{LifeCycleStep::WillAppear, LifeCycleStep::DidAppear,
                         LifeCycleStep::DidDisappear, LifeCycleStep::WillDisappear}));
}

}  // namespace
}  // namespace vel::test
