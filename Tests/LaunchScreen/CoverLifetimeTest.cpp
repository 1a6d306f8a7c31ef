// Which objects own the cover and its content, and when all of these objects are destroyed.
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

class CoverLifetimeTest : public CoverTest {
 protected:
  // Releases the reference of the test. Other objects may still own the cover.
  Weak<LaunchScreenViewController> releaseCover() { return std::exchange(cover, nullptr); }
};

TEST_F(CoverLifetimeTest, ADestroyedControllerReleasesWindowDelegatesIndicatorAndView) {
  Strong<NSWindow> window = openPlayerWindow();
  cover->setAppWindow(window);
  cover->createActivityIndicator();
  const Weak<CoverDelegate> delegate = addDelegate("first");
  const Weak<NSProgressIndicator> indicator = cover->activityIndicator();
  const Weak<NSView> view = cover->view();
  window->close();
  const Weak<NSWindow> weakWindow = std::exchange(window, nullptr);
  EXPECT_FALSE(weakWindow.expired());
  EXPECT_TRUE(releaseCover().expired());
  EXPECT_TRUE(weakWindow.expired());
  EXPECT_TRUE(delegate.expired());
  EXPECT_TRUE(indicator.expired());
  EXPECT_TRUE(view.expired());
}

TEST_F(CoverLifetimeTest, ContentAndControllerOwnEachOtherUntilTheContentIsDeactivated) {
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

TEST_F(CoverLifetimeTest, ADestroyedContentReleasesItsRequest) {
  Strong<LaunchScreenContent> content = LaunchScreenContent::init();
  Strong<ContentRequest> request = makeRequest(Strong<NSDictionary>());
  content->setContentRequest(request);
  const Weak<ContentRequest> weakRequest = std::exchange(request, nullptr);
  EXPECT_FALSE(weakRequest.expired());
  content = nullptr;
  EXPECT_TRUE(weakRequest.expired());
}

TEST_F(CoverLifetimeTest, ATrackedCoverLivesWithoutAnotherOwnerUntilItIsRemoved) {
  const auto window = openPlayerWindow();
  cover->presentForWindowWithPresentationMode(window, 0);
  const Weak<NSView> view = cover->view();
  const auto weakCover = releaseCover();
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

TEST_F(CoverLifetimeTest, ATrackedCoverOwnsItsWindowAndContentView) {
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

TEST_F(CoverLifetimeTest, AReplacedTrackedCoverIsDestroyedExceptForItsView) {
  const auto window = openPlayerWindow();
  cover->presentForWindowWithPresentationMode(window, 0);
  const Weak<NSView> view = cover->view();
  const auto weakCover = releaseCover();
  const auto second = LaunchScreenViewController::init();
  second->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  EXPECT_TRUE(weakCover.expired());
  EXPECT_FALSE(view.expired());
  // No controller is left that could restore the style.
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  second->dismissViewController(second);
  platform.run(1);
  EXPECT_EQ(view.lock()->window(), window);
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(CoverLifetimeTest, ACoverEmbeddedWithoutAWindowLivesUntilAnotherCoverReplacesIt) {
  cover->presentForWindowWithPresentationMode(nullptr, 0);
  cover->dismiss();
  platform.run(10);
  const Weak<NSView> view = cover->view();
  const auto weakCover = releaseCover();
  ASSERT_FALSE(weakCover.expired());
  EXPECT_TRUE(isTrackedCover(nullptr, weakCover.lock()));
  const auto second = LaunchScreenViewController::init();
  second->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  EXPECT_TRUE(weakCover.expired());
  EXPECT_TRUE(view.expired());
}

TEST_F(CoverLifetimeTest, TheParentOwnsACoverUntilItIsDismissed) {
  cover->presentForWindowWithPresentationMode(openPlayerWindowWithContentViewController(), 0);
  const auto weakCover = releaseCover();
  ASSERT_FALSE(weakCover.expired());
  weakCover.lock()->dismiss();
  EXPECT_TRUE(weakCover.expired());
}

TEST_F(CoverLifetimeTest, TheWindowOwnsAPresentedCoverUntilItIsDismissed) {
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

// The objects that remain after a complete launch screen

class LaunchScreenRemainsTest : public LaunchScreenTest {
 protected:
  // The objects of a launch screen.
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

TEST_F(LaunchScreenRemainsTest, InEveryModeAllObjectsAreDestroyedAfterTheEndAndDeactivation) {
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

TEST_F(LaunchScreenRemainsTest, AfterAnEarlyDeactivationTheCountdownOwnsTheManagerUntilItEnds) {
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

TEST_F(LaunchScreenRemainsTest, AfterAnEarlyDeactivationACoverUnderAParentStaysInItsWindow) {
  const auto window = openPlayerWindowWithContentViewController();
  const Remains remains = show(window, kHostModeEmbedded);
  deactivateAndRelease();
  platform.run(5);
  ASSERT_FALSE(remains.controller.expired());
  EXPECT_EQ(remains.controller.lock()->delegates()->count(), 0u);
  EXPECT_EQ(remains.view.lock()->window(), window);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  remains.controller.lock()->dismissViewController(nullptr);  // a host may do this
  EXPECT_EQ(window->styleMask(), kFullStyle);
  expectAllGone(remains);
}

TEST_F(LaunchScreenRemainsTest, AfterAnEarlyDeactivationACoverWithoutAParentStaysTracked) {
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

TEST_F(LaunchScreenRemainsTest,
       AfterAnEarlyDeactivationAPresentedCoverStaysUntilItsWindowIsClosed) {
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
