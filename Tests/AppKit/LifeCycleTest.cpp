// The four steps of a controller's life on screen.
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/AppKit/Stage.h"

namespace vel::test {
namespace {

class LifeCycleTest : public StageTest {
 protected:
  const Story kAppears{"view will appear", "view did appear"};
  const Story kDisappears{"view will disappear", "view did disappear"};

  Strong<NSWindow> window = open("A");
};

TEST_F(LifeCycleTest, AViewAddedToAnOpenWindowAppears) {
  const auto view = actorIn(window, "view");
  EXPECT_EQ(stage.take(), kAppears);
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleTest, AViewAddedToAClosedWindowDoesNot) {
  const auto view = actorIn(closedWindow("B"), "view");
  EXPECT_TRUE(stage.story.empty());
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, AViewInNoWindowDoesNot) {
  const auto view = actor("view");
  NSView::initWithFrame(CGRectZero)->addSubview(view->view());
  EXPECT_TRUE(stage.story.empty());
}

TEST_F(LifeCycleTest, AViewAddedIsInPlaceInBothSteps) {
  const auto view = actor("view");
  Story places;
  const auto look = [&] { places.push_back(nameOf(view->view()->window())); };
  stage.at("view will appear", look);
  stage.at("view did appear", look);
  window->contentView()->addSubview(view->view());
  EXPECT_EQ(places, (Story{"A", "A"}));
}

TEST_F(LifeCycleTest, OrderingAWindowInShowsTheControllersInIt) {
  const auto closed = closedWindow("B");
  actorIn(closed, "view");
  closed->orderFront();
  EXPECT_EQ(stage.take(), kAppears);
}

TEST_F(LifeCycleTest, OrderingAnOpenWindowToTheFrontRunsNoStep) {
  actorIn(window, "view");
  stage.take();
  window->orderFront();
  window->makeKeyAndOrderFront();
  EXPECT_EQ(stage.take(), Story{"A becomes key"});
}

TEST_F(LifeCycleTest, WhenAWindowIsOrderedInTheFirstStepFindsItOpenButNotOnScreen) {
  const auto closed = closedWindow("B");
  actorIn(closed, "view");
  bool isOpen = false;
  Story onScreen;
  stage.at("view will appear", [&] {
    isOpen = closed->isVisible();
    onScreen = order();
  });
  closed->orderFront();
  EXPECT_TRUE(isOpen);
  EXPECT_EQ(onScreen, Story{"A"});
}

TEST_F(LifeCycleTest, WhenAWindowIsOrderedInTheSecondStepFindsItOnScreen) {
  const auto closed = closedWindow("B");
  actorIn(closed, "view");
  Story onScreen;
  stage.at("view did appear", [&] { onScreen = order(); });
  closed->orderFront();
  EXPECT_EQ(onScreen, (Story{"B", "A"}));
}

TEST_F(LifeCycleTest, AWindowBecomesKeyBetweenTheTwoSteps) {
  const auto closed = closedWindow("B");
  actorIn(closed, "view");
  closed->makeKeyAndOrderFront();
  EXPECT_EQ(stage.take(), (Story{"view will appear", "B becomes key", "view did appear"}));
}

TEST_F(LifeCycleTest, TheContentViewControllerOfAnOpenWindowAppears) {
  const auto view = actor("view");
  stage.at("view will appear", [&] { EXPECT_EQ(window->contentView(), view->view()); });
  window->setContentViewController(view);
  EXPECT_EQ(stage.take(), kAppears);
  EXPECT_EQ(window->contentViewController(), view);
  EXPECT_EQ(view->view()->frame(), window->contentView()->frame());
}

TEST_F(LifeCycleTest, AReplacedContentViewControllerDisappearsFirst) {
  window->setContentViewController(actor("former"));  // only the window keeps it
  stage.take();
  window->setContentViewController(actor("view"));
  EXPECT_EQ(stage.take(), (Story{"former will disappear", "former did disappear",
                                 "view will appear", "view did appear"}));
}

TEST_F(LifeCycleTest, NoContentViewControllerGivesAPlainView) {
  window->setContentViewController(actor("view"));
  stage.take();
  window->setContentViewController(nullptr);
  EXPECT_EQ(stage.take(), kDisappears);
  ASSERT_NE(window->contentView(), nullptr);
  EXPECT_EQ(window->contentView()->viewController(), nullptr);
}

TEST_F(LifeCycleTest, TheSameContentViewControllerAgainRunsNoStep) {
  const auto view = actor("view");
  window->setContentViewController(view);
  stage.take();
  window->setContentViewController(view);
  EXPECT_TRUE(stage.story.empty());
}

TEST_F(LifeCycleTest, AViewTakenAwayDisappears) {
  const auto view = actorIn(window, "view");
  stage.take();
  Story places;
  const auto look = [&] { places.push_back(nameOf(view->view()->window())); };
  stage.at("view will disappear", look);
  stage.at("view did disappear", look);
  view->view()->removeFromSuperview();
  EXPECT_EQ(stage.take(), kDisappears);
  EXPECT_EQ(places, (Story{"A", "none"}));
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, TheContentViewTakenAwayDisappears) {
  window->setContentViewController(actor("view"));
  stage.take();
  window->contentView()->removeFromSuperview();
  EXPECT_EQ(stage.take(), kDisappears);
  EXPECT_EQ(window->contentView(), nullptr);
}

TEST_F(LifeCycleTest, ClosingAWindowLetsItsControllersDisappear) {
  const auto view = actorIn(window, "view");
  stage.take();
  Story onScreen;
  stage.at("view will disappear", [&] { onScreen.push_back(order().empty() ? "closed" : "open"); });
  stage.at("view did disappear", [&] { onScreen.push_back(order().empty() ? "closed" : "open"); });
  window->close();
  EXPECT_EQ(stage.take(), kDisappears);
  EXPECT_EQ(onScreen, (Story{"open", "closed"}));
  EXPECT_EQ(view->view()->superview(), window->contentView());  // in place for the next time
  window->orderFront();
  EXPECT_EQ(stage.take(), kAppears);
}

TEST_F(LifeCycleTest, OuterControllersComeBeforeInnerOnes) {
  const auto closed = closedWindow("B");
  const auto outer = actorIn(closed, "outer");
  const auto inner = actor("inner");
  const auto between = NSView::initWithFrame(CGRectZero);
  outer->view()->addSubview(between);
  between->addSubview(inner->view());
  closed->orderFront();
  EXPECT_EQ(stage.take(), (Story{"outer will appear", "inner will appear", "outer did appear",
                                 "inner did appear"}));
  closed->close();
  EXPECT_EQ(stage.take(), (Story{"outer will disappear", "inner will disappear",
                                 "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleTest, OfTwoBesideEachOtherTheBackOneComesFirst) {
  const auto closed = closedWindow("B");
  actorIn(closed, "back");
  actorIn(closed, "front");
  closed->orderFront();
  EXPECT_EQ(stage.take(), (Story{"back will appear", "front will appear", "back did appear",
                                 "front did appear"}));
}

TEST_F(LifeCycleTest, AViewAddedInsideAShownOneAppearsAlone) {
  const auto outer = actorIn(window, "outer");
  const auto inner = actor("inner");
  stage.take();
  outer->view()->addSubview(inner->view());
  EXPECT_EQ(stage.take(), (Story{"inner will appear", "inner did appear"}));
}

// Moving

TEST_F(LifeCycleTest, AViewMovedWithinItsWindowRunsNoStep) {
  const auto view = actorIn(window, "view");
  const auto other = NSView::initWithFrame(CGRectZero);
  window->contentView()->addSubview(other);
  stage.take();
  other->addSubview(view->view());
  EXPECT_TRUE(stage.story.empty());
  EXPECT_EQ(view->view()->superview(), other);
  EXPECT_EQ(window->contentView()->subviews(), NSArray<NSView>{other});
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleTest, AViewAddedToItsOwnSuperviewComesToTheFront) {
  const auto view = actorIn(window, "view");
  const auto other = NSView::initWithFrame(CGRectZero);
  window->contentView()->addSubview(other);
  stage.take();
  window->contentView()->addSubview(view->view());
  EXPECT_EQ(window->contentView()->subviews(), (NSArray<NSView>{other, view->view()}));
  EXPECT_TRUE(stage.story.empty());
}

TEST_F(LifeCycleTest, AViewMovedToAnotherWindowDisappearsThereAndAppearsHere) {
  const auto view = actorIn(window, "view");
  const auto other = open("B");
  stage.take();
  Story places;
  for (const std::string line :
       {"view will disappear", "view did disappear", "view will appear", "view did appear"}) {
    stage.at(line, [&] { places.push_back(nameOf(view->view()->window())); });
  }
  other->contentView()->addSubview(view->view());
  EXPECT_EQ(stage.take(), (Story{"view will disappear", "view did disappear", "view will appear",
                                 "view did appear"}));
  EXPECT_EQ(places, (Story{"A", "none", "B", "B"}));
  EXPECT_TRUE(window->contentView()->subviews().empty());
}

TEST_F(LifeCycleTest, AViewMovedToAClosedWindowDisappears) {
  const auto view = actorIn(window, "view");
  stage.take();
  closedWindow("B")->contentView()->addSubview(view->view());
  EXPECT_EQ(stage.take(), kDisappears);
}

TEST_F(LifeCycleTest, AContentViewThatBecomesASubviewLeavesItsWindow) {
  const auto view = actor("view");
  window->setContentViewController(view);
  const auto other = open("B");
  stage.take();
  other->contentView()->addSubview(view->view());
  EXPECT_EQ(window->contentView(), nullptr);
  EXPECT_EQ(nameOf(view->view()->window()), "B");
  EXPECT_EQ(stage.take().size(), 4u);
}

// Once each

TEST_F(LifeCycleTest, AStepThatWasSentByHandIsNotSentAgainInThatShowing) {
  const auto view = actorIn(window, "view");
  stage.take();
  view->viewDidDisappear();
  EXPECT_EQ(stage.take(), Story{"view did disappear"});
  view->view()->removeFromSuperview();
  EXPECT_EQ(stage.take(), Story{"view will disappear"});
}

TEST_F(LifeCycleTest, BothLastStepsByHandLeaveNothingToSend) {
  const auto view = actorIn(window, "view");
  view->viewWillDisappear();
  view->viewDidDisappear();
  stage.take();
  view->view()->removeFromSuperview();
  EXPECT_TRUE(stage.story.empty());
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, ByHandTheFirstStepsMayRunAgain) {
  const auto view = actorIn(window, "view");
  stage.take();
  view->viewWillAppear();
  EXPECT_EQ(stage.take(), Story{"view will appear"});
}

TEST_F(LifeCycleTest, StepsByHandBeforeAShowingDoNotCountForIt) {
  const auto view = actor("view");
  view->viewWillAppear();
  view->viewDidDisappear();
  stage.take();
  window->contentView()->addSubview(view->view());
  view->view()->removeFromSuperview();
  EXPECT_EQ(stage.take().size(), 4u);
}

TEST_F(LifeCycleTest, EachShowingHasItsOwnSteps) {
  const auto view = actorIn(window, "view");
  view->viewDidDisappear();
  view->view()->removeFromSuperview();
  stage.take();
  window->contentView()->addSubview(view->view());
  view->view()->removeFromSuperview();
  EXPECT_EQ(stage.take().size(), 4u);
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
  const auto view = actorIn(window, "view");
  view->viewDidDisappear();
  view->view()->removeFromSuperview();
  EXPECT_EQ(observer.steps,
            (std::vector{LifeCycleStep::WillAppear, LifeCycleStep::DidAppear,
                         LifeCycleStep::DidDisappear, LifeCycleStep::WillDisappear}));
}

}  // namespace
}  // namespace vel::test
