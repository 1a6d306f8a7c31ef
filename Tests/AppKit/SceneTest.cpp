// The scene of a window: the layers and indicators that the window system shows.
#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSProgressIndicator.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

constexpr CGColor kWhite{.red = 1, .green = 1, .blue = 1, .alpha = 1};
constexpr CGColor kRed{.red = 1, .green = 0, .blue = 0, .alpha = 0.5};

SceneItem fill(CGRect frame, CGColor color) {
  return {.kind = SceneItem::Kind::Fill, .frame = frame, .color = color};
}

SceneItem spinner(CGRect frame, bool isAnimated) {
  return {.kind = SceneItem::Kind::Spinner, .frame = frame, .color = {}, .isAnimated = isAnimated};
}

class SceneTest : public RecordedTest {
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

  Strong<NSWindow> window = open("A");
};

TEST_F(SceneTest, ANewWindowHasAnEmptyScene) { EXPECT_TRUE(scene().empty()); }

TEST_F(SceneTest, ABackgroundColourFillsTheFrameOfTheView) {
  addFilledView(CGRectMake(10, 20, 30, 40), kRed);
  EXPECT_EQ(scene(), Scene{fill(CGRectMake(10, 20, 30, 40), kRed)});
}

TEST_F(SceneTest, ItemsAreOrderedBackToFrontInWindowCoordinates) {
  const auto back = addFilledView(CGRectMake(10, 20, 300, 400), kWhite);
  addFilledView(CGRectMake(50, 50, 5, 5), kWhite);
  const auto inner = NSView::initWithFrame(CGRectMake(1, 2, 3, 4));
  inner->setWantsLayer(true);
  inner->layer()->setBackgroundColor(kRed);
  back->addSubview(inner);
  EXPECT_EQ(scene(),
            (Scene{fill(CGRectMake(10, 20, 300, 400), kWhite), fill(CGRectMake(11, 22, 3, 4), kRed),
                   fill(CGRectMake(50, 50, 5, 5), kWhite)}));
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

TEST_F(SceneTest, TheSceneIncludesAViewAndItsChangesAfterWillAppear) {
  const auto view = NSView::initWithFrame(CGRectMake(0, 0, 9, 9));
  const auto inner = NSProgressIndicator::initWithFrame(CGRectMake(2, 2, 5, 5));
  inner->setStyle(NSProgressIndicatorStyleSpinning);
  view->addSubview(inner);
  const auto controller = make<RecordingController>(recorder, "C");
  controller->setView(view);
  Scene sceneInWillAppear{spinner({}, true)};
  recorder.onNext("C will appear", [&] {
    view->setWantsLayer(true);
    view->layer()->setBackgroundColor(kWhite);
    sceneInWillAppear = scene();
  });
  const Scene expected{fill(CGRectMake(0, 0, 9, 9), kWhite),
                       spinner(CGRectMake(2, 2, 5, 5), false)};
  Scene sceneInDidAppear;
  recorder.onNext("C did appear", [&] { sceneInDidAppear = scene(); });
  window->contentView()->addSubview(view);
  EXPECT_EQ(sceneInWillAppear, Scene{});
  EXPECT_EQ(sceneInDidAppear, expected);
}

TEST_F(SceneTest, TheSceneIncludesAContentViewAndItsChangesAfterWillAppear) {
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
  EXPECT_EQ(scene(), Scene{fill({{}, window->frame().size}, kWhite)});
}

TEST_F(SceneTest, SetWantsLayerAgainKeepsTheLayer) {
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
  EXPECT_EQ(scene(), Scene{fill(CGRectMake(1, 1, 8, 8), kRed)});
  view->layer()->setBackgroundColor(kWhite);
  EXPECT_EQ(scene(), Scene{fill(CGRectMake(1, 1, 8, 8), kWhite)});
  view->removeFromSuperview();
  EXPECT_TRUE(scene().empty());
}

TEST_F(SceneTest, AnOpenedWindowShowsViewsAddedWhileItWasClosed) {
  window->close();
  addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  window->orderFront();
  EXPECT_EQ(scene(), Scene{fill(CGRectMake(0, 0, 9, 9), kRed)});
}

TEST_F(SceneTest, AWindowDestroyedAndOpenedAgainShowsItsViews) {
  addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  const WindowHandle handle = window->handle();
  window->close();
  platform.windowSystem().ownerDestroysWindow(handle);
  window->orderFront();
  EXPECT_EQ(scene(), Scene{fill(CGRectMake(0, 0, 9, 9), kRed)});
}

TEST_F(SceneTest, ADeminiaturisedWindowShowsChangesMadeWhileMiniaturised) {
  const auto view = addFilledView(CGRectMake(0, 0, 9, 9), kRed);
  window->miniaturize();
  view->layer()->setBackgroundColor(kWhite);
  window->deminiaturize();
  EXPECT_EQ(scene(), Scene{fill(CGRectMake(0, 0, 9, 9), kWhite)});
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

TEST_F(IndicatorTest, IsAtFirstABarThatDoesNotAnimate) {
  const auto newIndicator = NSProgressIndicator::initWithFrame(CGRectZero);
  EXPECT_EQ(newIndicator->className(), "NSProgressIndicator");
  EXPECT_EQ(newIndicator->style(), NSProgressIndicatorStyleBar);
  EXPECT_FALSE(newIndicator->isAnimating());
  EXPECT_EQ(newIndicator->appearance(), nullptr);
}

TEST_F(IndicatorTest, OfSpinningStyleIsShownAsASpinner) {
  EXPECT_EQ(scene(), Scene{spinner(frame, false)});
}

TEST_F(IndicatorTest, AnimatesBetweenStartAndStop) {
  indicator->startAnimation(nullptr);
  EXPECT_TRUE(indicator->isAnimating());
  EXPECT_EQ(scene(), Scene{spinner(frame, true)});
  indicator->stopAnimation(nullptr);
  EXPECT_FALSE(indicator->isAnimating());
  EXPECT_EQ(scene(), Scene{spinner(frame, false)});
}

TEST_F(IndicatorTest, OfBarStyleIsNotShown) {
  indicator->setStyle(NSProgressIndicatorStyleBar);
  EXPECT_TRUE(scene().empty());
}

TEST_F(IndicatorTest, WithoutAreaIsNotShown) {
  indicator->setFrame(CGRectMake(10, 10, 0, 32));
  EXPECT_TRUE(scene().empty());
}

TEST_F(IndicatorTest, IsDrawnOverItsOwnLayer) {
  indicator->setWantsLayer(true);
  indicator->layer()->setBackgroundColor(kWhite);
  EXPECT_EQ(scene(), (Scene{fill(frame, kWhite), spinner(frame, false)}));
}

TEST_F(IndicatorTest, HasTheAppearanceThatWasSet) {
  const auto light = NSAppearance::appearanceNamed(NSAppearanceNameAqua);
  EXPECT_EQ(light->name(), "NSAppearanceNameAqua");
  indicator->setAppearance(light);
  EXPECT_EQ(indicator->appearance(), light);
}

TEST(NSColorTest, WhiteColorIsOpaqueWhite) { EXPECT_EQ(NSColor::whiteColor()->CGColor(), kWhite); }

}  // namespace
}  // namespace vel::test
