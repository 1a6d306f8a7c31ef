// The countdown: start, ticks, exact arithmetic, pause and stop.
#include <cmath>
#include <limits>
#include <ostream>
#include <thread>

#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Calls = std::vector<std::string>;

// The double nearest to 0.1. The tests write exact values in hexadecimal.
constexpr double kTenth = 0x1.999999999999ap-4;

class ExpirationTimerTest : public LaunchScreenTest {
 protected:
  // Runs the loop for exactly `count` tick intervals of 0.1 s.
  void runTicks(int count) {
    NSRunLoop& loop = NSRunLoop::mainRunLoop();
    loop.runUntilDate(loop.now() + count * Nanoseconds{100'000'000});
  }
};

// Starting

TEST_F(ExpirationTimerTest, StartWithTimeLeftSchedulesATimerAndSubtractsNothing) {
  setTimeLeft(1.0);
  manager->startTimer();
  ASSERT_NE(timer(), nullptr);
  EXPECT_TRUE(timer()->isValid());
  EXPECT_EQ(timer()->target(), manager);
  EXPECT_EQ(timer()->fireDate(), 100'000'000);
  EXPECT_EQ(timeLeft(), 1.0);
}

TEST_F(ExpirationTimerTest, StartWithoutTimeLeftCreatesNoTimer) {
  for (const double seconds :
       {0.0, -0.0, -0x1p-55, -0.1, -3.0, -std::numeric_limits<double>::infinity()}) {
    setTimeLeft(seconds);
    manager->startTimer();
    EXPECT_EQ(timer(), nullptr) << seconds;
    EXPECT_EQ(timeLeft(), seconds);
  }
  EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
}

TEST_F(ExpirationTimerTest, StartOnAThreadWithoutARunLoopCreatesATimerThatNeverFires) {
  setTimeLeft(1.0);
  std::thread([this] { manager->startTimer(); }).join();
  ASSERT_NE(timer(), nullptr);
  runTicks(20);
  EXPECT_EQ(timeLeft(), 1.0);
  EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
  manager->pauseTimer();  // a valid timer would keep the manager alive
}

TEST_F(ExpirationTimerTest, TheSmallestPositiveTimeLeftStartsTheCountdown) {
  setTimeLeft(std::numeric_limits<double>::denorm_min());
  manager->startTimer();
  EXPECT_NE(timer(), nullptr);
}

TEST_F(ExpirationTimerTest, ATimeLeftOfNaNStartsACountdownThatNeverEnds) {
  setTimeLeft(std::numeric_limits<double>::quiet_NaN());
  manager->startTimer();
  runTicks(1000);
  EXPECT_NE(timer(), nullptr);
  EXPECT_TRUE(std::isnan(timeLeft()));
  EXPECT_FALSE(manager->launchScreenExpired());
}

TEST_F(ExpirationTimerTest, StartNeitherReplacesNorRestartsTheTimerOfARunningCountdown) {
  setTimeLeft(1.0);
  manager->startTimer();
  const auto runningTimer = timer();
  platform.run(0.05);
  manager->startTimer();
  EXPECT_EQ(timer(), runningTimer);
  EXPECT_EQ(timer()->fireDate(), 100'000'000);
  EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 1u);
}

TEST_F(ExpirationTimerTest, StartReplacesAnInvalidTimer) {
  setTimeLeft(1.0);
  manager->startTimer();
  const auto previousTimer = timer();
  previousTimer->invalidate();
  ASSERT_EQ(timer(), previousTimer);
  manager->startTimer();
  ASSERT_NE(timer(), previousTimer);
  EXPECT_TRUE(timer()->isValid());
}

// Ticks. Each tick of the timer calls `updateTimer`.

TEST_F(ExpirationTimerTest, TicksComeExactlyEveryTenthOfASecond) {
  setTimeLeft(1.0);
  manager->startTimer();
  platform.run(0.099999999);
  EXPECT_EQ(timeLeft(), 1.0);
  platform.run(0.000000001);
  EXPECT_EQ(timeLeft(), 0x1.ccccccccccccdp-1);
  platform.run(0.099999999);
  EXPECT_EQ(timeLeft(), 0x1.ccccccccccccdp-1);
  platform.run(0.000000001);
  EXPECT_EQ(timeLeft(), 0x1.999999999999ap-1);
}

TEST_F(ExpirationTimerTest, EachTickSubtractsTheDoubleNearestToATenth) {
  const double timesLeft[] = {1.0,
                              0x1.ccccccccccccdp-1,
                              0x1.999999999999ap-1,
                              0x1.6666666666667p-1,
                              0x1.3333333333334p-1,
                              0x1.0000000000001p-1,
                              0x1.999999999999cp-2,
                              0x1.3333333333336p-2,
                              0x1.999999999999fp-3,
                              0x1.99999999999a4p-4,
                              0x1.4p-53,
                              -0x1.999999999999p-4};
  setTimeLeft(timesLeft[0]);
  for (const double expectedTimeLeft : timesLeft) {
    EXPECT_EQ(timeLeft(), expectedTimeLeft);
    manager->updateTimer();
  }
}

TEST_F(ExpirationTimerTest, ATickWithATimeLeftOfZeroChangesNothing) {
  const auto hostController = loadHostController(5.0);
  hostController->calls.clear();
  for (const double zero : {0.0, -0.0}) {
    setTimeLeft(zero);
    manager->updateTimer();
    EXPECT_EQ(timeLeft(), 0.0);
    EXPECT_EQ(std::signbit(timeLeft()), std::signbit(zero));
  }
  EXPECT_TRUE(hostController->calls.empty());
  EXPECT_FALSE(manager->launchScreenExpired());
}

TEST_F(ExpirationTimerTest, ATickWithATimeLeftOfZeroKeepsTheTimer) {
  setTimeLeft(1.0);
  manager->startTimer();
  setTimeLeft(0.0);
  runTicks(3);
  ASSERT_NE(timer(), nullptr);
  EXPECT_TRUE(timer()->isValid());
}

TEST_F(ExpirationTimerTest, ATickWithANegativeTimeLeftDismissesAndSubtracts) {
  const auto hostController = loadHostController(5.0);
  hostController->calls.clear();
  setTimeLeft(-0.25);
  manager->updateTimer();
  EXPECT_EQ(hostController->calls, Calls{"dismissViewController"});
  EXPECT_EQ(timeLeft(), -0x1.6666666666666p-2);
}

TEST_F(ExpirationTimerTest, TheLastTickReleasesTheTimerThenDismissesThenSubtracts) {
  const auto hostController = loadHostController(5.0);
  setTimeLeft(0.2);
  manager->startTimer();
  const auto runningTimer = timer();
  bool wasCalled = false;
  hostController->onNextCall([&] {
    wasCalled = true;
    EXPECT_EQ(timer(), nullptr);
    EXPECT_FALSE(runningTimer->isValid());
    EXPECT_EQ(timeLeft(), kTenth);
    EXPECT_TRUE(manager->launchScreenExpired());
  });
  runTicks(2);
  EXPECT_TRUE(wasCalled);
}

// The arithmetic

struct Countdown {
  double initialTimeLeft;
  int dismissingTick;     // the number of the tick that dismisses, counted from 1
  double timeLeftBefore;  // the time left before the dismissing tick
  double timeLeftAfter;   // after the dismissing tick, unless the dismissal stops the countdown
};

std::ostream& operator<<(std::ostream& out, const Countdown& countdown) {
  return out << countdown.initialTimeLeft << " s";
}

class CountdownTest : public ExpirationTimerTest, public testing::WithParamInterface<Countdown> {};

TEST_P(CountdownTest, DismissesAtTheExpectedTick) {
  // The dismissal of a HostController does not change the time left.
  const auto hostController = loadHostController(5.0);
  hostController->calls.clear();
  double timeLeftBefore = -1;
  hostController->onNextCall([&] { timeLeftBefore = timeLeft(); });
  setTimeLeft(GetParam().initialTimeLeft);
  manager->startTimer();

  runTicks(GetParam().dismissingTick - 1);
  EXPECT_TRUE(hostController->calls.empty());
  EXPECT_NE(timer(), nullptr);
  runTicks(1);
  EXPECT_EQ(hostController->calls, Calls{"dismissViewController"});
  EXPECT_EQ(timer(), nullptr);
  EXPECT_EQ(timeLeftBefore, GetParam().timeLeftBefore);
  EXPECT_EQ(timeLeft(), GetParam().timeLeftAfter);
  EXPECT_FALSE(std::signbit(timeLeft()) && timeLeft() == 0.0);  // not -0.0

  manager->startTimer();
  EXPECT_EQ(timer(), nullptr) << "the remaining time starts no countdown";
  platform.run(1.0);
  EXPECT_EQ(hostController->calls.size(), 1u);
}

TEST_P(CountdownTest, ADismissalThatStopsTheCountdownMakesTheTimeLeftNegative) {
  load(5.0);
  addHostDelegate();
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  journal->clear();
  manager->pauseTimer();  // `present` has started the countdown
  setTimeLeft(GetParam().initialTimeLeft);
  manager->startTimer();

  runTicks(GetParam().dismissingTick - 1);
  EXPECT_TRUE(journal->empty());
  runTicks(1);
  EXPECT_EQ(*journal, (Lines{"host: can dismiss", "host: did dismiss"}));
  // The dismissal stops the countdown and sets the time left to 0. The tick then subtracts 0.1.
  EXPECT_EQ(timeLeft(), -kTenth);
  manager->startTimer();
  EXPECT_EQ(timer(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    ExpirationTimer, CountdownTest,
    testing::Values(Countdown{0.05, 1, 0x1.999999999999ap-5, -0x1.999999999999ap-5},
                    Countdown{0.1, 1, 0x1.999999999999ap-4, 0.0},
                    Countdown{0.2, 2, 0x1.999999999999ap-4, 0.0},
                    Countdown{0.3, 3, 0x1.9999999999998p-4, -0x1p-55},
                    Countdown{1.0, 11, 0x1.4p-53, -0x1.999999999999p-4},
                    Countdown{2.0, 20, 0x1.999999999996cp-4, -0x1.7p-51},
                    Countdown{3.0, 30, 0x1.999999999992cp-4, -0x1.b8p-50},
                    Countdown{5.0, 51, 0x1.28p-50, -0x1.999999999995p-4},
                    Countdown{10.0, 101, 0x1.528p-46, -0x1.999999999945p-4},
                    // The single-precision values nearest to 0.1 and 0.3.
                    Countdown{0.10000000149011612, 2, 0x1.9999998p-30, -0x1.9999993333334p-4},
                    Countdown{0.30000001192092896, 4, 0x1.9999999p-27, -0x1.9999966666668p-4}));

// Pausing and stopping

TEST_F(ExpirationTimerTest, PauseInvalidatesTheTimerAndKeepsTheTimeLeft) {
  setTimeLeft(1.0);
  manager->startTimer();
  const auto runningTimer = timer();
  runTicks(2);
  manager->pauseTimer();
  EXPECT_FALSE(runningTimer->isValid());
  EXPECT_EQ(timer(), nullptr);
  platform.run(5.0);
  EXPECT_EQ(timeLeft(), 0x1.999999999999ap-1);
}

TEST_F(ExpirationTimerTest, PauseWithoutATimerChangesNothing) {
  setTimeLeft(1.0);
  manager->pauseTimer();
  EXPECT_EQ(timer(), nullptr);
  EXPECT_EQ(timeLeft(), 1.0);
}

TEST_F(ExpirationTimerTest, PauseAlsoReleasesAnInvalidTimer) {
  setTimeLeft(1.0);
  manager->startTimer();
  timer()->invalidate();
  manager->pauseTimer();
  EXPECT_EQ(timer(), nullptr);
}

TEST_F(ExpirationTimerTest, StartAfterAPauseSchedulesTheNextTickAFullIntervalLater) {
  setTimeLeft(1.0);
  manager->startTimer();
  const auto previousTimer = timer();
  platform.run(0.25);  // two ticks; the pause discards the half interval
  manager->pauseTimer();
  platform.run(3.0);
  manager->startTimer();
  EXPECT_NE(timer(), previousTimer);
  platform.run(0.099999999);
  EXPECT_EQ(timeLeft(), 0x1.999999999999ap-1);
  platform.run(0.000000001);
  EXPECT_EQ(timeLeft(), 0x1.6666666666667p-1);
}

TEST_F(ExpirationTimerTest, StopInvalidatesTheTimerAndSetsTheTimeLeftToZero) {
  setTimeLeft(1.0);
  manager->startTimer();
  const auto runningTimer = timer();
  manager->stopTimer();
  EXPECT_FALSE(runningTimer->isValid());
  EXPECT_EQ(timer(), nullptr);
  EXPECT_EQ(timeLeft(), 0.0);
  EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
}

TEST_F(ExpirationTimerTest, StopOfAPausedOrFinishedCountdownSetsTheTimeLeftToZero) {
  for (const double seconds : {1.0, -0.1}) {
    setTimeLeft(seconds);
    manager->stopTimer();
    EXPECT_EQ(timeLeft(), 0.0);
    EXPECT_EQ(timer(), nullptr);
  }
}

TEST_F(ExpirationTimerTest, StartAfterAStopNeedsANewTimeLeft) {
  setTimeLeft(1.0);
  manager->startTimer();
  manager->stopTimer();
  manager->startTimer();
  EXPECT_EQ(timer(), nullptr);
  load(2.0);
  manager->startTimer();
  EXPECT_NE(timer(), nullptr);
}

TEST_F(ExpirationTimerTest, ACountdownLogsNothing) {
  setTimeLeft(0.3);
  manager->startTimer();
  platform.run(1.0);
  EXPECT_TRUE(platform.log.empty());
}

// Modes of the run loop

TEST_F(ExpirationTimerTest, TheCountdownRunsInTheDefaultAndTheModalPanelMode) {
  for (const NSRunLoopMode mode : {NSDefaultRunLoopMode, NSModalPanelRunLoopMode}) {
    setTimeLeft(1.0);
    manager->startTimer();
    NSRunLoop::mainRunLoop().setMode(mode);
    runTicks(1);
    EXPECT_EQ(timeLeft(), 0x1.ccccccccccccdp-1);
    manager->stopTimer();
  }
}

TEST_F(ExpirationTimerTest, ATickInOneModeIsNotRepeatedInTheOtherMode) {
  setTimeLeft(1.0);
  manager->startTimer();
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  runTicks(1);
  loop.runPass(NSModalPanelRunLoopMode);
  loop.runPass(NSDefaultRunLoopMode);
  EXPECT_EQ(timeLeft(), 0x1.ccccccccccccdp-1);
}

TEST_F(ExpirationTimerTest, TheCountdownDoesNotRunInEventTrackingMode) {
  setTimeLeft(1.0);
  manager->startTimer();
  const auto runningTimer = timer();
  NSRunLoop::mainRunLoop().setMode(NSEventTrackingRunLoopMode);
  platform.run(5.0);
  EXPECT_EQ(timeLeft(), 1.0);
  EXPECT_EQ(timer(), runningTimer);
  NSRunLoop::mainRunLoop().setMode(NSDefaultRunLoopMode);
  platform.run(0.1);
  EXPECT_EQ(timeLeft(), 0x1.999999999999ap-1) << "one late tick and the next tick";
}

}  // namespace
}  // namespace vel::test
