// Steps that themselves change what is on screen.
#include <algorithm>
#include <stdexcept>

#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class LifeCycleReentryTest : public RecordedTest {
 protected:
  Strong<NSWindow> window = open("A");
};

TEST_F(LifeCycleReentryTest, AStepThatTakesTheViewAwayEndsItsAppearing) {
  const auto view = recordingController("view");
  recorder.onNext("view will appear", [&] { view->view()->removeFromSuperview(); });
  window->contentView()->addSubview(view->view());
  EXPECT_EQ(recorder.take(),
            (Events{"view will appear", "view will disappear", "view did disappear"}));
  EXPECT_FALSE(view->isShown());
}

TEST_F(LifeCycleReentryTest, AStepThatTakesTheViewAwayItselfIsRunOnce) {
  const auto view = recordingControllerIn(window, "view");
  recorder.take();
  recorder.onNext("view will disappear", [&] { view->view()->removeFromSuperview(); });
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear"}));
}

TEST_F(LifeCycleReentryTest, AViewPutBackInItsLastStepIsShownAnew) {
  const auto view = recordingControllerIn(window, "view");
  recorder.take();
  recorder.onNext("view did disappear", [&] { window->contentView()->addSubview(view->view()); });
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear",
                                     "view will appear", "view did appear"}));
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleReentryTest, AViewThatAStepMovesToAnotherWindowStaysThere) {
  const auto view = recordingControllerIn(window, "view");
  const auto other = open("B");
  recorder.take();
  recorder.onNext("view will disappear", [&] { other->contentView()->addSubview(view->view()); });
  view->view()->removeFromSuperview();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear",
                                     "view will appear", "view did appear"}));
  EXPECT_EQ(nameOf(view->view()->window()), "B");
  EXPECT_TRUE(view->isShown());
}

TEST_F(LifeCycleReentryTest, AViewWhoseSuperviewAStepTakesAwayIsTakenAwayAllTheSame) {
  const auto outer = recordingControllerIn(window, "outer");
  const auto inner = recordingController("inner");
  outer->view()->addSubview(inner->view());
  recorder.take();
  recorder.onNext("inner will disappear", [&] { outer->view()->removeFromSuperview(); });
  inner->view()->removeFromSuperview();
  EXPECT_EQ(inner->view()->superview(), nullptr);
  EXPECT_EQ(recorder.take(), (Events{"inner will disappear", "outer will disappear",
                                     "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleReentryTest, AStepMayDropTheLastReferenceToItsController) {
  Strong<RecordingController> view = recordingController("view");
  const Weak<RecordingController> seen = view;
  window->contentView()->addSubview(view->view());
  recorder.take();
  recorder.onNext("view will disappear", [&] { view.reset(); });
  window->contentView()->subviews().at(0)->removeFromSuperview();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear"}));
  EXPECT_TRUE(seen.expired());
}

TEST_F(LifeCycleReentryTest, AnOuterStepMayTakeTheInnerViewAway) {
  const auto closed = closedWindow("B");
  const auto outer = recordingControllerIn(closed, "outer");
  const auto inner = recordingController("inner");
  outer->view()->addSubview(inner->view());
  recorder.onNext("outer will appear", [&] { inner->view()->removeFromSuperview(); });
  closed->orderFront();
  EXPECT_FALSE(inner->isShown());
  const Events story = recorder.take();
  EXPECT_EQ(std::ranges::count(story, "inner did appear"), 0);
}

TEST_F(LifeCycleReentryTest, AnOuterStepMayAddAnInnerView) {
  const auto closed = closedWindow("B");
  const auto outer = recordingControllerIn(closed, "outer");
  const auto inner = recordingController("inner");
  recorder.onNext("outer will appear", [&] { outer->view()->addSubview(inner->view()); });
  closed->orderFront();
  EXPECT_EQ(recorder.take(), (Events{"outer will appear", "inner will appear", "inner did appear",
                                     "outer did appear"}));
}

TEST_F(LifeCycleReentryTest, AViewAddedWhileItsWindowClosesDisappearsWithIt) {
  const auto outer = recordingControllerIn(window, "outer");
  const auto inner = recordingController("inner");
  recorder.take();
  recorder.onNext("outer will disappear", [&] { outer->view()->addSubview(inner->view()); });
  window->close();
  EXPECT_FALSE(inner->isShown());
  EXPECT_EQ(recorder.take(),
            (Events{"outer will disappear", "inner will appear", "inner did appear",
                    "inner will disappear", "outer did disappear", "inner did disappear"}));
}

TEST_F(LifeCycleReentryTest, AViewAddedWhileItsSuperviewIsTakenAwayDisappearsWithIt) {
  const auto outer = recordingControllerIn(window, "outer");
  const auto inner = recordingController("inner");
  recorder.take();
  recorder.onNext("outer will disappear", [&] { outer->view()->addSubview(inner->view()); });
  outer->view()->removeFromSuperview();
  EXPECT_FALSE(inner->isShown());
}

TEST_F(LifeCycleReentryTest, AWindowThatAStepClosesAndOpensAgainIsShownOnce) {
  const auto closed = closedWindow("B");
  recordingControllerIn(closed, "view");
  recorder.onNext("view will appear", [&] {
    closed->close();
    closed->orderFront();
  });
  closed->orderFront();
  EXPECT_EQ(recorder.take(), (Events{"view will appear", "view will disappear",
                                     "view did disappear", "view will appear", "view did appear"}));
  EXPECT_EQ(order(), (Events{"B", "A"}));
}

TEST_F(LifeCycleReentryTest, AStepThatRaisesEndsTheCallAndLeavesTheWindowClosable) {
  const auto view = recordingControllerIn(window, "view");
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
