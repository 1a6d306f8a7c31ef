// LaunchScreenManager is a delegate of the launch screen's controller. The manager runs the
// countdown, and allows or refuses dismissals. When a launch screen is about to be presented, the
// manager subscribes to six notifications. The manager also schedules an analytics event. The event
// is recorded half a second after it has been scheduled.
#include <limits>

#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Events = std::vector<VirtualPlatform::Event>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class CallbacksTest : public LaunchScreenTest {
 protected:
  CallbacksTest() { configuration().setNextEventName(NSString::stringWithUTF8String("e")); }

  bool canDismiss() { return manager->canLaunchScreenControllerDismiss(controller()); }
  // Starts a countdown with this time left.
  void startCountdown(double seconds) {
    setTimeLeft(seconds);
    manager->startTimer();
  }
  // Shows a launch screen whose controller presents another controller as a sheet. Returns the
  // presented controller. The sheet takes the focus, so the manager sets `appIsUnfocused` and
  // pauses the countdown.
  Strong<NSViewController> showLaunchScreenThatPresentsASheet(double duration) {
    load(duration);
    present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
    auto sheet = make<NamedViewController>("NSViewController");
    controller()->presentViewControllerAsSheet(sheet);
    EXPECT_EQ(controller()->presentedViewControllers().size(), 1u);
    return sheet;
  }
};

// launchScreenControllerWillPresent

TEST_F(CallbacksTest, WillPresentSubscribesAndStartsTheCountdown) {
  setTimeLeft(5.0);
  manager->launchScreenControllerWillPresent(nullptr);
  EXPECT_EQ(registrationCount(), 6u);
  ASSERT_NE(timer(), nullptr);
  EXPECT_TRUE(timer()->isValid());
  EXPECT_EQ(timeLeft(), 5.0);
}

TEST_F(CallbacksTest, WillPresentStartsNoCountdownIfTheTimeLeftIsNotPositive) {
  std::size_t callCount = 0;
  for (const double seconds : {0.0, -0.1, -3.0, kNaN}) {
    setTimeLeft(seconds);
    manager->launchScreenControllerWillPresent(nullptr);
    EXPECT_EQ(registrationCount(), 6 * ++callCount);
    EXPECT_EQ(timer(), nullptr) << seconds;
  }
}

TEST_F(CallbacksTest, WillPresentStartsNoCountdownWhileTheAppIsUnfocused) {
  setTimeLeft(5.0);
  manager->setAppIsUnfocused(true);
  manager->launchScreenControllerWillPresent(nullptr);
  EXPECT_EQ(registrationCount(), 6u);
  EXPECT_EQ(timer(), nullptr);
  EXPECT_TRUE(manager->appIsUnfocused());
}

TEST_F(CallbacksTest, ASecondWillPresentSubscribesAgainAndKeepsTheCountdown) {
  setTimeLeft(5.0);
  manager->launchScreenControllerWillPresent(nullptr);
  const auto runningTimer = timer();
  manager->launchScreenControllerWillPresent(nullptr);
  EXPECT_EQ(registrationCount(), 12u);
  EXPECT_EQ(timer(), runningTimer);
}

// canLaunchScreenControllerDismiss in skip mode

TEST_F(CallbacksTest, SkipModeAllowsEveryDismissalWhileTheAppIsFocused) {
  configuration().setSkipMode(true);
  for (const double seconds : {5.0, 0.1, 0.05, 0.0, -0.1, kNaN}) {
    startCountdown(seconds);
    const auto runningTimer = timer();
    EXPECT_TRUE(canDismiss()) << seconds;
    EXPECT_EQ(timer(), runningTimer);
    EXPECT_EQ(pendingTaskCount(), 0u);
    EXPECT_FALSE(manager->eventWasSended());
    EXPECT_FALSE(manager->launchShouldBeClosed());
    manager->pauseTimer();
  }
}

TEST_F(CallbacksTest, ADismissalInSkipModeKeepsTheTimeLeft) {
  configuration().setSkipMode(true);
  startCountdown(0.05);
  EXPECT_TRUE(canDismiss());
  EXPECT_EQ(timeLeft(), 0.05);
}

TEST_F(CallbacksTest, SkipModePostponesADismissalWhileTheAppIsUnfocused) {
  configuration().setSkipMode(true);
  manager->setAppIsUnfocused(true);
  for (const double seconds : {5.0, 0.05}) {
    manager->setLaunchShouldBeClosed(false);
    startCountdown(seconds);
    const auto runningTimer = timer();
    EXPECT_FALSE(canDismiss());
    EXPECT_TRUE(manager->launchShouldBeClosed());
    EXPECT_EQ(timer(), runningTimer);
    EXPECT_EQ(timeLeft(), seconds);
    EXPECT_EQ(pendingTaskCount(), 0u);
    manager->pauseTimer();
  }
}

TEST_F(CallbacksTest, SkipModeAllowsADismissalWhileASheetIsPresented) {
  const auto sheet = showLaunchScreenThatPresentsASheet(5.0);
  configuration().setSkipMode(true);
  manager->setAppIsUnfocused(false);
  EXPECT_TRUE(canDismiss());
}

TEST_F(CallbacksTest, SkipModeRecordsNoEvent) {
  load(5.0, "skip");
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  platform.run(1.0);
  manager->dismissLaunchScreen();
  EXPECT_EQ(controller()->view()->window(), nullptr);
  platform.run(10.0);
  EXPECT_TRUE(platform.events.empty());
  EXPECT_FALSE(manager->eventWasSended());
}

TEST_F(CallbacksTest, TheCountdownEndsTheLaunchScreenInSkipMode) {
  load(1.0, "skip");
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  platform.run(1.1);
  EXPECT_EQ(controller()->view()->window(), nullptr);
  platform.run(10.0);
  EXPECT_TRUE(platform.events.empty());
}

// canLaunchScreenControllerDismiss for a late dismissal: at most one tick (0.1 s) of the countdown
// is left.

TEST_F(CallbacksTest, ALateDismissalIsAllowedAndSetsTheTimeLeftToZero) {
  load(5.0);
  for (const double seconds : {0.1, 0.05, 0.0, -0.1}) {
    setTimeLeft(seconds);
    EXPECT_TRUE(canDismiss()) << seconds;
    EXPECT_EQ(timeLeft(), 0.0);
    EXPECT_EQ(timer(), nullptr);
    EXPECT_EQ(pendingTaskCount(), 0u);
  }
}

TEST_F(CallbacksTest, ALateDismissalSchedulesTheEventIfTheTimerIsRunning) {
  load(5.0);
  manager->setLaunchScreenExpired(true);
  startCountdown(0.1);
  const auto runningTimer = timer();
  EXPECT_TRUE(canDismiss());
  EXPECT_FALSE(runningTimer->isValid());
  EXPECT_EQ(timer(), nullptr);
  EXPECT_TRUE(manager->eventWasSended());
  EXPECT_FALSE(manager->launchScreenExpired());
  platform.run(5.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 0.5}}));
}

TEST_F(CallbacksTest, ALateDismissalSchedulesNoEventIfTheTimerIsInvalid) {
  load(5.0);
  startCountdown(0.1);
  timer()->invalidate();
  EXPECT_TRUE(canDismiss());
  EXPECT_FALSE(manager->eventWasSended());
  EXPECT_EQ(timer(), nullptr);
}

TEST_F(CallbacksTest, ALateDismissalPostponesTheEventWhileTheAppIsUnfocused) {
  load(5.0);
  manager->setAppIsUnfocused(true);
  startCountdown(0.1);
  EXPECT_TRUE(canDismiss());
  EXPECT_TRUE(manager->launchShouldBeClosed());
  EXPECT_FALSE(manager->eventWasSended());
}

TEST_F(CallbacksTest, ALateDismissalIsRefusedWhileASheetIsPresented) {
  const auto sheet = showLaunchScreenThatPresentsASheet(5.0);
  manager->setAppIsUnfocused(false);
  startCountdown(0.1);
  ASSERT_NE(timer(), nullptr);
  EXPECT_FALSE(canDismiss());
  EXPECT_EQ(timer(), nullptr);
  EXPECT_EQ(timeLeft(), 0.0);
  EXPECT_TRUE(manager->eventWasSended()) << "the timer was running";
  // Calls the base class, because the override in LaunchScreenViewController asks the delegates.
  controller()->NSViewController::dismissViewController(sheet);
  EXPECT_TRUE(canDismiss());
}

TEST_F(CallbacksTest, ALateDismissalOfANullControllerIsAllowed) {
  setTimeLeft(0.1);
  EXPECT_TRUE(manager->canLaunchScreenControllerDismiss(nullptr));
}

// canLaunchScreenControllerDismiss for an early dismissal: more than 0.1 s is left.

TEST_F(CallbacksTest, AnEarlyDismissalIsRefusedAndTheEventIsScheduledAfterTwoSeconds) {
  load(5.0);
  // The first value is the smallest double above 0.1. The third value is the float nearest to 0.1.
  for (const double seconds : {0x1.999999999999bp-4, 0.1000001, 0.10000000149011612, 5.0}) {
    startCountdown(seconds);
    const auto runningTimer = timer();
    EXPECT_FALSE(canDismiss()) << seconds;
    EXPECT_EQ(timer(), runningTimer);
    EXPECT_TRUE(runningTimer->isValid());
    EXPECT_EQ(timeLeft(), seconds);
    EXPECT_FALSE(manager->launchShouldBeClosed());
    manager->pauseTimer();
  }
  EXPECT_EQ(pendingTaskCount(), 4u);
  platform.run(1.999999999);
  EXPECT_FALSE(manager->eventWasSended());
  platform.run(0.000000001);
  EXPECT_TRUE(manager->eventWasSended());
  platform.run(5.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 2.5}})) << "one event for all four refusals";
}

TEST_F(CallbacksTest, ADismissalIsRefusedIfTheTimeLeftIsNaN) {
  load(5.0);
  setTimeLeft(kNaN);
  EXPECT_FALSE(canDismiss());
  EXPECT_EQ(pendingTaskCount(), 1u);
}

TEST_F(CallbacksTest, ARefusedDismissalKeepsTheLaunchScreenUntilItsTimeIsUsedUp) {
  load(5.0);
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  platform.run(1.0);
  manager->dismissLaunchScreen();
  EXPECT_NE(controller()->view()->window(), nullptr);
  platform.run(4.0);
  EXPECT_NE(controller()->view()->window(), nullptr);
  platform.run(0.1);
  EXPECT_EQ(controller()->view()->window(), nullptr);
  platform.run(5.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 3.5}}))
      << "one event, 2.5 s after the refusal and before the end at 5.1 s";
}

TEST_F(CallbacksTest, TheEventOfARefusedDismissalIsPostponedIfTheWindowIsNotKey) {
  load(5.0);
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  EXPECT_FALSE(canDismiss());
  platform.run(1.0);
  platform.windowSystem().userMovesFocusAway();
  platform.run(5.0);
  EXPECT_TRUE(platform.events.empty());
  EXPECT_TRUE(manager->launchShouldBeClosed());
}

// launchScreenControllerWillDismiss and launchScreenControllerDidDismiss

TEST_F(CallbacksTest, WillDismissDoesNothing) {
  load(5.0);
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  const auto stateBefore = state();
  manager->launchScreenControllerWillDismiss(controller());
  EXPECT_EQ(state(), stateBefore);
}

TEST_F(CallbacksTest, DidDismissUnsubscribesAndStopsTheCountdownAndSchedulesTheEvent) {
  setTimeLeft(5.0);
  manager->launchScreenControllerWillPresent(nullptr);
  manager->launchScreenControllerWillPresent(nullptr);
  manager->setLaunchScreenExpired(true);
  const auto runningTimer = timer();
  manager->launchScreenControllerDidDismiss(nullptr);
  EXPECT_EQ(registrationCount(), 0u) << "all registrations are removed";
  EXPECT_FALSE(runningTimer->isValid());
  EXPECT_EQ(timer(), nullptr);
  EXPECT_EQ(timeLeft(), 0.0);
  EXPECT_FALSE(manager->launchScreenExpired());
  EXPECT_TRUE(manager->eventWasSended());
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"e", 0.5}}));
}

TEST_F(CallbacksTest, DidDismissSchedulesNoEventInSkipMode) {
  configuration().setSkipMode(true);
  setTimeLeft(5.0);
  manager->launchScreenControllerWillPresent(nullptr);
  manager->setLaunchScreenExpired(true);
  manager->launchScreenControllerDidDismiss(nullptr);
  EXPECT_EQ(registrationCount(), 0u);
  EXPECT_EQ(timer(), nullptr);
  EXPECT_EQ(timeLeft(), 0.0);
  EXPECT_FALSE(manager->eventWasSended());
  EXPECT_TRUE(manager->launchScreenExpired());
  EXPECT_EQ(pendingTaskCount(), 0u);
}

// A launch screen whose time is used up

TEST_F(CallbacksTest, TheLastTickSchedulesNoEventBeforeTheDismissal) {
  load(1.0);
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  const auto hostDelegate = addHostDelegate();
  bool wasScheduledBeforeDismissal = true;
  hostDelegate->onNext(CoverCall::CanDismiss,
                       [&] { wasScheduledBeforeDismissal = manager->eventWasSended(); });
  platform.run(1.1);
  EXPECT_FALSE(wasScheduledBeforeDismissal);
  EXPECT_TRUE(manager->eventWasSended());
  EXPECT_EQ(registrationCount(), 0u);
  platform.run(5.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 1.6}}));
}

TEST_F(CallbacksTest, ALaunchScreenThatPresentsASheetStaysWhenItsTimeIsUsedUp) {
  const auto sheet = showLaunchScreenThatPresentsASheet(1.0);
  // Resume the countdown, which paused when the sheet took the focus.
  manager->startTimer();
  platform.run(10.0);
  EXPECT_NE(controller()->view()->window(), nullptr);
  EXPECT_EQ(timer(), nullptr);
  // The last tick requests the dismissal. The manager refuses it and sets the time left to 0. The
  // same tick then subtracts 0.1.
  EXPECT_EQ(timeLeft(), -0.1);
  EXPECT_TRUE(manager->launchScreenExpired());
  EXPECT_TRUE(platform.events.empty());
}

}  // namespace
}  // namespace vel::test
