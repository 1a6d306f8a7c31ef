// Which objects own the launch screen's controller and content, and when the objects of a launch
// screen are destroyed. The cover is the launch screen's view. A tracked cover is embedded in a
// window without a content view controller. Global variables own the tracked cover and its
// controller (EmbeddedCover.h). The library releases both one second after the cover's dismissal.
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

class CoverLifetimeTest : public CoverTest {
 protected:
  // Releases the fixture's reference to the controller. Other objects may still own the controller.
  Weak<LaunchScreenViewController> releaseController() {
    return std::exchange(controller, nullptr);
  }
};

TEST_F(CoverLifetimeTest, ADestroyedControllerReleasesWindowDelegatesIndicatorAndView) {
  Strong<NSWindow> window = openPlayerWindow();
  controller->setAppWindow(window);
  controller->createActivityIndicator();
  const Weak<CoverDelegate> delegate = addDelegate("first");
  const Weak<NSProgressIndicator> indicator = controller->activityIndicator();
  const Weak<NSView> view = controller->view();
  window->close();
  const Weak<NSWindow> weakWindow = std::exchange(window, nullptr);
  EXPECT_FALSE(weakWindow.expired());
  EXPECT_TRUE(releaseController().expired());
  EXPECT_TRUE(weakWindow.expired());
  EXPECT_TRUE(delegate.expired());
  EXPECT_TRUE(indicator.expired());
  EXPECT_TRUE(view.expired());
}

TEST_F(CoverLifetimeTest, ContentAndControllerOwnEachOtherUntilTheContentIsDeactivated) {
  Strong<LaunchScreenContent> content = LaunchScreenContent::init();
  content->setContentRequest(makeRequest(NSDictionary::dictionary()));
  const Weak<NSViewController> contentController = content->viewController();
  const Weak<LaunchScreenContent> weakContent = std::exchange(content, nullptr);
  ASSERT_FALSE(weakContent.expired());
  EXPECT_FALSE(contentController.expired());
  weakContent.lock()->deactivate();
  EXPECT_TRUE(weakContent.expired());
  EXPECT_TRUE(contentController.expired());
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

TEST_F(CoverLifetimeTest, ATrackedCoverLivesUntilOneSecondAfterItsDismissal) {
  const auto window = openPlayerWindow();
  controller->presentForWindowWithPresentationMode(window, 0);
  const Weak<NSView> view = controller->view();
  const auto weakController = releaseController();
  platform.run(10);
  ASSERT_FALSE(weakController.expired());
  weakController.lock()->dismiss();
  platform.run(0.9);
  EXPECT_FALSE(weakController.expired());
  platform.run(0.1);
  EXPECT_TRUE(weakController.expired());
  EXPECT_TRUE(view.expired());
  EXPECT_EQ(window->styleMask(), kFullStyle);
}

TEST_F(CoverLifetimeTest,
       DismissingATrackedCoverReleasesTheWindowAtOnceAndTheContentViewOneSecondLater) {
  Strong<NSWindow> window = openPlayerWindow();
  const Weak<NSView> contentView = window->contentView();
  controller->presentForWindowWithPresentationMode(window, 0);
  // The application holds a strong reference to each window on screen. `orderOut` releases this
  // reference and sets `appWindow` to null.
  window->orderOut();
  controller->setAppWindow(window);
  const Weak<NSWindow> weakWindow = std::exchange(window, nullptr);
  EXPECT_FALSE(weakWindow.expired());
  controller->dismissViewController(controller);
  EXPECT_TRUE(weakWindow.expired());
  EXPECT_FALSE(contentView.expired());
  platform.run(1);
  EXPECT_TRUE(contentView.expired());
}

TEST_F(CoverLifetimeTest, ReplacingATrackedCoverDestroysItsControllerButNotTheCover) {
  const auto window = openPlayerWindow();
  controller->presentForWindowWithPresentationMode(window, 0);
  const Weak<NSView> view = controller->view();
  const auto weakController = releaseController();
  const auto secondController = LaunchScreenViewController::init();
  secondController->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  EXPECT_TRUE(weakController.expired());
  EXPECT_FALSE(view.expired());
  // No controller is left that could restore the style.
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  secondController->dismissViewController(secondController);
  platform.run(1);
  EXPECT_EQ(view.lock()->window(), window);
  EXPECT_FALSE(hasTrackedCover());
}

TEST_F(CoverLifetimeTest, ACoverEmbeddedInANullWindowLivesUntilAnotherCoverReplacesIt) {
  controller->presentForWindowWithPresentationMode(nullptr, 0);
  // The library releases a dismissed tracked cover only if the cover has a superview.
  controller->dismiss();
  platform.run(10);
  const Weak<NSView> view = controller->view();
  const auto weakController = releaseController();
  ASSERT_FALSE(weakController.expired());
  EXPECT_TRUE(isTrackedCover(nullptr, weakController.lock()));
  const auto secondController = LaunchScreenViewController::init();
  secondController->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  EXPECT_TRUE(weakController.expired());
  EXPECT_TRUE(view.expired());
}

TEST_F(CoverLifetimeTest, TheParentControllerOwnsACoverUntilTheCoverIsDismissed) {
  controller->presentForWindowWithPresentationMode(openPlayerWindowWithContentViewController(), 0);
  const auto weakController = releaseController();
  ASSERT_FALSE(weakController.expired());
  weakController.lock()->dismiss();
  EXPECT_TRUE(weakController.expired());
}

TEST_F(CoverLifetimeTest, TheModalWindowOrSheetOwnsItsCoverUntilTheCoverIsDismissed) {
  for (const LaunchScreenPresentationMode mode :
       {LaunchScreenPresentationModalWindow, LaunchScreenPresentationSheet}) {
    Strong<LaunchScreenViewController> presentedController = LaunchScreenViewController::init();
    presentedController->presentForWindowWithPresentationMode(
        openPlayerWindowWithContentViewController(), mode);
    const Weak<NSWindow> window = presentedController->view()->window();
    const Weak<LaunchScreenViewController> weakController =
        std::exchange(presentedController, nullptr);
    ASSERT_FALSE(weakController.expired());
    weakController.lock()->dismissViewController(weakController.lock());
    EXPECT_TRUE(weakController.expired());
    EXPECT_TRUE(window.expired());
  }
}

// When the objects of a launch screen are destroyed. An early deactivation is a deactivation before
// the launch screen has ended.

class LaunchScreenObjectsTest : public LaunchScreenTest {
 protected:
  struct LaunchScreenObjects {
    Weak<LaunchScreenManager> manager;
    Weak<LaunchScreenContent> content;
    Weak<ContentRequest> request;
    Weak<LaunchScreenViewController> controller;
    Weak<NSView> view;
  };

  LaunchScreenObjects show(const Strong<NSWindow>& window, std::int32_t hostMode) {
    load(1);
    present(window, hostMode);
    return {manager, manager->content(), manager->content()->request(), controller(),
            controller()->view()};
  }
  void deactivateAndRelease() {
    manager->deactivate();
    manager = nullptr;
  }
  static void expectAllDestroyed(const LaunchScreenObjects& objects) {
    EXPECT_TRUE(objects.manager.expired());
    EXPECT_TRUE(objects.content.expired());
    EXPECT_TRUE(objects.request.expired());
    EXPECT_TRUE(objects.controller.expired());
    EXPECT_TRUE(objects.view.expired());
    EXPECT_FALSE(hasTrackedCover());
    EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
    EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
  }
};

TEST_F(LaunchScreenObjectsTest, DeactivationAfterTheEndOfTheLaunchScreenDestroysAllObjects) {
  for (const std::int32_t hostMode : {kHostModeEmbedded, kHostModeSheet, kHostModeModalWindow}) {
    for (const auto& window : {openPlayerWindow(), openPlayerWindowWithContentViewController()}) {
      manager = LaunchScreenManager::init();
      const LaunchScreenObjects objects = show(window, hostMode);
      platform.run(5);
      deactivateAndRelease();
      SCOPED_TRACE(hostMode);
      expectAllDestroyed(objects);
      EXPECT_EQ(window->styleMask(), kFullStyle);
      window->close();
    }
  }
}

TEST_F(LaunchScreenObjectsTest, EarlyDeactivationKeepsTheManagerUntilTheCountdownEnds) {
  const auto window = openPlayerWindowWithContentViewController();
  const LaunchScreenObjects objects = show(window, kHostModeEmbedded);
  platform.run(0.5);
  deactivateAndRelease();
  EXPECT_TRUE(objects.content.expired());
  EXPECT_FALSE(objects.manager.expired());
  // A countdown of 1 s ends at its 11th tick, 1.1 s after its start.
  platform.run(0.55);
  EXPECT_FALSE(objects.manager.expired());
  platform.run(0.05);
  EXPECT_TRUE(objects.manager.expired());
  EXPECT_TRUE(platform.events.empty());
}

TEST_F(LaunchScreenObjectsTest, EarlyDeactivationDoesNotRemoveACoverWithAParentController) {
  const auto window = openPlayerWindowWithContentViewController();
  const LaunchScreenObjects objects = show(window, kHostModeEmbedded);
  deactivateAndRelease();
  platform.run(5);
  ASSERT_FALSE(objects.controller.expired());
  EXPECT_EQ(objects.controller.lock()->delegates()->count(), 0u);
  EXPECT_EQ(objects.view.lock()->window(), window);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  objects.controller.lock()->dismissViewController(nullptr);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  expectAllDestroyed(objects);
}

TEST_F(LaunchScreenObjectsTest, EarlyDeactivationDoesNotRemoveATrackedCover) {
  const auto window = openPlayerWindow();
  const LaunchScreenObjects objects = show(window, kHostModeEmbedded);
  deactivateAndRelease();
  platform.run(5);
  ASSERT_FALSE(objects.controller.expired());
  EXPECT_EQ(embedded_cover::selfController, objects.controller.lock());
  EXPECT_EQ(objects.view.lock()->window(), window);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  objects.controller.lock()->dismissViewController(nullptr);
  platform.run(1);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  expectAllDestroyed(objects);
}

TEST_F(LaunchScreenObjectsTest, EarlyDeactivationDoesNotCloseTheModalWindowOrSheet) {
  for (const std::int32_t hostMode : {kHostModeSheet, kHostModeModalWindow}) {
    manager = LaunchScreenManager::init();
    const LaunchScreenObjects objects = show(openPlayerWindowWithContentViewController(), hostMode);
    deactivateAndRelease();
    platform.run(5);
    ASSERT_FALSE(objects.view.expired());
    objects.view.lock()->window()->close();
    expectAllDestroyed(objects);
  }
}

}  // namespace
}  // namespace vel::test
