// Life-cycle steps that change the windows and views that are on screen.
#include <algorithm>
#include <stdexcept>

#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class LifeCycleReentryTest : public RecordedTest {
 protected:
  Strong<NSWindow> window = open("A");
};

TEST_F(LifeCycleReentryTest, AViewRemovedInWillAppearDoesNotAppear) {
  const auto view = makeController("view");
  recorder.onNext("view will appear", [&] { view->view()->removeFromSuperview(); });
  window->contentView()->addSubview(view->view());
  EXPECT_EQ(recorder.take(),
            (Events{"view will appear", "view will disappear", "view did disappear"}));
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleReentryTest, AViewRemovedAgainInWillDisappearDisappearsOnce) {
  const auto view = addController(window, "view");
  recorder.take();
  recorder.onNext("view will disappear", [&] { view->view()->removeFromSuperview(); });
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear"}));
}

TEST_F(LifeCycleReentryTest, AViewAddedAgainInDidDisappearAppearsAgain) {
  const auto view = addController(window, "view");
  recorder.take();
  recorder.onNext("view did disappear", [&] { window->contentView()->addSubview(view->view()); });
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear",
                                     "view will appear", "view did appear"}));
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleReentryTest, AViewMovedToAnotherWindowInWillDisappearStaysThere) {
  const auto view = addController(window, "view");
  const auto other = open("B");
  recorder.take();
  recorder.onNext("view will disappear", [&] { other->contentView()->addSubview(view->view()); });
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear",
                                     "view will appear", "view did appear"}));
  EXPECT_EQ(nameOf(view->view()->window()), "B");
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleReentryTest, AViewIsRemovedEvenIfAStepRemovesItsSuperview) {
  const auto outer = addController(window, "outer");
  const auto inner = makeController("inner");
  outer->view()->addSubview(inner->view());
  recorder.take();
  recorder.onNext("inner will disappear", [&] { outer->view()->removeFromSuperview(); });
  inner->view()->removeFromSuperview();
  EXPECT_EQ(inner->view()->superview(), nullptr);
  EXPECT_EQ(recorder.take(), (Events{"inner will disappear", "outer will disappear",
                                     "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleReentryTest, AStepMayReleaseTheLastReferenceToItsController) {
  Strong<RecordingController> view = makeController("view");
  const Weak<RecordingController> weakController = view;
  window->contentView()->addSubview(view->view());
  recorder.take();
  recorder.onNext("view will disappear", [&] { view.reset(); });
  window->contentView()->subviews().at(0)->removeFromSuperview();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear"}));
  EXPECT_TRUE(weakController.expired());
}

TEST_F(LifeCycleReentryTest, AnOuterStepMayRemoveTheInnerView) {
  const auto closed = makeClosedWindow("B");
  const auto outer = addController(closed, "outer");
  const auto inner = makeController("inner");
  outer->view()->addSubview(inner->view());
  recorder.onNext("outer will appear", [&] { inner->view()->removeFromSuperview(); });
  closed->orderFront();
  EXPECT_FALSE(inner->isShown());
  const Events events = recorder.take();
  EXPECT_EQ(std::ranges::count(events, "inner did appear"), 0);
}

TEST_F(LifeCycleReentryTest, AnOuterStepMayAddAnInnerView) {
  const auto closed = makeClosedWindow("B");
  const auto outer = addController(closed, "outer");
  const auto inner = makeController("inner");
  recorder.onNext("outer will appear", [&] { outer->view()->addSubview(inner->view()); });
  closed->orderFront();
  EXPECT_EQ(recorder.take(), (Events{"outer will appear", "inner will appear", "inner did appear",
                                     "outer did appear"}));
}

TEST_F(LifeCycleReentryTest, AViewAddedWhileItsWindowClosesDisappearsWithIt) {
  const auto outer = addController(window, "outer");
  const auto inner = makeController("inner");
  recorder.take();
  recorder.onNext("outer will disappear", [&] { outer->view()->addSubview(inner->view()); });
  window->close();
  EXPECT_FALSE(inner->isShown());
  EXPECT_EQ(recorder.take(),
            (Events{"outer will disappear", "inner will appear", "inner did appear",
                    "inner will disappear", "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleReentryTest, AViewAddedWhileItsSuperviewIsRemovedDisappearsWithIt) {
  const auto outer = addController(window, "outer");
  const auto inner = makeController("inner");
  recorder.take();
  recorder.onNext("outer will disappear", [&] { outer->view()->addSubview(inner->view()); });
  outer->view()->removeFromSuperview();
  EXPECT_FALSE(inner->isShown());
}

TEST_F(LifeCycleReentryTest, AWindowThatAStepClosesAndOpensAgainIsShownOnce) {
  const auto closed = makeClosedWindow("B");
  addController(closed, "view");
  recorder.onNext("view will appear", [&] {
    closed->close();
    closed->orderFront();
  });
  closed->orderFront();
  EXPECT_EQ(recorder.take(), (Events{"view will appear", "view will disappear",
                                     "view did disappear", "view will appear", "view did appear"}));
  EXPECT_EQ(windowOrder(), (Events{"B", "A"}));
}

TEST_F(LifeCycleReentryTest, AWindowCanBeClosedAfterAStepHasThrown) {
  const auto view = addController(window, "view");
  recorder.take();
  recorder.onNext("view will disappear", [] { throw std::runtime_error("stop"); });
  EXPECT_THROW(window->close(), std::runtime_error);
  EXPECT_TRUE(window->isVisible());
  window->close();
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear"}));
}

}  // namespace
}  // namespace vel::test
