#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Foundation/NSTimer.h"
#include "Platform/Foundation/TimerObserver.h"
#include "Tests/Foundation/Ticker.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

class NSTimerTest : public VirtualPlatformTest {
 protected:
  Strong<NSTimer> scheduleNamed(const std::string& name, double seconds,
                                Repeats repeats = Repeats::No) {
    return schedule(
        seconds, [this, name] { firedTimers.push_back(name); }, repeats);
  }

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  Strong<Ticker> ticker = make<Ticker>();
  std::vector<std::string> firedTimers;
};

TEST_F(NSTimerTest, FiresOnceAfterItsInterval) {
  schedule(0.5, ticker);
  platform.run(0.499999999);
  EXPECT_EQ(ticker->ticks(), 0);
  platform.run(0.000000001);
  EXPECT_EQ(ticker->ticks(), 1);
  platform.run(10);
  EXPECT_EQ(ticker->ticks(), 1);
}

TEST_F(NSTimerTest, RepeatsEveryInterval) {
  schedule(0.5, ticker, Repeats::Yes);
  platform.run(2.4);
  EXPECT_EQ(ticker->ticks(), 4);
}

TEST_F(NSTimerTest, TheSelectorMayHaveNoParameters) {
  class Alarm final : public Class<Alarm, "Alarm"> {
   public:
    void ring() { ++ringCount; }
    int ringCount = 0;
  };
  const auto alarm = make<Alarm>();
  NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Alarm::ring>(0.5, alarm, false);
  platform.run(1);
  EXPECT_EQ(alarm->ringCount, 1);
}

TEST_F(NSTimerTest, DueTimersFireInTheOrderOfTheirFireDates) {
  scheduleNamed("third", 0.3);
  scheduleNamed("first", 0.1);
  scheduleNamed("second", 0.2);
  letTimePass(1);
  loop.pump();
  EXPECT_EQ(firedTimers, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(NSTimerTest, TimersWithEqualFireDatesFireInTheOrderOfScheduling) {
  scheduleNamed("first", 0.2);
  letTimePass(0.1);
  scheduleNamed("second", 0.1);
  scheduleNamed("third", 0.1);
  platform.run(0.1);
  EXPECT_EQ(firedTimers, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(NSTimerTest, RepeatingTimersWithEqualFireDatesKeepTheOrderOfScheduling) {
  scheduleNamed("first", 0.1, Repeats::Yes);
  scheduleNamed("second", 0.2, Repeats::Yes);
  platform.run(0.2);
  EXPECT_EQ(firedTimers, (std::vector<std::string>{"first", "first", "second"}));
}

TEST_F(NSTimerTest, ALateRepeatingTimerFiresOnceAndKeepsItsPhase) {
  const auto timer = schedule(0.1, ticker, Repeats::Yes);
  letTimePass(0.35);
  platform.runDueWork();
  EXPECT_EQ(ticker->ticks(), 1);
  EXPECT_EQ(timer->fireDate(), nanosecondsFromSeconds(0.4));
}

TEST_F(NSTimerTest, ATimerThatIsLateByWholeIntervalsFiresOnceAndKeepsItsPhase) {
  const auto timer = schedule(0.1, ticker, Repeats::Yes);
  letTimePass(0.3);
  platform.runDueWork();
  EXPECT_EQ(ticker->ticks(), 1);
  EXPECT_EQ(timer->fireDate(), nanosecondsFromSeconds(0.4));
}

TEST_F(NSTimerTest, PhaseDoesNotDriftOverManyFirings) {
  const auto timer = schedule(0.1, ticker, Repeats::Yes);
  platform.run(1000);
  EXPECT_EQ(ticker->ticks(), 10'000);
  EXPECT_EQ(timer->fireDate(), nanosecondsFromSeconds(1000.1));
}

TEST_F(NSTimerTest, TheNextFireDateIsSetBeforeTheTargetIsCalled) {
  Nanoseconds fireDateDuringCall = 0;
  const auto slowTicker = make<Ticker>([&fireDateDuringCall](NSTimer& timer) {
    letTimePass(0.25);
    fireDateDuringCall = timer.fireDate();
  });
  const auto timer = schedule(0.1, slowTicker, Repeats::Yes);
  letTimePass(0.1);
  loop.pump();
  EXPECT_EQ(fireDateDuringCall, nanosecondsFromSeconds(0.2));
  EXPECT_EQ(timer->fireDate(), nanosecondsFromSeconds(0.2));
}

TEST_F(NSTimerTest, FiresOncePerPassEvenIfItsTargetIsSlow) {
  const auto slowTicker = make<Ticker>([](NSTimer&) { letTimePass(0.25); });
  const auto timer = schedule(0.1, slowTicker, Repeats::Yes);
  letTimePass(0.1);
  loop.pump();
  EXPECT_EQ(slowTicker->ticks(), 1);
  loop.pump();
  EXPECT_EQ(slowTicker->ticks(), 2);
}

TEST_F(NSTimerTest, ATimerThatBecomesDueDuringAPassFiresInTheNextPass) {
  schedule(0.1, [this] {
    scheduleNamed("scheduled in the pass", 0.01);
    letTimePass(1);
  });
  scheduleNamed("scheduled before the pass", 0.2);
  letTimePass(0.1);
  loop.pump();
  EXPECT_TRUE(firedTimers.empty());
  loop.pump();
  EXPECT_EQ(firedTimers,
            (std::vector<std::string>{"scheduled in the pass", "scheduled before the pass"}));
}

TEST_F(NSTimerTest, DoesNotFireIfAnEarlierTimerOfThePassInvalidatesIt) {
  Strong<NSTimer> secondTimer;
  schedule(0.1, [&secondTimer] { secondTimer->invalidate(); });
  secondTimer = scheduleNamed("second", 0.2);
  letTimePass(1);
  loop.pump();
  EXPECT_TRUE(firedTimers.empty());
}

TEST_F(NSTimerTest, DoesNotFireAgainWhileItsTargetRunsANestedLoop) {
  int depth = 0;
  int maximumDepth = 0;
  const auto nestingTicker = make<Ticker>([&](NSTimer&) {
    maximumDepth = std::max(maximumDepth, ++depth);
    loop.runUntilDate(loop.now() + nanosecondsFromSeconds(0.35));
    --depth;
  });
  schedule(0.1, nestingTicker, Repeats::Yes);
  scheduleNamed("other", 0.25);
  letTimePass(0.1);
  loop.pump();
  EXPECT_EQ(maximumDepth, 1);
  EXPECT_EQ(nestingTicker->ticks(), 1);
  EXPECT_EQ(firedTimers, std::vector<std::string>{"other"});
  loop.pump();  // the target has returned, so the timer fires again
  EXPECT_EQ(nestingTicker->ticks(), 2);
}

TEST_F(NSTimerTest, AOneShotTimerIsInvalidDuringAndAfterItsFiring) {
  bool isValidDuringCall = true;
  const auto oneShotTicker =
      make<Ticker>([&](NSTimer& timer) { isValidDuringCall = timer.isValid(); });
  const auto timer = schedule(0.1, oneShotTicker);
  EXPECT_TRUE(timer->isValid());
  platform.run(0.1);
  EXPECT_FALSE(isValidDuringCall);
  EXPECT_FALSE(timer->isValid());
  EXPECT_EQ(loop.timerCount(), 0u);
}

TEST_F(NSTimerTest, AOneShotTimerReleasesItsTargetAfterFiring) {
  const Weak<Ticker> target = ticker;
  const auto timer = schedule(0.1, ticker);
  ticker.reset();
  EXPECT_FALSE(target.expired());
  platform.run(0.1);
  EXPECT_TRUE(target.expired());
}

TEST_F(NSTimerTest, ARepeatingTimerReleasesItsTargetWhenInvalidated) {
  const Weak<Ticker> target = ticker;
  const auto timer = schedule(0.1, ticker, Repeats::Yes);
  ticker.reset();
  platform.run(1);
  EXPECT_FALSE(target.expired());
  timer->invalidate();
  EXPECT_TRUE(target.expired());
  EXPECT_EQ(timer->target(), nullptr);
}

TEST_F(NSTimerTest, ATargetStaysAliveWhileItInvalidatesItsTimer) {
  Weak<Ticker> target;
  bool isAliveDuringCall = false;
  {
    auto invalidatingTicker = make<Ticker>([&](NSTimer& timer) {
      timer.invalidate();
      isAliveDuringCall = !target.expired();
    });
    target = invalidatingTicker;
    schedule(0.1, invalidatingTicker, Repeats::Yes);
  }
  platform.run(1);
  EXPECT_TRUE(isAliveDuringCall);
  EXPECT_TRUE(target.expired());
  EXPECT_EQ(loop.timerCount(), 0u);
}

TEST_F(NSTimerTest, InvalidatingATimerASecondTimeDoesNothing) {
  const auto timer = schedule(0.1, ticker);
  timer->invalidate();
  timer->invalidate();
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
}

TEST_F(NSTimerTest, AnIntervalThatIsNotPositiveMeansATenthOfAMillisecond) {
  for (const double seconds : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    const auto timer = schedule(seconds, ticker);
    EXPECT_EQ(timer->fireDate(), 100'000);
    timer->invalidate();
  }
}

TEST_F(NSTimerTest, AnIntervalIsRoundedToWholeNanosecondsWithAMinimumOfOne) {
  EXPECT_EQ(schedule(0.1, ticker)->fireDate(), 100'000'000);
  EXPECT_EQ(schedule(1.6e-9, ticker)->fireDate(), 2);
  EXPECT_EQ(schedule(1e-12, ticker)->fireDate(), 1);
}

TEST_F(NSTimerTest, NeverFiresWithAnInfiniteInterval) {
  EXPECT_EQ(schedule(std::numeric_limits<double>::infinity(), ticker)->fireDate(), kNever);
  platform.run(1e6);
  EXPECT_EQ(ticker->ticks(), 0);
}

TEST_F(NSTimerTest, NeverFiresIfAThreadWithoutARunLoopSchedulesIt) {
  Strong<NSTimer> timer;
  std::thread([&] { timer = schedule(0.1, ticker); }).join();
  EXPECT_TRUE(timer->isValid());
  EXPECT_EQ(loop.timerCount(), 0u);
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
}

TEST_F(NSTimerTest, AThreadWithoutARunLoopMayInvalidateItsTimer) {
  bool isValid = true;
  std::thread otherThread([&isValid] {
    const auto timer = schedule(0.1, make<Ticker>());
    timer->invalidate();
    isValid = timer->isValid();
  });
  // If the other thread also accessed the run loop's timers, the thread sanitizer would report a
  // data race with this loop.
  for (int number = 0; number < 100; ++number) {
    schedule(0.1, ticker)->invalidate();
  }
  otherThread.join();
  EXPECT_FALSE(isValid);
}

TEST_F(NSTimerTest, AnObserverIsNotifiedAfterTheTargetReturns) {
  struct Observer final : TimerObserver {
    void timerFired(NSTimer& /*timer*/, const Strong<NSObject>& target) override {
      ticksWhenNotified = as<Ticker>(target)->ticks();
    }
    int ticksWhenNotified = 0;
  } observer;
  setTimerObserver(&observer);
  schedule(0.1, ticker);
  platform.run(1);
  EXPECT_EQ(observer.ticksWhenNotified, 1);
  setTimerObserver(nullptr);
}

TEST_F(NSTimerTest, TenThousandTimersFireInOrder) {
  std::vector<int> order;
  for (int number = 0; number < 10'000; ++number) {
    // The fire dates are in shuffled order. Each date occurs once, because 7919 and 10,000 have no
    // common factor.
    schedule((number * 7919 % 10'000 + 1) * 0.001,
             [&order, number] { order.push_back(number * 7919 % 10'000); });
  }
  platform.run(10);
  ASSERT_EQ(order.size(), 10'000u);
  EXPECT_TRUE(std::ranges::is_sorted(order));
}

}  // namespace
}  // namespace vel::test
