// Tests how LaunchScreenManager reacts to changes of the key window. A window is required if the
// countdown may run while the window is key. The manager pauses the countdown when a required
// window resigns key, and resumes it when a required window becomes key.
//
// `launchShouldBeClosed` is set if a dismissal or an analytics event is postponed until a required
// window becomes key. In skip mode, the manager then dismisses the launch screen. In forced
// mode, it schedules the event.
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Calls = std::vector<std::string>;
using Events = std::vector<VirtualPlatform::Event>;

class FocusTest : public ShownLaunchScreenTest {};

void post(NSNotificationName name, const Strong<NSObject>& object) {
  NSNotificationCenter::defaultCenter().postNotificationNameObject(name, object);
}

// Subscribing

TEST_F(FocusTest, SubscribeRegistersSixObservers) {
  manager->subscribeAppLifecycle();
  EXPECT_EQ(registrationCount(), 6u);
}

TEST_F(FocusTest, ANotificationCallsItsHandlerTwiceAfterTwoSubscriptions) {
  show(5.0, "skip");
  manager->setLaunchShouldBeClosed(true);
  manager->subscribeAppLifecycle();
  manager->subscribeAppLifecycle();
  EXPECT_EQ(registrationCount(), 12u);
  post(NSWindowDidBecomeKeyNotification, window);
  EXPECT_EQ(hostController->calls, (Calls{"dismissViewController", "dismissViewController"}));
}

TEST_F(FocusTest, SubscribedNotificationsPauseAndResumeTheCountdown) {
  show(5.0);
  manager->subscribeAppLifecycle();
  post(NSWindowDidResignKeyNotification, window);
  EXPECT_TRUE(manager->appIsUnfocused());
  EXPECT_EQ(timer(), nullptr);
  post(NSWindowDidBecomeKeyNotification, window);
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_NE(timer(), nullptr);
}

TEST_F(FocusTest, NotificationsOfApplicationActivationAndMiniaturizingHaveNoEffect) {
  show(5.0);
  manager->setLaunchShouldBeClosed(true);
  manager->subscribeAppLifecycle();
  for (const bool isCountingDown : {true, false}) {
    if (!isCountingDown) {
      notifyDidResignKey(window);
    }
    const auto stateBefore = state();
    for (const Strong<NSObject>& object : {Strong<NSObject>(window), Strong<NSObject>()}) {
      post(NSApplicationWillResignActiveNotification, object);
      post(NSApplicationDidBecomeActiveNotification, object);
      post(NSWindowDidMiniaturizeNotification, object);
      post(NSWindowDidDeminiaturizeNotification, object);
    }
    EXPECT_EQ(state(), stateBefore);
  }
}

TEST_F(FocusTest, HandlersUnrelatedToTheKeyWindowDoNothing) {
  show(5.0);
  const auto stateBefore = state();
  const auto notification =
      NSNotification::initWithNameObject(NSWindowDidMiniaturizeNotification, window);
  manager->applicationWillResignActive(notification);
  manager->applicationDidBecomeActive(notification);
  manager->windowDidMiniaturize(notification);
  manager->windowDidDeminiaturize(notification);
  manager->appWillEnterForeground();
  manager->appDidEnterBackground();
  EXPECT_EQ(state(), stateBefore);
}

// Deactivating the application makes the window resign key. Activating the application makes the
// window key again.
TEST_F(FocusTest, SwitchingToAnotherApplicationPausesTheCountdownUntilTheUserComesBack) {
  load(5.0);
  present(openPlayerWindow(), kHostModeEmbedded);
  platform.run(0.2);
  constexpr double kTimeLeftAfterTwoTicks = 0x1.3333333333334p+2;  // about 4.8 s
  platform.windowSystem().userDeactivatesApplication();
  EXPECT_TRUE(manager->appIsUnfocused());
  platform.run(3.0);
  platform.windowSystem().userActivatesApplication();
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_EQ(timeLeft(), kTimeLeftAfterTwoTicks);
  platform.run(0.1);
  EXPECT_LT(timeLeft(), kTimeLeftAfterTwoTicks);
}

// A window resigns key

TEST_F(FocusTest, ARequiredWindowThatResignsKeyPausesTheCountdown) {
  show(5.0);
  const auto runningTimer = timer();
  notifyDidResignKey(window);
  EXPECT_FALSE(runningTimer->isValid());
  EXPECT_EQ(timer(), nullptr);
  EXPECT_EQ(timeLeft(), 5.0);
  EXPECT_TRUE(manager->appIsUnfocused());
}

TEST_F(FocusTest, ARequiredWindowThatResignsKeySetsAppIsUnfocusedEvenWithoutACountdown) {
  show(5.0);
  manager->stopTimer();
  notifyDidResignKey(window);
  EXPECT_TRUE(manager->appIsUnfocused());
}

TEST_F(FocusTest, ARequiredWindowThatResignsKeyChangesNothingIfTheLaunchScreenHasExpired) {
  show(5.0);
  manager->setLaunchScreenExpired(true);
  const auto stateBefore = state();
  notifyDidResignKey(window);
  EXPECT_EQ(state(), stateBefore);
}

TEST_F(FocusTest, AWindowThatIsNotRequiredChangesNothingWhenItResignsKey) {
  show(5.0);
  const auto stateBefore = state();
  notifyDidResignKey(openWindow("NSWindow"));
  notifyDidResignKey(openPlayerWindowWithContentViewController());
  notifyDidResignKey(nullptr);
  notifyDidResignKey(hostController);  // a controller instead of a window
  EXPECT_EQ(state(), stateBefore);
}

// A window becomes key

TEST_F(FocusTest, ARequiredWindowThatBecomesKeyResumesTheCountdown) {
  show(5.0);
  notifyDidResignKey(window);
  notifyDidBecomeKey(window);
  EXPECT_FALSE(manager->appIsUnfocused());
  ASSERT_NE(timer(), nullptr);
  EXPECT_TRUE(timer()->isValid());
  EXPECT_EQ(pendingTaskCount(), 0u);
  EXPECT_TRUE(hostController->calls.empty());
}

TEST_F(FocusTest, ARequiredWindowThatBecomesKeyDoesNotChangeARunningCountdown) {
  show(5.0);
  const auto runningTimer = timer();
  notifyDidBecomeKey(window);
  EXPECT_EQ(timer(), runningTimer);
}

TEST_F(FocusTest, ARequiredWindowThatBecomesKeyStartsNoCountdownIfNoTimeIsLeft) {
  show(5.0);
  manager->stopTimer();  // also sets the time left to 0
  manager->setAppIsUnfocused(true);
  notifyDidBecomeKey(window);
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_EQ(timer(), nullptr);
}

TEST_F(FocusTest, AWindowThatIsNotRequiredChangesNothingWhenItBecomesKey) {
  show(5.0, "skip");
  notifyDidResignKey(window);
  manager->setLaunchShouldBeClosed(true);
  const auto stateBefore = state();
  notifyDidBecomeKey(openWindow("NSWindow"));
  notifyDidBecomeKey(nullptr);
  EXPECT_EQ(state(), stateBefore);
  EXPECT_TRUE(hostController->calls.empty());
}

TEST_F(FocusTest, APostponedEventIsSentOneSecondAfterTheWindowBecomesKey) {
  // Sending the event sets `eventWasSended`. The event is recorded half a second later.
  show(5.0);
  notifyDidResignKey(window);
  manager->sendAnalyticsEvent();
  ASSERT_TRUE(manager->launchShouldBeClosed());
  notifyDidBecomeKey(window);
  EXPECT_NE(timer(), nullptr) << "the countdown goes on at once";
  platform.run(0.999999999);
  EXPECT_FALSE(manager->eventWasSended());
  platform.run(0.000000001);
  EXPECT_TRUE(manager->eventWasSended());
  platform.run(0.5);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 1.5}}));
  EXPECT_TRUE(hostController->calls.empty());
}

TEST_F(FocusTest, APostponedEventStaysPostponedIfTheWindowResignsKeyAgain) {
  show(5.0);
  manager->setLaunchShouldBeClosed(true);
  notifyDidBecomeKey(window);
  EXPECT_EQ(pendingTaskCount(), 1u);
  platform.run(0.5);
  notifyDidResignKey(window);
  platform.run(5.0);
  EXPECT_EQ(pendingTaskCount(), 0u) << "the task has run";
  EXPECT_TRUE(platform.events.empty());
  EXPECT_FALSE(manager->eventWasSended());
  EXPECT_TRUE(manager->launchShouldBeClosed());
  // The event is recorded 1.5 s after the window becomes key again.
  notifyDidBecomeKey(window);
  platform.run(5.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 7.0}}));
}

TEST_F(FocusTest, APostponedEventIsRecordedOnceIfTheWindowBecomesKeyTwice) {
  show(5.0);
  manager->setLaunchShouldBeClosed(true);
  notifyDidBecomeKey(window);
  notifyDidBecomeKey(window);
  EXPECT_TRUE(manager->launchShouldBeClosed());
  EXPECT_EQ(pendingTaskCount(), 2u);
  platform.run(3.0);
  EXPECT_EQ(platform.events.size(), 1u) << "the event is recorded once";
}

TEST_F(FocusTest, APostponedDismissalRunsBeforeTheCountdownResumes) {
  show(5.0, "skip");
  notifyDidResignKey(window);
  manager->setLaunchShouldBeClosed(true);
  bool wasCalled = false;
  hostController->onNextCall([&] {
    wasCalled = true;
    EXPECT_EQ(timer(), nullptr);
    EXPECT_FALSE(manager->appIsUnfocused());
  });
  notifyDidBecomeKey(window);
  EXPECT_TRUE(wasCalled);
  EXPECT_EQ(hostController->calls, Calls{"dismissViewController"});
  EXPECT_NE(timer(), nullptr);
  EXPECT_EQ(pendingTaskCount(), 0u);
  EXPECT_TRUE(manager->launchShouldBeClosed());
}

TEST_F(FocusTest, NothingIsDismissedInSkipModeIfNoDismissalIsPostponed) {
  show(5.0, "skip");
  notifyDidResignKey(window);
  notifyDidBecomeKey(window);
  EXPECT_TRUE(hostController->calls.empty());
}

}  // namespace
}  // namespace vel::test
