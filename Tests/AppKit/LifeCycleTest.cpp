// The four life-cycle steps of a view controller: will appear, did appear, will disappear, did
// disappear.
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
  const auto view = addController(window, "view");
  EXPECT_EQ(recorder.take(), kAppears);
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleTest, AViewAddedToAClosedWindowDoesNotAppear) {
  const auto view = addController(makeClosedWindow("B"), "view");
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, AViewOutsideAWindowDoesNotAppear) {
  const auto view = makeController("view");
  NSView::initWithFrame(CGRectZero)->addSubview(view->view());
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, AnAddedViewIsInItsWindowInBothSteps) {
  const auto view = makeController("view");
  Events windows;
  const auto recordWindow = [&] { windows.push_back(nameOf(view->view()->window())); };
  recorder.onNext("view will appear", recordWindow);
  recorder.onNext("view did appear", recordWindow);
  window->contentView()->addSubview(view->view());
  EXPECT_EQ(windows, (Events{"A", "A"}));
}

TEST_F(LifeCycleTest, AViewAppearsWhenItsWindowOpens) {
  const auto closed = makeClosedWindow("B");
  addController(closed, "view");
  closed->orderFront();
  EXPECT_EQ(recorder.take(), kAppears);
}

TEST_F(LifeCycleTest, OrderingAnOpenWindowFrontRunsNoStep) {
  addController(window, "view");
  recorder.take();
  window->orderFront();
  window->makeKeyAndOrderFront();
  EXPECT_EQ(recorder.take(), Events{"A becomes key"});
}

TEST_F(LifeCycleTest, AnOpeningWindowIsOpenButNotOnScreenInWillAppear) {
  const auto closed = makeClosedWindow("B");
  addController(closed, "view");
  bool isOpen = false;
  Events onScreen;
  recorder.onNext("view will appear", [&] {
    isOpen = closed->isVisible();
    onScreen = windowOrder();
  });
  closed->orderFront();
  EXPECT_TRUE(isOpen);
  EXPECT_EQ(onScreen, Events{"A"});
}

TEST_F(LifeCycleTest, AnOpeningWindowIsOnScreenInDidAppear) {
  const auto closed = makeClosedWindow("B");
  addController(closed, "view");
  Events onScreen;
  recorder.onNext("view did appear", [&] { onScreen = windowOrder(); });
  closed->orderFront();
  EXPECT_EQ(onScreen, (Events{"B", "A"}));
}

TEST_F(LifeCycleTest, AnOpeningWindowBecomesKeyBetweenTheTwoSteps) {
  const auto closed = makeClosedWindow("B");
  addController(closed, "view");
  closed->makeKeyAndOrderFront();
  EXPECT_EQ(recorder.take(), (Events{"view will appear", "B becomes key", "view did appear"}));
}

TEST_F(LifeCycleTest, TheContentViewControllerOfAnOpenWindowAppears) {
  const auto view = makeController("view");
  recorder.onNext("view will appear", [&] { EXPECT_EQ(window->contentView(), view->view()); });
  window->setContentViewController(view);
  EXPECT_EQ(recorder.take(), kAppears);
  EXPECT_EQ(window->contentViewController(), view);
  EXPECT_EQ(view->view()->frame(), window->contentView()->frame());
}

TEST_F(LifeCycleTest, AReplacedContentViewControllerDisappearsFirst) {
  window->setContentViewController(makeController("previous"));  // Only the window keeps it alive.
  recorder.take();
  window->setContentViewController(makeController("view"));
  EXPECT_EQ(recorder.take(), (Events{"previous will disappear", "previous did disappear",
                                     "view will appear", "view did appear"}));
}

TEST_F(LifeCycleTest, RemovingTheContentViewControllerLeavesAPlainView) {
  window->setContentViewController(makeController("view"));
  recorder.take();
  window->setContentViewController(nullptr);
  EXPECT_EQ(recorder.take(), kDisappears);
  ASSERT_NE(window->contentView(), nullptr);
  EXPECT_EQ(window->contentView()->viewController(), nullptr);
}

TEST_F(LifeCycleTest, SettingTheSameContentViewControllerAgainRunsNoStep) {
  const auto view = makeController("view");
  window->setContentViewController(view);
  recorder.take();
  window->setContentViewController(view);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, ARemovedViewDisappears) {
  const auto view = addController(window, "view");
  recorder.take();
  Events windows;
  const auto recordWindow = [&] { windows.push_back(nameOf(view->view()->window())); };
  recorder.onNext("view will disappear", recordWindow);
  recorder.onNext("view did disappear", recordWindow);
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), kDisappears);
  EXPECT_EQ(windows, (Events{"A", "none"}));
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, ARemovedContentViewDisappears) {
  window->setContentViewController(makeController("view"));
  recorder.take();
  window->contentView()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), kDisappears);
  EXPECT_EQ(window->contentView(), nullptr);
}

TEST_F(LifeCycleTest, AViewDisappearsWhenItsWindowCloses) {
  const auto view = addController(window, "view");
  recorder.take();
  Events states;
  recorder.onNext("view will disappear",
                  [&] { states.push_back(windowOrder().empty() ? "closed" : "open"); });
  recorder.onNext("view did disappear",
                  [&] { states.push_back(windowOrder().empty() ? "closed" : "open"); });
  window->close();
  EXPECT_EQ(recorder.take(), kDisappears);
  EXPECT_EQ(states, (Events{"open", "closed"}));
  EXPECT_EQ(view->view()->superview(),
            window->contentView());  // The view stays in the closed window.
  window->orderFront();
  EXPECT_EQ(recorder.take(), kAppears);
}

TEST_F(LifeCycleTest, StepsRunForOuterControllersBeforeInnerOnes) {
  const auto closed = makeClosedWindow("B");
  const auto outer = addController(closed, "outer");
  const auto inner = makeController("inner");
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

TEST_F(LifeCycleTest, StepsRunForSiblingsFromBackToFront) {
  const auto closed = makeClosedWindow("B");
  addController(closed, "back");
  addController(closed, "front");
  closed->orderFront();
  EXPECT_EQ(recorder.take(), (Events{"back will appear", "front will appear", "back did appear",
                                     "front did appear"}));
}

TEST_F(LifeCycleTest, AddingASubviewRunsNoStepForItsSuperview) {
  const auto outer = addController(window, "outer");
  const auto inner = makeController("inner");
  recorder.take();
  outer->view()->addSubview(inner->view());
  EXPECT_EQ(recorder.take(), (Events{"inner will appear", "inner did appear"}));
}

// Moving

TEST_F(LifeCycleTest, MovingAViewWithinItsWindowRunsNoStep) {
  const auto view = addController(window, "view");
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
  const auto view = addController(window, "view");
  const auto other = NSView::initWithFrame(CGRectZero);
  window->contentView()->addSubview(other);
  recorder.take();
  window->contentView()->addSubview(view->view());
  EXPECT_EQ(window->contentView()->subviews(), (NSArray<NSView>{other, view->view()}));
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, AViewMovedToAnotherWindowDisappearsAndAppears) {
  const auto view = addController(window, "view");
  const auto other = open("B");
  recorder.take();
  Events windows;
  for (const std::string line :
       {"view will disappear", "view did disappear", "view will appear", "view did appear"}) {
    recorder.onNext(line, [&] { windows.push_back(nameOf(view->view()->window())); });
  }
  other->contentView()->addSubview(view->view());
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear",
                                     "view will appear", "view did appear"}));
  EXPECT_EQ(windows, (Events{"A", "none", "B", "B"}));
  EXPECT_TRUE(window->contentView()->subviews().empty());
}

TEST_F(LifeCycleTest, AViewMovedToAClosedWindowDisappears) {
  const auto view = addController(window, "view");
  recorder.take();
  makeClosedWindow("B")->contentView()->addSubview(view->view());
  EXPECT_EQ(recorder.take(), kDisappears);
}

TEST_F(LifeCycleTest, AContentViewThatBecomesASubviewLeavesItsWindow) {
  const auto view = makeController("view");
  window->setContentViewController(view);
  const auto other = open("B");
  recorder.take();
  other->contentView()->addSubview(view->view());
  EXPECT_EQ(window->contentView(), nullptr);
  EXPECT_EQ(nameOf(view->view()->window()), "B");
  EXPECT_EQ(recorder.take().size(), 4u);
}

// Steps that a host calls itself

TEST_F(LifeCycleTest, AStepThatTheHostHasCalledDoesNotRunAgain) {
  const auto view = addController(window, "view");
  recorder.take();
  view->viewDidDisappear();
  EXPECT_EQ(recorder.take(), Events{"view did disappear"});
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), Events{"view will disappear"});
}

TEST_F(LifeCycleTest, IfTheHostCallsBothLastStepsNoStepRuns) {
  const auto view = addController(window, "view");
  view->viewWillDisappear();
  view->viewDidDisappear();
  recorder.take();
  view->view()->removeFromSuperview();
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleTest, TheHostMayCallTheFirstStepsAgain) {
  const auto view = addController(window, "view");
  recorder.take();
  view->viewWillAppear();
  EXPECT_EQ(recorder.take(), Events{"view will appear"});
}

TEST_F(LifeCycleTest, StepsThatTheHostCallsBeforeAViewAppearsRunAgain) {
  const auto view = makeController("view");
  view->viewWillAppear();
  view->viewDidDisappear();
  recorder.take();
  window->contentView()->addSubview(view->view());
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take().size(), 4u);
}

TEST_F(LifeCycleTest, AllStepsRunEachTimeTheViewAppearsAndDisappears) {
  const auto view = addController(window, "view");
  view->viewDidDisappear();
  view->view()->removeFromSuperview();
  recorder.take();
  window->contentView()->addSubview(view->view());
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take().size(), 4u);
}

TEST_F(LifeCycleTest, AStepThatDoesNotCallItsBaseClassRunsAgain) {
  class BaseSkippingController final
      : public Class<BaseSkippingController, "BaseSkippingController", NSViewController> {
   public:
    void viewDidDisappear() override { ++disappearCount; }
    int disappearCount = 0;
  };
  const auto view = make<BaseSkippingController>();
  window->contentView()->addSubview(view->view());
  view->viewDidDisappear();
  view->view()->removeFromSuperview();
  EXPECT_EQ(view->disappearCount, 2);
}

TEST_F(LifeCycleTest, ThePlatformObserverReceivesEachStepIncludingTheHostsCalls) {
  struct Observer final : PlatformObserver {
    void lifeCycleStepBegan(NSViewController& /*controller*/, LifeCycleStep step) override {
      steps.push_back(step);
    }
    std::vector<LifeCycleStep> steps;
  } observer;
  setPlatformObserver(&observer);
  const auto view = addController(window, "view");
  view->viewDidDisappear();
  view->view()->removeFromSuperview();
  EXPECT_EQ(observer.steps,
            (std::vector{LifeCycleStep::WillAppear, LifeCycleStep::DidAppear,
                         LifeCycleStep::DidDisappear, LifeCycleStep::WillDisappear}));
}

}  // namespace
}  // namespace vel::test
