// How long the manager, its contents and their view controllers live, and which objects own them.
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Events = std::vector<VirtualPlatform::Event>;

class LifetimeTest : public LaunchScreenTest {
 protected:
  // Releases the manager without deactivation.
  void releaseManager() {
    watch();
    manager = nullptr;
  }
  void deactivateAndReleaseManager() {
    watch();
    manager->deactivate();
    manager = nullptr;
  }
  [[nodiscard]] bool areAllDestroyed() const {
    return watchedManager.expired() && watchedContent.expired() && watchedController.expired();
  }

  Weak<LaunchScreenManager> watchedManager;
  Weak<LaunchScreenContent> watchedContent;
  Weak<LaunchScreenViewController> watchedController;

 private:
  void watch() {
    watchedManager = manager;
    watchedContent = manager->content();
    watchedController = controller();
  }
};

// Deactivation

TEST_F(LifetimeTest, TheManagerIsDestroyedWithItsContentAndControllerAfterDeactivation) {
  load(5.0);
  deactivateAndReleaseManager();
  EXPECT_TRUE(areAllDestroyed());
}

TEST_F(LifetimeTest, TheTemporaryContentIsDestroyedAfterDeactivation) {
  load(5.0);
  const auto window = openPlayerWindowWithContentViewController();
  // A child view controller with the class name of the library's controller counts as a shown
  // launch screen. While a launch screen is shown, a new request gets a temporary content.
  window->contentViewController()->addChildViewController(
      make<NamedViewController>("LaunchScreenViewController"));
  manager->contentDataForContentRequest(makeRequest("e", 5));
  const Weak<LaunchScreenContent> temporaryContent = manager->tempContent();
  const Weak<NSViewController> temporaryController = manager->tempContent()->viewController();
  ASSERT_FALSE(temporaryContent.expired());
  deactivateAndReleaseManager();
  EXPECT_TRUE(temporaryContent.expired());
  EXPECT_TRUE(temporaryController.expired());
  EXPECT_TRUE(areAllDestroyed());
}

TEST_F(LifetimeTest, EverythingIsDestroyedAfterACompleteRunInEveryHostMode) {
  for (const std::int32_t mode : {kHostModeEmbedded, kHostModeSheet, kHostModeModalWindow}) {
    manager = LaunchScreenManager::init();
    load(0.5);
    present(openPlayerWindowWithContentViewController(), mode);
    platform.run(3.0);
    deactivateAndReleaseManager();
    EXPECT_TRUE(areAllDestroyed()) << "host mode " << mode;
  }
}

TEST_F(LifetimeTest, EverythingIsDestroyedAfterACompleteRunIfTheWindowHasNoContentViewController) {
  load(0.5);
  present(openPlayerWindow(), kHostModeEmbedded);
  platform.run(1.0);
  deactivateAndReleaseManager();
  EXPECT_FALSE(watchedController.expired())
      << "the cover is removed a second after it is dismissed";
  platform.run(1.0);
  EXPECT_TRUE(areAllDestroyed());
}

TEST_F(LifetimeTest, TheControllerTheContentAndTheManagerOwnEachOtherUntilDeactivation) {
  load(5.0);
  releaseManager();
  EXPECT_FALSE(watchedManager.expired());
  EXPECT_FALSE(watchedContent.expired());
  EXPECT_FALSE(watchedController.expired());
  watchedManager.lock()->deactivate();
  EXPECT_TRUE(areAllDestroyed());
}

TEST_F(LifetimeTest, AManagerWithoutARequestIsDestroyedWithoutDeactivation) {
  releaseManager();
  EXPECT_TRUE(watchedManager.expired());
  EXPECT_TRUE(watchedContent.expired());
}

TEST_F(LifetimeTest, AReplacedControllerThatIsNotShownIsDestroyed) {
  load(5.0);
  const Weak<LaunchScreenViewController> weakController = controller();
  load(5.0);
  EXPECT_TRUE(weakController.expired());
}

// Destruction

TEST_F(LifetimeTest, DestructionRemovesAllObservers) {
  manager->subscribeAppLifecycle();
  ASSERT_EQ(registrationCount(), 6u);
  const NSObject* const managerAddress = manager.get();  // for comparison only
  releaseManager();
  EXPECT_TRUE(watchedManager.expired()) << "the notification centre does not own the manager";
  EXPECT_EQ(NSNotificationCenter::defaultCenter().registrationCount(managerAddress), 0u);
}

// The countdown

TEST_F(LifetimeTest, ARunningCountdownKeepsTheManagerAlive) {
  manager->setLaunchScreenExpirationTimeLeft(5.0);
  manager->startTimer();
  releaseManager();
  platform.run(1.0);
  ASSERT_FALSE(watchedManager.expired());
  watchedManager.lock()->pauseTimer();
  EXPECT_TRUE(watchedManager.expired());
}

TEST_F(LifetimeTest, AFinishedCountdownDoesNotOwnTheManager) {
  manager->setLaunchScreenExpirationTimeLeft(0.3);
  manager->startTimer();
  releaseManager();
  platform.run(0.299999999);
  EXPECT_FALSE(watchedManager.expired());
  platform.run(0.000000001);
  EXPECT_TRUE(watchedManager.expired());
}

TEST_F(LifetimeTest, AnInvalidTimerDoesNotOwnTheManager) {
  manager->setLaunchScreenExpirationTimeLeft(5.0);
  manager->startTimer();
  const auto stoppedTimer = timer();
  manager->stopTimer();
  releaseManager();
  EXPECT_FALSE(stoppedTimer->isValid());
  EXPECT_TRUE(watchedManager.expired());
}

TEST_F(LifetimeTest, PausingTheCountdownDestroysItsTimer) {
  manager->setLaunchScreenExpirationTimeLeft(5.0);
  manager->startTimer();
  const Weak<NSTimer> weakTimer = timer();
  manager->pauseTimer();
  EXPECT_TRUE(weakTimer.expired());
}

// Delayed work. A call of `sendAnalyticsEvent` records the event half a second later.

TEST_F(LifetimeTest, AScheduledEventKeepsItsConfigurationAliveButNotTheManager) {
  configuration().setNextEventName(NSString::stringWithUTF8String("late"));
  const Weak<LaunchScreenConfiguration> weakConfiguration =
      LaunchScreenConfiguration::defaultConfiguration();
  manager->sendAnalyticsEvent();
  LaunchScreenConfiguration::setDefaultConfiguration(LaunchScreenConfiguration::init());
  releaseManager();
  EXPECT_TRUE(watchedManager.expired());
  platform.run(0.499999999);
  EXPECT_FALSE(weakConfiguration.expired());
  platform.run(0.000000001);
  EXPECT_TRUE(weakConfiguration.expired());
  EXPECT_EQ(platform.events, (Events{{"late", 0.5}}));
}

TEST_F(LifetimeTest, APostponedEventKeepsTheManagerAliveForASecondAfterTheWindowBecomesKey) {
  const auto window = openPlayerWindow();
  window->setContentViewController(make<NamedViewController>("HostViewController"));
  // `windowDidBecomeKey` ignores windows without a launch screen. A child view controller with
  // the class name of the launch screen's controller counts as a launch screen.
  window->contentViewController()->addChildViewController(
      make<NamedViewController>("HostController"));
  loadHostController(5.0);
  manager->setLaunchScreenExpirationTimeLeft(0.0);
  manager->setLaunchShouldBeClosed(true);  // the event was postponed while the window was not key
  manager->windowDidBecomeKey(
      NSNotification::initWithNameObject(NSWindowDidBecomeKeyNotification, window));
  ASSERT_EQ(pendingTaskCount(), 1u);
  deactivateAndReleaseManager();
  platform.run(0.999999999);
  EXPECT_FALSE(watchedManager.expired());
  platform.run(0.000000001);
  EXPECT_TRUE(watchedManager.expired());
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 1.5}}));
}

TEST_F(LifetimeTest, ARefusedDismissalKeepsTheManagerAliveForTwoSeconds) {
  manager->setLaunchScreenExpirationTimeLeft(5.0);
  configuration().setNextEventName(NSString::stringWithUTF8String("early"));
  // The refusal calls `sendAnalyticsEvent` two seconds later.
  ASSERT_FALSE(manager->canLaunchScreenControllerDismiss(nullptr));
  releaseManager();
  platform.run(1.999999999);
  EXPECT_FALSE(watchedManager.expired());
  platform.run(0.000000001);
  EXPECT_TRUE(watchedManager.expired());
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"early", 2.5}}));
}

TEST_F(LifetimeTest, ADismissalFromAnotherThreadKeepsTheManagerAliveUntilTheMainThreadDismisses) {
  runOnAnotherThread([this] { manager->dismissLaunchScreen(); });
  releaseManager();
  EXPECT_FALSE(watchedManager.expired());
  platform.runDueWork();
  EXPECT_TRUE(watchedManager.expired());
}

TEST_F(LifetimeTest, TheContentOfARequestOnAnotherThreadLivesUntilTheContentIsDeactivated) {
  runOnAnotherThread([this] { manager->contentDataForContentRequest(makeRequest("e", 5)); });
  watchedContent = manager->content();
  manager->deactivate();
  EXPECT_FALSE(watchedContent.expired());
  platform.runDueWork();  // the main thread builds the controller
  ASSERT_FALSE(watchedContent.expired()) << "the new controller owns its delegate, the content";
  watchedContent.lock()->deactivate();
  EXPECT_TRUE(watchedContent.expired());
}

}  // namespace
}  // namespace vel::test
