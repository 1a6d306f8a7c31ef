#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/Foundation/ReleasePool.h"
#include "Tests/Foundation/Ticker.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

constexpr NSRunLoopMode kModes[] = {NSDefaultRunLoopMode, NSModalPanelRunLoopMode,
                                    NSEventTrackingRunLoopMode};

/// Replaces the window system. Has at most one pending event.
class EventSource final : public RunLoopSource {
 public:
  bool deliver() override {
    if (onDeliver) {
      onDeliver();
    }
    const std::function<void()> event = std::exchange(event_, nullptr);
    if (event) {
      event();
    }
    return event != nullptr;
  }
  [[nodiscard]] Nanoseconds nextDeadline() const override { return deadline; }
  void setEvent(std::function<void()> event) { event_ = std::move(event); }

  Nanoseconds deadline = kNever;
  std::function<void()> onDeliver;

 private:
  std::function<void()> event_;
};

class TestObject final : public Class<TestObject, "TestObject"> {
 public:
  explicit TestObject(std::function<void()> onDestruction)
      : onDestruction_(std::move(onDestruction)) {}
  ~TestObject() override { onDestruction_(); }

 private:
  std::function<void()> onDestruction_;
};

class NSRunLoopTest : public VirtualPlatformTest {
 protected:
  NSRunLoopTest() { loop.setWindowSystemSource(&eventSource); }
  ~NSRunLoopTest() override { loop.setWindowSystemSource(nullptr); }

  std::function<void()> makeRecorder(const std::string& record) {
    return [this, record] { records.push_back(record); };
  }
  void dispatch(const std::string& record, double delay = 0) {
    dispatch_after(dispatch_time(kDispatchTimeNow, nanosecondsFromSeconds(delay)),
                   dispatch_get_main_queue(), makeRecorder(record));
  }

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  EventSource eventSource;
  std::vector<std::string> records;
};

TEST_F(NSRunLoopTest,
       APassFiresTimersThenDeliversEventsThenRunsQueuedWorkThenDrainsTheReleasePool) {
  releaseLater(make<TestObject>(makeRecorder("pool")));
  dispatch("main queue");
  eventSource.setEvent(makeRecorder("window system"));
  schedule(0, makeRecorder("timer"));
  letTimePass(0.1);
  loop.pump();
  EXPECT_EQ(records, (std::vector<std::string>{"timer", "window system", "main queue", "pool"}));
}

TEST_F(NSRunLoopTest, WorkSubmittedByATimerRunsInTheSamePass) {
  schedule(0.1, [this] { dispatch("main queue"); });
  letTimePass(0.1);
  loop.pump();
  EXPECT_EQ(records, std::vector<std::string>{"main queue"});
}

TEST_F(NSRunLoopTest, PumpReturnsTrueOnlyIfItDidWork) {
  EXPECT_FALSE(loop.pump());
  dispatch("work");
  EXPECT_TRUE(loop.pump());
  schedule(0.1, makeRecorder("timer"));
  EXPECT_FALSE(loop.pump());
  letTimePass(0.1);
  EXPECT_TRUE(loop.pump());
  eventSource.setEvent(makeRecorder("event"));
  EXPECT_TRUE(loop.pump());
  EXPECT_FALSE(loop.pump());
}

TEST_F(NSRunLoopTest, PumpDoesNotWait) {
  schedule(0.1, makeRecorder("timer"));
  EXPECT_FALSE(loop.pump());
  EXPECT_EQ(platform.now(), 0);
}

TEST_F(NSRunLoopTest, EveryModeServesTheMainQueueAndTheWindowSystem) {
  for (const NSRunLoopMode mode : kModes) {
    dispatch("work");
    eventSource.setEvent(makeRecorder("event"));
    loop.runPass(mode);
  }
  EXPECT_EQ(records, (std::vector<std::string>{"event", "work", "event", "work", "event", "work"}));
}

TEST_F(NSRunLoopTest, ATimerFiresOnlyInItsModes) {
  const auto ticker = make<Ticker>();
  const auto timer = schedule(0, ticker, Repeats::Yes);
  loop.addTimerForMode(timer, NSModalPanelRunLoopMode);
  for (const NSRunLoopMode mode : kModes) {
    letTimePass(0.1);
    loop.runPass(mode);
  }
  EXPECT_EQ(ticker->ticks(), 2);
  letTimePass(0.1);
  loop.runPass(NSEventTrackingRunLoopMode);
  EXPECT_EQ(ticker->ticks(), 2);
}

TEST_F(NSRunLoopTest, ATimerInSeveralModesFiresOncePerPass) {
  const auto ticker = make<Ticker>();
  const auto timer = schedule(0.1, ticker, Repeats::Yes);
  loop.addTimerForMode(timer, NSModalPanelRunLoopMode);
  loop.addTimerForMode(timer, NSDefaultRunLoopMode);
  EXPECT_EQ(loop.timerCount(), 1u);
  platform.run(0.1);
  EXPECT_EQ(ticker->ticks(), 1);
}

TEST_F(NSRunLoopTest, ADueTimerWaitsUntilTheLoopRunsInItsMode) {
  const auto ticker = make<Ticker>();
  schedule(0.1, ticker);
  loop.setMode(NSEventTrackingRunLoopMode);
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
  loop.setMode(NSDefaultRunLoopMode);
  platform.runDueWork();
  EXPECT_EQ(ticker->ticks(), 1);
}

TEST_F(NSRunLoopTest, AddingNullOrAnInvalidTimerDoesNothing) {
  const auto timer = schedule(0.1, make<Ticker>());
  timer->invalidate();
  loop.addTimerForMode(timer, NSModalPanelRunLoopMode);
  loop.addTimerForMode(nullptr, NSDefaultRunLoopMode);
  EXPECT_EQ(loop.timerCount(), 0u);
}

TEST_F(NSRunLoopTest, ATimerMayChangeTheModeOfTheNextPass) {
  schedule(0.1, [this] { loop.setMode(NSModalPanelRunLoopMode); });
  schedule(0.2, makeRecorder("default mode"));
  const auto timer = schedule(0.3, makeRecorder("both modes"));
  loop.addTimerForMode(timer, NSModalPanelRunLoopMode);
  platform.run(1);
  EXPECT_EQ(records, std::vector<std::string>{"both modes"});
  loop.setMode(NSDefaultRunLoopMode);
}

// `runModeBeforeDate` runs one pass, and then waits only if the pass did no work.
TEST_F(NSRunLoopTest, RunModeBeforeDateDoesNotWaitIfThePassDoesWork) {
  dispatch("work");
  loop.runModeBeforeDate(NSDefaultRunLoopMode, nanosecondsFromSeconds(5));
  EXPECT_EQ(platform.now(), 0);
}

TEST_F(NSRunLoopTest, RunModeBeforeDateWaitsForTheNextTimerOfTheMode) {
  const auto timer = schedule(0.5, makeRecorder("default mode"));
  loop.runModeBeforeDate(NSDefaultRunLoopMode, nanosecondsFromSeconds(5));
  EXPECT_EQ(platform.now(), 0.5);
  EXPECT_TRUE(records.empty());  // the timer fires in the next pass
}

TEST_F(NSRunLoopTest, RunModeBeforeDateDoesNotWaitForATimerOfAnotherMode) {
  schedule(0.5, makeRecorder("default mode"));
  loop.runModeBeforeDate(NSModalPanelRunLoopMode, nanosecondsFromSeconds(5));
  EXPECT_EQ(platform.now(), 5);
}

TEST_F(NSRunLoopTest, RunModeBeforeDateWaitsForTheNextWorkOfTheMainQueue) {
  dispatch("work", 0.4);
  schedule(0.5, makeRecorder("timer"));
  loop.runModeBeforeDate(NSDefaultRunLoopMode, nanosecondsFromSeconds(5));
  EXPECT_EQ(platform.now(), 0.4);
}

TEST_F(NSRunLoopTest, RunModeBeforeDateWaitsForTheNextDeadlineOfTheWindowSystem) {
  dispatch("work", 0.4);
  eventSource.deadline = nanosecondsFromSeconds(0.3);
  loop.runModeBeforeDate(NSDefaultRunLoopMode, nanosecondsFromSeconds(5));
  EXPECT_EQ(platform.now(), 0.3);
}

TEST_F(NSRunLoopTest, RunModeBeforeDateWaitsAtMostUntilTheDate) {
  schedule(0.5, makeRecorder("timer"));
  loop.runModeBeforeDate(NSDefaultRunLoopMode, nanosecondsFromSeconds(0.2));
  EXPECT_EQ(platform.now(), 0.2);
}

TEST_F(NSRunLoopTest, AWakeUpFromAnotherThreadDuringAPassEndsTheWaitAfterThePass) {
  eventSource.onDeliver = [this] { std::thread([this] { loop.wake(); }).join(); };
  loop.runModeBeforeDate(NSDefaultRunLoopMode, nanosecondsFromSeconds(5));
  EXPECT_EQ(platform.now(), 0);
}

TEST_F(NSRunLoopTest, AWakeUpFromAnotherThreadBeforeAPassDoesNotEndTheWaitAfterThePass) {
  loop.runModeBeforeDate(NSDefaultRunLoopMode, nanosecondsFromSeconds(1));
  // If this call of `wake` woke the clock, the second `runModeBeforeDate` would not wait.
  std::thread([this] { loop.wake(); }).join();
  loop.runModeBeforeDate(NSDefaultRunLoopMode, nanosecondsFromSeconds(5));
  EXPECT_EQ(platform.now(), 5);
}

TEST_F(NSRunLoopTest, AWakeUpEndsOneVirtualWait) {
  VirtualClock clock;
  clock.wake();
  EXPECT_TRUE(clock.waitUntil(kNever));
  EXPECT_FALSE(clock.waitUntil(kNever));  // no wake-up is left: the wait would never end
  EXPECT_EQ(clock.now(), 0);
}

TEST_F(NSRunLoopTest, VirtualTimeJumpsToTheNextDeadline) {
  std::vector<double> times;
  for (const double seconds : {3.5, 1'000'000.0, 0.25}) {
    schedule(seconds, [&] { times.push_back(platform.now()); });
  }
  platform.run(2'000'000);
  EXPECT_EQ(times, (std::vector<double>{0.25, 3.5, 1'000'000.0}));
}

TEST_F(NSRunLoopTest, AnEndlessWaitThrowsInVirtualTime) {
  EXPECT_THROW(loop.runUntil([] { return false; }), EndlessWaitError);
  EXPECT_THROW(loop.runModeBeforeDate(NSDefaultRunLoopMode, kNever), EndlessWaitError);
}

TEST_F(NSRunLoopTest, EndlessWaitErrorListsTheTimersOfAllModes) {
  schedule(0.5, make<Ticker>());
  try {
    loop.runModeBeforeDate(NSModalPanelRunLoopMode, kNever);
    FAIL() << "the wait did not throw";
  } catch (const EndlessWaitError& error) {
    const std::string text = error.what();
    EXPECT_NE(text.find("timers: 1"), std::string::npos) << text;
    EXPECT_NE(text.find("500000000 ns"), std::string::npos) << text;
    EXPECT_NE(text.find("Ticker"), std::string::npos) << text;
    EXPECT_NE(text.find("not in this mode"), std::string::npos) << text;
  }
}

TEST_F(NSRunLoopTest, EndlessWaitErrorMarksATimerThatIsFiring) {
  std::string text;
  schedule(
      0.5,
      [&] {
        // A timer does not fire again while it is firing, so the nested loop cannot wait for it.
        try {
          loop.runUntil([] { return false; });
        } catch (const EndlessWaitError& error) {
          text = error.what();
        }
      },
      Repeats::Yes);
  letTimePass(0.5);
  loop.pump();
  EXPECT_NE(text.find("firing now"), std::string::npos) << text;
}

TEST_F(NSRunLoopTest, RunUntilDateRunsWorkThatIsDueAtTheDateButNoLaterWork) {
  schedule(1.0, makeRecorder("at the date"));
  schedule(1.000000001, makeRecorder("after the date"));
  loop.runUntilDate(nanosecondsFromSeconds(1));
  EXPECT_EQ(records, std::vector<std::string>{"at the date"});
  EXPECT_EQ(platform.now(), 1);
}

TEST_F(NSRunLoopTest, RunUntilDateRunsWorkThatIsSubmittedAtTheDate) {
  schedule(1.0, [this] {
    dispatch_async(dispatch_get_main_queue(), [this] { dispatch("inner work"); });
  });
  loop.runUntilDate(nanosecondsFromSeconds(1));
  EXPECT_EQ(records, std::vector<std::string>{"inner work"});
}

TEST_F(NSRunLoopTest, RunUntilDateReturnsEvenIfATimerIsAlwaysLate) {
  const auto slowTicker = make<Ticker>([](NSTimer&) { letTimePass(0.25); });
  schedule(0.1, slowTicker, Repeats::Yes);
  loop.runUntilDate(nanosecondsFromSeconds(1));
  EXPECT_EQ(slowTicker->ticks(), 5);  // the fifth tick was due at 0.9 s and started at 1.1 s
}

TEST_F(NSRunLoopTest, RunUntilDateWithAPastDateRunsWorkThatIsDueNow) {
  letTimePass(1);
  dispatch("work");
  loop.runUntilDate(0);
  EXPECT_EQ(records, std::vector<std::string>{"work"});
}

TEST_F(NSRunLoopTest, RunUntilReturnsWhenTheConditionIsTrue) {
  bool isDone = false;
  schedule(1.0, [&isDone] { isDone = true; });
  schedule(2.0, makeRecorder("too late"));
  loop.runUntil([&isDone] { return isDone; });
  EXPECT_EQ(platform.now(), 1);
  EXPECT_TRUE(records.empty());
}

TEST_F(NSRunLoopTest, NextDeadlineDependsOnTheLoopsMode) {
  EXPECT_EQ(loop.nextDeadline(), kNever);
  schedule(0.5, makeRecorder("timer"));
  dispatch("work", 0.7);
  EXPECT_EQ(loop.nextDeadline(), nanosecondsFromSeconds(0.5));
  loop.setMode(NSModalPanelRunLoopMode);
  EXPECT_EQ(loop.nextDeadline(), nanosecondsFromSeconds(0.7));
  loop.setMode(NSDefaultRunLoopMode);
}

TEST_F(NSRunLoopTest, TheLoopIsUsableAfterATimerThrows) {
  bool mustThrow = true;
  const auto timer = schedule(
      0.1,
      [&] {
        if (std::exchange(mustThrow, false)) {
          throw std::runtime_error("stop");
        }
        records.emplace_back("tick");
      },
      Repeats::Yes);
  EXPECT_THROW(platform.run(0.1), std::runtime_error);
  platform.run(0.1);
  EXPECT_EQ(records, std::vector<std::string>{"tick"});
}

TEST_F(NSRunLoopTest, OnlyTheMainThreadHasACurrentRunLoop) {
  EXPECT_EQ(NSRunLoop::currentRunLoop(), &loop);
  NSRunLoop* loopOnAnotherThread = &loop;
  std::thread([&] { loopOnAnotherThread = NSRunLoop::currentRunLoop(); }).join();
  EXPECT_EQ(loopOnAnotherThread, nullptr);
}

TEST_F(NSRunLoopTest, ANewClockInvalidatesAllTimers) {
  const auto timer = schedule(0.1, make<Ticker>());
  loop.setClock(std::make_unique<VirtualClock>());
  EXPECT_FALSE(timer->isValid());
  EXPECT_EQ(loop.timerCount(), 0u);
}

TEST_F(NSRunLoopTest, TheLoopHasNoWaitHandleInVirtualTime) {
  EXPECT_FALSE(loop.waitHandle().isValid());
}

TEST_F(NSRunLoopTest, RunningWorkDoesNotAdvanceVirtualTime) {
  for (int number = 0; number < 100; ++number) {
    dispatch("work");
    loop.pump();
  }
  EXPECT_EQ(platform.now(), 0);
}

}  // namespace
}  // namespace vel::test
