// The four life-cycle methods of a view controller: will appear, did appear, will disappear, did
// disappear.
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class LifeCycleTest : public EventRecordingTest {
 protected:
  const Events kAppearEvents{"view will appear", "view did appear"};
  const Events kDisappearEvents{"view will disappear", "view did disappear"};

  Strong<NSWindow> window = openWindow("A");
};

TEST_F(LifeCycleTest, AViewAddedToAnOpenWindowAppears) {
  const auto controller = addController(window, "view");
  EXPECT_EQ(recorder.takeEvents(), kAppearEvents);
  EXPECT_TRUE(controller->isShown());
}

TEST_F(LifeCycleTest, AViewAddedToAClosedWindowDoesNotAppear) {
  const auto controller = addController(makeClosedWindow("B"), "view");
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_FALSE(controller->isShown());
}

TEST_F(LifeCycleTest, AViewOutsideAWindowDoesNotAppear) {
  const auto controller = makeController("view");
  NSView::initWithFrame(CGRectZero)->addSubview(controller->view());
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, AnAddedViewHasItsWindowDuringWillAppearAndDidAppear) {
  const auto controller = makeController("view");
  Events windows;
  const auto recordWindow = [&] { windows.push_back(nameOf(controller->view()->window())); };
  recorder.onNext("view will appear", recordWindow);
  recorder.onNext("view did appear", recordWindow);
  window->contentView()->addSubview(controller->view());
  EXPECT_EQ(windows, (Events{"A", "A"}));
}

TEST_F(LifeCycleTest, AViewAppearsWhenItsWindowOpens) {
  const auto closedWindow = makeClosedWindow("B");
  addController(closedWindow, "view");
  closedWindow->orderFront();
  EXPECT_EQ(recorder.takeEvents(), kAppearEvents);
}

TEST_F(LifeCycleTest, OrderingAnOpenWindowFrontCallsNoLifeCycleMethod) {
  addController(window, "view");
  recorder.takeEvents();
  window->orderFront();
  window->makeKeyAndOrderFront();
  EXPECT_EQ(recorder.takeEvents(), Events{"A becomes key"});
}

TEST_F(LifeCycleTest, AnOpeningWindowIsVisibleButNotOnScreenDuringWillAppear) {
  const auto closedWindow = makeClosedWindow("B");
  addController(closedWindow, "view");
  bool isVisible = false;
  Events windowsOnScreen;
  recorder.onNext("view will appear", [&] {
    isVisible = closedWindow->isVisible();
    windowsOnScreen = windowOrder();
  });
  closedWindow->orderFront();
  EXPECT_TRUE(isVisible);
  EXPECT_EQ(windowsOnScreen, Events{"A"});
}

TEST_F(LifeCycleTest, AnOpeningWindowIsOnScreenDuringDidAppear) {
  const auto closedWindow = makeClosedWindow("B");
  addController(closedWindow, "view");
  Events windowsOnScreen;
  recorder.onNext("view did appear", [&] { windowsOnScreen = windowOrder(); });
  closedWindow->orderFront();
  EXPECT_EQ(windowsOnScreen, (Events{"B", "A"}));
}

TEST_F(LifeCycleTest, AnOpeningWindowBecomesKeyBetweenWillAppearAndDidAppear) {
  const auto closedWindow = makeClosedWindow("B");
  addController(closedWindow, "view");
  closedWindow->makeKeyAndOrderFront();
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"view will appear", "B becomes key", "view did appear"}));
}

TEST_F(LifeCycleTest, TheContentViewControllerOfAnOpenWindowAppears) {
  const auto controller = makeController("view");
  recorder.onNext("view will appear",
                  [&] { EXPECT_EQ(window->contentView(), controller->view()); });
  window->setContentViewController(controller);
  EXPECT_EQ(recorder.takeEvents(), kAppearEvents);
  EXPECT_EQ(window->contentViewController(), controller);
  EXPECT_EQ(controller->view()->frame(), CGRectMake(0, 0, 1000, 600));  // fills the window
}

TEST_F(LifeCycleTest, AReplacedContentViewControllerDisappearsBeforeTheNewOneAppears) {
  window->setContentViewController(makeController("previous"));  // Only the window keeps it alive.
  recorder.takeEvents();
  window->setContentViewController(makeController("view"));
  EXPECT_EQ(recorder.takeEvents(), (Events{"previous will disappear", "previous did disappear",
                                           "view will appear", "view did appear"}));
}

TEST_F(LifeCycleTest, RemovingTheContentViewControllerLeavesAViewWithoutAController) {
  window->setContentViewController(makeController("view"));
  recorder.takeEvents();
  window->setContentViewController(nullptr);
  EXPECT_EQ(recorder.takeEvents(), kDisappearEvents);
  ASSERT_NE(window->contentView(), nullptr);
  EXPECT_EQ(window->contentView()->viewController(), nullptr);
}

TEST_F(LifeCycleTest, SettingTheSameContentViewControllerAgainCallsNoLifeCycleMethod) {
  const auto controller = makeController("view");
  window->setContentViewController(controller);
  recorder.takeEvents();
  window->setContentViewController(controller);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, ARemovedViewDisappears) {
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  Events windows;
  const auto recordWindow = [&] { windows.push_back(nameOf(controller->view()->window())); };
  recorder.onNext("view will disappear", recordWindow);
  recorder.onNext("view did disappear", recordWindow);
  controller->view()->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), kDisappearEvents);
  EXPECT_EQ(windows, (Events{"A", "none"}));
  EXPECT_FALSE(controller->isShown());
}

TEST_F(LifeCycleTest, ARemovedContentViewDisappears) {
  window->setContentViewController(makeController("view"));
  recorder.takeEvents();
  window->contentView()->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), kDisappearEvents);
  EXPECT_EQ(window->contentView(), nullptr);
}

TEST_F(LifeCycleTest, AViewDisappearsWhenItsWindowCloses) {
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  Events states;
  recorder.onNext("view will disappear",
                  [&] { states.push_back(windowOrder().empty() ? "off screen" : "on screen"); });
  recorder.onNext("view did disappear",
                  [&] { states.push_back(windowOrder().empty() ? "off screen" : "on screen"); });
  window->close();
  EXPECT_EQ(recorder.takeEvents(), kDisappearEvents);
  EXPECT_EQ(states, (Events{"on screen", "off screen"}));
  EXPECT_EQ(controller->view()->superview(),
            window->contentView());  // The view stays in the closed window.
  window->orderFront();
  EXPECT_EQ(recorder.takeEvents(), kAppearEvents);
}

TEST_F(LifeCycleTest, MethodsAreCalledOnOuterControllersBeforeInnerControllers) {
  const auto closedWindow = makeClosedWindow("B");
  const auto outerController = addController(closedWindow, "outer");
  const auto innerController = makeController("inner");
  const auto middleView = NSView::initWithFrame(CGRectZero);
  outerController->view()->addSubview(middleView);
  middleView->addSubview(innerController->view());
  closedWindow->orderFront();
  EXPECT_EQ(recorder.takeEvents(), (Events{"outer will appear", "inner will appear",
                                           "outer did appear", "inner did appear"}));
  closedWindow->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"outer will disappear", "inner will disappear",
                                           "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleTest, MethodsAreCalledOnSiblingsFromBackToFront) {
  const auto closedWindow = makeClosedWindow("B");
  addController(closedWindow, "back");
  addController(closedWindow, "front");
  closedWindow->orderFront();
  EXPECT_EQ(recorder.takeEvents(), (Events{"back will appear", "front will appear",
                                           "back did appear", "front did appear"}));
}

TEST_F(LifeCycleTest, AddingASubviewCallsNoLifeCycleMethodOfTheOuterController) {
  const auto outerController = addController(window, "outer");
  const auto innerController = makeController("inner");
  recorder.takeEvents();
  outerController->view()->addSubview(innerController->view());
  EXPECT_EQ(recorder.takeEvents(), (Events{"inner will appear", "inner did appear"}));
}

// Moving a view to another superview

TEST_F(LifeCycleTest, MovingAViewWithinItsWindowCallsNoLifeCycleMethod) {
  const auto controller = addController(window, "view");
  const auto otherView = NSView::initWithFrame(CGRectZero);
  window->contentView()->addSubview(otherView);
  recorder.takeEvents();
  otherView->addSubview(controller->view());
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_EQ(controller->view()->superview(), otherView);
  EXPECT_EQ(window->contentView()->subviews(), NSArray<NSView>{otherView});
  EXPECT_TRUE(controller->isShown());
}

TEST_F(LifeCycleTest, AViewAddedAgainToItsSuperviewComesToTheFront) {
  const auto controller = addController(window, "view");
  const auto otherView = NSView::initWithFrame(CGRectZero);
  window->contentView()->addSubview(otherView);
  recorder.takeEvents();
  window->contentView()->addSubview(controller->view());
  EXPECT_EQ(window->contentView()->subviews(), (NSArray<NSView>{otherView, controller->view()}));
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LifeCycleTest, AViewMovedToAnotherWindowDisappearsAndAppears) {
  const auto controller = addController(window, "view");
  const auto otherWindow = openWindow("B");
  recorder.takeEvents();
  Events windows;
  for (const std::string event :
       {"view will disappear", "view did disappear", "view will appear", "view did appear"}) {
    recorder.onNext(event, [&] { windows.push_back(nameOf(controller->view()->window())); });
  }
  otherWindow->contentView()->addSubview(controller->view());
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear",
                                           "view will appear", "view did appear"}));
  EXPECT_EQ(windows, (Events{"A", "none", "B", "B"}));
  EXPECT_TRUE(window->contentView()->subviews().empty());
}

TEST_F(LifeCycleTest, AViewMovedToAClosedWindowDisappears) {
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  makeClosedWindow("B")->contentView()->addSubview(controller->view());
  EXPECT_EQ(recorder.takeEvents(), kDisappearEvents);
}

TEST_F(LifeCycleTest, AContentViewThatBecomesASubviewLeavesItsWindow) {
  const auto controller = makeController("view");
  window->setContentViewController(controller);
  const auto otherWindow = openWindow("B");
  recorder.takeEvents();
  otherWindow->contentView()->addSubview(controller->view());
  EXPECT_EQ(window->contentView(), nullptr);
  EXPECT_EQ(nameOf(controller->view()->window()), "B");
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear",
                                           "view will appear", "view did appear"}));
}

// Life-cycle methods that the host calls. The host is the program that uses the library.

TEST_F(LifeCycleTest, RemovingAViewDoesNotRepeatADisappearMethodThatTheHostHasCalled) {
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  controller->viewDidDisappear();
  EXPECT_EQ(recorder.takeEvents(), Events{"view did disappear"});
  controller->view()->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), Events{"view will disappear"});
}

TEST_F(LifeCycleTest, RemovingAViewCallsNoDisappearMethodIfTheHostHasCalledBoth) {
  const auto controller = addController(window, "view");
  controller->viewWillDisappear();
  controller->viewDidDisappear();
  recorder.takeEvents();
  controller->view()->removeFromSuperview();
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_FALSE(controller->isShown());
}

TEST_F(LifeCycleTest, TheHostMayCallTheAppearMethodsAgain) {
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  controller->viewWillAppear();
  EXPECT_EQ(recorder.takeEvents(), Events{"view will appear"});
}

TEST_F(LifeCycleTest, AddingAndRemovingAViewCallsAllMethodsDespiteEarlierCallsByTheHost) {
  const auto controller = makeController("view");
  controller->viewWillAppear();
  controller->viewDidDisappear();
  recorder.takeEvents();
  window->contentView()->addSubview(controller->view());
  controller->view()->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will appear", "view did appear",
                                           "view will disappear", "view did disappear"}));
}

TEST_F(LifeCycleTest, TheHostsCallOfADisappearMethodDoesNotAffectTheNextAppearance) {
  const auto controller = addController(window, "view");
  controller->viewDidDisappear();
  controller->view()->removeFromSuperview();
  recorder.takeEvents();
  window->contentView()->addSubview(controller->view());
  controller->view()->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will appear", "view did appear",
                                           "view will disappear", "view did disappear"}));
}

TEST_F(LifeCycleTest, RemovingAViewRepeatsTheHostsCallIfTheOverrideSkipsTheBaseMethod) {
  class BaseSkippingController final
      : public Class<BaseSkippingController, "BaseSkippingController", NSViewController> {
   public:
    void viewDidDisappear() override { ++disappearCount; }
    int disappearCount = 0;
  };
  const auto controller = make<BaseSkippingController>();
  window->contentView()->addSubview(controller->view());
  controller->viewDidDisappear();
  controller->view()->removeFromSuperview();
  EXPECT_EQ(controller->disappearCount, 2);
}

TEST_F(LifeCycleTest, ThePlatformObserverReceivesEachCallIncludingTheHostsCalls) {
  struct Observer final : PlatformObserver {
    void lifeCycleMethodCalled(NSViewController& /*controller*/, LifeCycleMethod method) override {
      methods.push_back(method);
    }
    std::vector<LifeCycleMethod> methods;
  } observer;
  setPlatformObserver(&observer);
  const auto controller = addController(window, "view");
  controller->viewDidDisappear();
  controller->view()->removeFromSuperview();
  EXPECT_EQ(observer.methods,
            (std::vector{LifeCycleMethod::WillAppear, LifeCycleMethod::DidAppear,
                         LifeCycleMethod::DidDisappear, LifeCycleMethod::WillDisappear}));
}

}  // namespace
}  // namespace vel::test
