// Life-cycle methods of view controllers, such as `viewWillAppear`, that change views and windows.
#include <algorithm>
#include <stdexcept>

#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class LifeCycleReentryTest : public EventRecordingTest {
 protected:
  Strong<NSWindow> window = openWindow("A");
};

TEST_F(LifeCycleReentryTest, AViewDoesNotAppearIfWillAppearRemovesIt) {
  const auto controller = makeController("view");
  recorder.onNext("view will appear", [&] { controller->view()->removeFromSuperview(); });
  window->contentView()->addSubview(controller->view());
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"view will appear", "view will disappear", "view did disappear"}));
  EXPECT_FALSE(controller->isShown());
}

TEST_F(LifeCycleReentryTest, AViewDisappearsOnceIfWillDisappearRemovesItAgain) {
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  recorder.onNext("view will disappear", [&] { controller->view()->removeFromSuperview(); });
  controller->view()->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear"}));
}

TEST_F(LifeCycleReentryTest, AViewAppearsAgainIfDidDisappearAddsItAgain) {
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  recorder.onNext("view did disappear",
                  [&] { window->contentView()->addSubview(controller->view()); });
  controller->view()->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear",
                                           "view will appear", "view did appear"}));
  EXPECT_TRUE(controller->isShown());
}

TEST_F(LifeCycleReentryTest, AViewStaysInTheWindowToWhichWillDisappearMovesIt) {
  const auto controller = addController(window, "view");
  const auto otherWindow = openWindow("B");
  recorder.takeEvents();
  recorder.onNext("view will disappear",
                  [&] { otherWindow->contentView()->addSubview(controller->view()); });
  controller->view()->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear",
                                           "view will appear", "view did appear"}));
  EXPECT_EQ(nameOf(controller->view()->window()), "B");
  EXPECT_TRUE(controller->isShown());
}

TEST_F(LifeCycleReentryTest, AViewIsRemovedEvenIfALifeCycleMethodRemovesItsSuperview) {
  const auto outerController = addController(window, "outer");
  const auto innerController = makeController("inner");
  outerController->view()->addSubview(innerController->view());
  recorder.takeEvents();
  recorder.onNext("inner will disappear", [&] { outerController->view()->removeFromSuperview(); });
  innerController->view()->removeFromSuperview();
  EXPECT_EQ(innerController->view()->superview(), nullptr);
  EXPECT_EQ(recorder.takeEvents(), (Events{"inner will disappear", "outer will disappear",
                                           "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleReentryTest, ALifeCycleMethodMayReleaseTheLastReferenceToItsController) {
  Strong<RecordingController> controller = makeController("view");
  const Weak<RecordingController> weakController = controller;
  window->contentView()->addSubview(controller->view());
  recorder.takeEvents();
  recorder.onNext("view will disappear", [&] { controller.reset(); });
  window->contentView()->subviews().at(0)->removeFromSuperview();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear"}));
  EXPECT_TRUE(weakController.expired());
}

TEST_F(LifeCycleReentryTest, WillAppearOfAnOuterControllerMayRemoveAnInnerView) {
  const auto closedWindow = makeClosedWindow("B");
  const auto outerController = addController(closedWindow, "outer");
  const auto innerController = makeController("inner");
  outerController->view()->addSubview(innerController->view());
  recorder.onNext("outer will appear", [&] { innerController->view()->removeFromSuperview(); });
  closedWindow->orderFront();
  EXPECT_FALSE(innerController->isShown());
  const Events events = recorder.takeEvents();
  EXPECT_EQ(std::ranges::count(events, "inner did appear"), 0);
}

TEST_F(LifeCycleReentryTest, WillAppearOfAnOuterControllerMayAddAnInnerView) {
  const auto closedWindow = makeClosedWindow("B");
  const auto outerController = addController(closedWindow, "outer");
  const auto innerController = makeController("inner");
  recorder.onNext("outer will appear",
                  [&] { outerController->view()->addSubview(innerController->view()); });
  closedWindow->orderFront();
  EXPECT_EQ(recorder.takeEvents(), (Events{"outer will appear", "inner will appear",
                                           "inner did appear", "outer did appear"}));
}

TEST_F(LifeCycleReentryTest, WillDisappearMayAddAnInnerViewWhileTheWindowCloses) {
  const auto outerController = addController(window, "outer");
  const auto innerController = makeController("inner");
  recorder.takeEvents();
  recorder.onNext("outer will disappear",
                  [&] { outerController->view()->addSubview(innerController->view()); });
  window->close();
  EXPECT_FALSE(innerController->isShown());
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"outer will disappear", "inner will appear", "inner did appear",
                    "inner will disappear", "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleReentryTest, WillDisappearMayAddAnInnerViewWhileTheOuterViewIsRemoved) {
  const auto outerController = addController(window, "outer");
  const auto innerController = makeController("inner");
  recorder.takeEvents();
  recorder.onNext("outer will disappear",
                  [&] { outerController->view()->addSubview(innerController->view()); });
  outerController->view()->removeFromSuperview();
  EXPECT_FALSE(innerController->isShown());
}

TEST_F(LifeCycleReentryTest, DidAppearIsCalledOnceIfWillAppearClosesAndReopensTheWindow) {
  const auto closedWindow = makeClosedWindow("B");
  addController(closedWindow, "view");
  recorder.onNext("view will appear", [&] {
    closedWindow->close();
    closedWindow->orderFront();
  });
  closedWindow->orderFront();
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"view will appear", "view will disappear", "view did disappear",
                    "view will appear", "view did appear"}));
  EXPECT_EQ(windowOrder(), (Events{"B", "A"}));
}

TEST_F(LifeCycleReentryTest, AWindowCanBeClosedAfterALifeCycleMethodHasThrown) {
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  recorder.onNext("view will disappear", [] { throw std::runtime_error("stop"); });
  EXPECT_THROW(window->close(), std::runtime_error);
  EXPECT_TRUE(window->isVisible());
  window->close();  // does not call `viewWillDisappear` again
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear"}));
}

}  // namespace
}  // namespace vel::test
