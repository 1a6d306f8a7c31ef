// Who keeps the cover and its content alive, and what is left of them in the end.
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

class CoverLifetimeTest : public CoverTest {
 protected:
  // Lets go of the cover, for others to keep.
  Weak<LaunchScreenViewController> released() { return std::exchange(cover, nullptr); }
};

TEST_F(CoverLifetimeTest, AControllerLetsGoOfWindowDelegatesIndicatorAndViewWithItself) {
  Strong<NSWindow> window = openPlayerWindow();
  cover->setAppWindow(window);
  cover->createActivityIndicator();
  const Weak<CoverDelegate> delegate = addDelegate("first");
  const Weak<NSProgressIndicator> indicator = cover->activityIndicator();
  const Weak<NSView> view = cover->view();
  window->close();
  const Weak<NSWindow> weakWindow = std::exchange(window, nullptr);
  EXPECT_FALSE(weakWindow.expired());
  EXPECT_TRUE(released().expired());
  EXPECT_TRUE(weakWindow.expired());
  EXPECT_TRUE(delegate.expired());
  EXPECT_TRUE(indicator.expired());
  EXPECT_TRUE(view.expired());
}

TEST_F(CoverLifetimeTest, ContentAndControllerKeepEachOtherAliveUntilTheContentIsDeactivated) {
  Strong<LaunchScreenContent> content = LaunchScreenContent::init();
  content->setContentRequest(makeRequest(NSDictionary::dictionary()));
  const Weak<NSViewController> controller = content->viewController();
  const Weak<LaunchScreenContent> weakContent = std::exchange(content, nullptr);
  ASSERT_FALSE(weakContent.expired());
  EXPECT_FALSE(controller.expired());
  weakContent.lock()->deactivate();
  EXPECT_TRUE(weakContent.expired());
  EXPECT_TRUE(controller.expired());
}

TEST_F(CoverLifetimeTest, AContentLetsGoOfItsRequest) {
  Strong<LaunchScreenContent> content = LaunchScreenContent::init();
  Strong<ContentRequest> request = makeRequest(Strong<NSDictionary>());
  content->setContentRequest(request);
  const Weak<ContentRequest> weakRequest = std::exchange(request, nullptr);
  EXPECT_FALSE(weakRequest.expired());
  content = nullptr;
  EXPECT_TRUE(weakRequest.expired());
}

TEST_F(CoverLifetimeTest, ATrackedCoverNeedsNoOwnerUntilItHasBeenTakenDown) {
  const auto window = openPlayerWindow();
  cover->presentForWindowWithPresentationMode(window, 0);
  const Weak<NSView> view = cover->view();
  const auto weakCover = released();
  platform.run(10);
  ASSERT_FALSE(weakCover.expired());
  weakCover.lock()->dismiss();
  platform.run(0.9);
  EXPECT_FALSE(weakCover.expired());
  platform.run(0.1);
  EXPECT_TRUE(weakCover.expired());
  EXPECT_TRUE(view.expired());
  EXPECT_EQ(window->styleMask(), kFullStyle);
}

TEST_F(CoverLifetimeTest, ATrackedCoverKeepsItsWindowAndContentView) {
  Strong<NSWindow> window = openPlayerWindow();
  const Weak<NSView> contentView = window->contentView();
  cover->presentForWindowWithPresentationMode(window, 0);
  window->orderOut();
  cover->setAppWindow(window);
  const Weak<NSWindow> weakWindow = std::exchange(window, nullptr);
  EXPECT_FALSE(weakWindow.expired());
  cover->dismissViewController(cover);
  EXPECT_TRUE(weakWindow.expired());
  EXPECT_FALSE(contentView.expired());
  platform.run(1);
  EXPECT_TRUE(contentView.expired());
}

TEST_F(CoverLifetimeTest, AnotherEmbeddedCoverTakesThePlaceOfTheTrackedOneWhichGoesButForItsView) {
  const auto window = openPlayerWindow();
  cover->presentForWindowWithPresentationMode(window, 0);
  const Weak<NSView> view = cover->view();
  const auto weakCover = released();
  const auto second = LaunchScreenViewController::init();
  second->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  EXPECT_TRUE(weakCover.expired());
  EXPECT_FALSE(view.expired());
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);  // nobody is left to give it back
  second->dismissViewController(second);
  platform.run(1);
  EXPECT_EQ(view.lock()->window(), window);
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(CoverLifetimeTest, ACoverEmbeddedWithoutAWindowStaysUntilAnotherEmbeddedOneComes) {
  cover->presentForWindowWithPresentationMode(nullptr, 0);
  cover->dismiss();
  platform.run(10);
  const Weak<NSView> view = cover->view();
  const auto weakCover = released();
  ASSERT_FALSE(weakCover.expired());
  EXPECT_TRUE(isTrackedCover(nullptr, weakCover.lock()));
  const auto second = LaunchScreenViewController::init();
  second->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  EXPECT_TRUE(weakCover.expired());
  EXPECT_TRUE(view.expired());
}

TEST_F(CoverLifetimeTest, ACoverUnderAParentIsKeptByThatUntilItIsDismissed) {
  cover->presentForWindowWithPresentationMode(openPlayerWindowWithContentViewController(), 0);
  const auto weakCover = released();
  ASSERT_FALSE(weakCover.expired());
  weakCover.lock()->dismiss();
  EXPECT_TRUE(weakCover.expired());
}

TEST_F(CoverLifetimeTest, APresentedCoverIsKeptByItsWindowUntilItIsDismissed) {
  for (const LaunchScreenPresentationMode mode : {1, 2}) {
    Strong<LaunchScreenViewController> presented = LaunchScreenViewController::init();
    presented->presentForWindowWithPresentationMode(openPlayerWindowWithContentViewController(),
                                                    mode);
    const Weak<NSWindow> window = presented->view()->window();
    const Weak<LaunchScreenViewController> weak = std::exchange(presented, nullptr);
    ASSERT_FALSE(weak.expired());
    weak.lock()->dismissViewController(weak.lock());
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(window.expired());
  }
}

// What is left of a whole launch screen

class LaunchScreenRemainsTest : public LaunchScreenTest {
 protected:
  // What a launch screen consists of.
  struct Remains {
    Weak<LaunchScreenManager> manager;
    Weak<LaunchScreenContent> content;
    Weak<ContentRequest> request;
    Weak<LaunchScreenViewController> controller;
    Weak<NSView> view;
  };

  Remains show(const Strong<NSWindow>& window, std::int32_t hostMode) {
    load(1);
    present(window, hostMode);
    return {manager, manager->content(), manager->content()->request(), controller(),
            controller()->view()};
  }
  void deactivateAndRelease() {
    manager->deactivate();
    manager = nullptr;
  }
  static void expectAllGone(const Remains& remains) {
    EXPECT_TRUE(remains.manager.expired());
    EXPECT_TRUE(remains.content.expired());
    EXPECT_TRUE(remains.request.expired());
    EXPECT_TRUE(remains.controller.expired());
    EXPECT_TRUE(remains.view.expired());
    EXPECT_FALSE(hasTrackedCover());
    EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
    EXPECT_EQ(dispatch_get_main_queue().pendingCount(), 0u);
  }
};

TEST_F(LaunchScreenRemainsTest, InEveryModeNothingIsLeftAfterTheEndDeactivationAndRelease) {
  for (const std::int32_t hostMode : {kHostModeEmbedded, kHostModeSheet, kHostModeModalWindow}) {
    for (const auto& window : {openPlayerWindow(), openPlayerWindowWithContentViewController()}) {
      manager = LaunchScreenManager::init();
      const Remains remains = show(window, hostMode);
      platform.run(5);
      deactivateAndRelease();
      SCOPED_TRACE(hostMode);
      expectAllGone(remains);
      EXPECT_EQ(window->styleMask(), kFullStyle);
      window->close();
    }
  }
}

TEST_F(LaunchScreenRemainsTest, DeactivatedMidwayTheCountdownKeepsTheManagerUntilItHasRunOut) {
  const auto window = openPlayerWindowWithContentViewController();
  const Remains remains = show(window, kHostModeEmbedded);
  platform.run(0.5);
  deactivateAndRelease();
  EXPECT_TRUE(remains.content.expired());
  EXPECT_FALSE(remains.manager.expired());
  platform.run(0.55);
  EXPECT_FALSE(remains.manager.expired());
  platform.run(0.05);
  EXPECT_TRUE(remains.manager.expired());
  EXPECT_TRUE(platform.events.empty());
}

TEST_F(LaunchScreenRemainsTest, DeactivatedMidwayACoverUnderAParentStaysInItsWindow) {
  const auto window = openPlayerWindowWithContentViewController();
  const Remains remains = show(window, kHostModeEmbedded);
  deactivateAndRelease();
  platform.run(5);
  ASSERT_FALSE(remains.controller.expired());
  EXPECT_EQ(remains.controller.lock()->delegates()->count(), 0u);
  EXPECT_EQ(remains.view.lock()->window(), window);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  remains.controller.lock()->dismissViewController(nullptr);  // as a host may do it
  EXPECT_EQ(window->styleMask(), kFullStyle);
  expectAllGone(remains);
}

TEST_F(LaunchScreenRemainsTest, DeactivatedMidwayACoverWithoutAParentStaysTrackedInItsWindow) {
  const auto window = openPlayerWindow();
  const Remains remains = show(window, kHostModeEmbedded);
  deactivateAndRelease();
  platform.run(5);
  ASSERT_FALSE(remains.controller.expired());
  EXPECT_EQ(embedded_cover::selfController, remains.controller.lock());
  EXPECT_EQ(remains.view.lock()->window(), window);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  remains.controller.lock()->dismissViewController(nullptr);
  platform.run(1);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  expectAllGone(remains);
}

TEST_F(LaunchScreenRemainsTest, DeactivatedMidwayAPresentedCoverStaysUntilItsWindowIsClosed) {
  for (const std::int32_t hostMode : {kHostModeSheet, kHostModeModalWindow}) {
    manager = LaunchScreenManager::init();
    const Remains remains = show(openPlayerWindowWithContentViewController(), hostMode);
    deactivateAndRelease();
    platform.run(5);
    ASSERT_FALSE(remains.view.expired());
    remains.view.lock()->window()->close();
    expectAllGone(remains);
  }
}

}  // namespace
}  // namespace vel::test
