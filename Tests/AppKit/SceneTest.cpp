// A scene: the filled rectangles and spinners that the platform layer draws in a window.
#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSProgressIndicator.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

constexpr CGColor kWhite{.red = 1, .green = 1, .blue = 1, .alpha = 1};
constexpr CGColor kRed{.red = 1, .green = 0, .blue = 0, .alpha = 0.5};

SceneItem fillItem(CGRect frame, CGColor color) {
  return {.kind = SceneItem::Kind::Fill, .frame = frame, .color = color};
}

SceneItem stoppedSpinner(CGRect frame) {
  return {.kind = SceneItem::Kind::Spinner, .frame = frame, .color = {}, .isAnimated = false};
}

SceneItem animatedSpinner(CGRect frame) {
  return {.kind = SceneItem::Kind::Spinner, .frame = frame, .color = {}, .isAnimated = true};
}

class SceneTest : public EventRecordingTest {
 protected:
  const Scene& scene() { return platform.windowSystem().window(window->handle())->scene; }
  // Adds a view with this background colour to the window.
  Strong<NSView> addFilledView(CGRect frame, CGColor color) {
    Strong<NSView> view = NSView::initWithFrame(frame);
    view->setWantsLayer(true);
    view->layer()->setBackgroundColor(color);
    window->contentView()->addSubview(view);
    return view;
  }

  Strong<NSWindow> window = openWindow("A");
};

TEST_F(SceneTest, ANewWindowHasAnEmptyScene) { EXPECT_TRUE(scene().empty()); }

TEST_F(SceneTest, ABackgroundColourFillsTheFrameOfTheView) {
  addFilledView(CGRectMake(10, 20, 30, 40), kRed);
  EXPECT_EQ(scene(), Scene{fillItem(CGRectMake(10, 20, 30, 40), kRed)});
}

TEST_F(SceneTest, ItemsAreOrderedBackToFrontInWindowCoordinates) {
  const auto backView = addFilledView(CGRectMake(10, 20, 300, 400), kWhite);
  addFilledView(CGRectMake(50, 50, 5, 5), kWhite);
  const auto innerView = NSView::initWithFrame(CGRectMake(1, 2, 3, 4));
  innerView->setWantsLayer(true);
  innerView->layer()->setBackgroundColor(kRed);
  backView->addSubview(innerView);
  EXPECT_EQ(scene(), (Scene{fillItem(CGRectMake(10, 20, 300, 400), kWhite),
                            fillItem(CGRectMake(11, 22, 3, 4), kRed),
                            fillItem(CGRectMake(50, 50, 5, 5), kWhite)}));
}

TEST_F(SceneTest, ATransparentLayerIsNotInTheScene) {
  const auto view = addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  view->layer()->setBackgroundColor(CGColor{});
  EXPECT_TRUE(scene().empty());
}

TEST_F(SceneTest, ANewLayerIsTransparent) {
  const auto view = NSView::initWithFrame(CGRectMake(0, 0, 9, 9));
  EXPECT_FALSE(view->wantsLayer());
  EXPECT_EQ(view->layer(), nullptr);
  view->setWantsLayer(true);
  EXPECT_EQ(view->layer()->backgroundColor(), CGColor{});
}

TEST_F(SceneTest, AnAddedViewEntersTheSceneAfterWillAppear) {
  const auto view = NSView::initWithFrame(CGRectMake(0, 0, 9, 9));
  const auto innerView = NSProgressIndicator::initWithFrame(CGRectMake(2, 2, 5, 5));
  innerView->setStyle(NSProgressIndicatorStyleSpinning);
  view->addSubview(innerView);
  const auto controller = make<RecordingController>(recorder, "C");
  controller->setView(view);
  // Not empty, so that the test fails if the handler does not run.
  Scene sceneInWillAppear{animatedSpinner({})};
  recorder.onNext("C will appear", [&] {
    view->setWantsLayer(true);
    view->layer()->setBackgroundColor(kWhite);
    sceneInWillAppear = scene();
  });
  const Scene expectedScene{fillItem(CGRectMake(0, 0, 9, 9), kWhite),
                            stoppedSpinner(CGRectMake(2, 2, 5, 5))};
  Scene sceneInDidAppear;
  recorder.onNext("C did appear", [&] { sceneInDidAppear = scene(); });
  window->contentView()->addSubview(view);
  EXPECT_EQ(sceneInWillAppear, Scene{});
  EXPECT_EQ(sceneInDidAppear, expectedScene);
}

TEST_F(SceneTest, AContentViewEntersTheSceneAfterWillAppear) {
  const auto controller = make<RecordingController>(recorder, "C");
  addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  const Scene sceneBefore = scene();
  Scene sceneInWillAppear;
  recorder.onNext("C will appear", [&] {
    controller->view()->setWantsLayer(true);
    controller->view()->layer()->setBackgroundColor(kWhite);
    sceneInWillAppear = scene();
  });
  window->setContentViewController(controller);
  EXPECT_EQ(sceneInWillAppear, sceneBefore);
  EXPECT_EQ(scene(), Scene{fillItem({{}, window->frame().size}, kWhite)});
}

TEST_F(SceneTest, SetWantsLayerTrueKeepsAnExistingLayerAndSetWantsLayerFalseRemovesIt) {
  const auto view = addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  view->setWantsLayer(true);
  EXPECT_EQ(view->layer()->backgroundColor(), kRed);
  view->setWantsLayer(false);
  EXPECT_EQ(view->layer(), nullptr);
  EXPECT_TRUE(scene().empty());
}

TEST_F(SceneTest, ALayerCanOutliveItsView) {
  const Strong<CALayer> layer = [] {
    const auto view = NSView::initWithFrame(CGRectZero);
    view->setWantsLayer(true);
    return view->layer();
  }();
  layer->setBackgroundColor(kRed);
  EXPECT_EQ(layer->backgroundColor(), kRed);
}

TEST_F(SceneTest, EachChangeUpdatesTheSceneAtOnce) {
  const auto view = addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  view->setFrame(CGRectMake(1, 1, 8, 8));
  EXPECT_EQ(scene(), Scene{fillItem(CGRectMake(1, 1, 8, 8), kRed)});
  view->layer()->setBackgroundColor(kWhite);
  EXPECT_EQ(scene(), Scene{fillItem(CGRectMake(1, 1, 8, 8), kWhite)});
  view->removeFromSuperview();
  EXPECT_TRUE(scene().empty());
}

TEST_F(SceneTest, AnOpenedWindowShowsViewsAddedWhileItWasClosed) {
  window->close();
  addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  window->orderFront();
  EXPECT_EQ(scene(), Scene{fillItem(CGRectMake(0, 0, 9, 9), kRed)});
}

TEST_F(SceneTest, AWindowReopenedAfterItsDestructionShowsItsViews) {
  addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  const WindowHandle handle = window->handle();
  window->close();
  platform.windowSystem().ownerDestroysWindow(handle);
  window->orderFront();
  EXPECT_EQ(scene(), Scene{fillItem(CGRectMake(0, 0, 9, 9), kRed)});
}

// A host can deminiaturise its window while the run loop does not run. The window must then show
// the current scene.
TEST_F(SceneTest, EachChangeUpdatesTheSceneOfAMiniaturisedWindowAtOnce) {
  const auto view = addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  window->miniaturize();
  view->layer()->setBackgroundColor(kWhite);
  EXPECT_EQ(scene(), Scene{fillItem(CGRectMake(0, 0, 9, 9), kWhite)});
  window->deminiaturize();
  EXPECT_EQ(scene(), Scene{fillItem(CGRectMake(0, 0, 9, 9), kWhite)});
}

class IndicatorTest : public SceneTest {
 protected:
  IndicatorTest() {
    window->contentView()->addSubview(indicator);
    indicator->setStyle(NSProgressIndicatorStyleSpinning);
  }

  CGRect frame = CGRectMake(10, 10, 32, 32);
  Strong<NSProgressIndicator> indicator = NSProgressIndicator::initWithFrame(frame);
};

TEST_F(IndicatorTest, IsInitiallyABarThatDoesNotAnimate) {
  const auto newIndicator = NSProgressIndicator::initWithFrame(CGRectZero);
  EXPECT_EQ(newIndicator->className(), "NSProgressIndicator");
  EXPECT_EQ(newIndicator->style(), NSProgressIndicatorStyleBar);
  EXPECT_FALSE(newIndicator->isAnimating());
  EXPECT_EQ(newIndicator->appearance(), nullptr);
}

TEST_F(IndicatorTest, IsShownAsASpinnerIfItsStyleIsSpinning) {
  EXPECT_EQ(scene(), Scene{stoppedSpinner(frame)});
}

TEST_F(IndicatorTest, AnimatesBetweenStartAndStop) {
  indicator->startAnimation(nullptr);
  EXPECT_TRUE(indicator->isAnimating());
  EXPECT_EQ(scene(), Scene{animatedSpinner(frame)});
  indicator->stopAnimation(nullptr);
  EXPECT_FALSE(indicator->isAnimating());
  EXPECT_EQ(scene(), Scene{stoppedSpinner(frame)});
}

TEST_F(IndicatorTest, IsNotShownIfItsStyleIsBar) {
  indicator->setStyle(NSProgressIndicatorStyleBar);
  EXPECT_TRUE(scene().empty());
}

TEST_F(IndicatorTest, IsNotShownIfItHasNoArea) {
  indicator->setFrame(CGRectMake(10, 10, 0, 32));
  EXPECT_TRUE(scene().empty());
}

TEST_F(IndicatorTest, IsDrawnOverItsOwnLayer) {
  indicator->setWantsLayer(true);
  indicator->layer()->setBackgroundColor(kWhite);
  EXPECT_EQ(scene(), (Scene{fillItem(frame, kWhite), stoppedSpinner(frame)}));
}

TEST_F(IndicatorTest, HasTheAppearanceThatWasSet) {
  const auto aquaAppearance = NSAppearance::appearanceNamed(NSAppearanceNameAqua);
  EXPECT_EQ(aquaAppearance->name(), "NSAppearanceNameAqua");
  indicator->setAppearance(aquaAppearance);
  EXPECT_EQ(indicator->appearance(), aquaAppearance);
}

TEST(NSColorTest, WhiteColorIsOpaqueWhite) { EXPECT_EQ(NSColor::whiteColor()->CGColor(), kWhite); }

}  // namespace
}  // namespace vel::test
