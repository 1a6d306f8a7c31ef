// Tests the real clock and the run loop's descriptor. A host polls the descriptor to know when a
// pass is due. The tests wait in real time.
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/RealClock.h"
#include "Tests/Foundation/Ticker.h"

namespace vel::test {
namespace {

constexpr Nanoseconds kMillisecond = 1'000'000;
// The maximum wait for an event that must happen.
constexpr int kTimeoutInMilliseconds = 10'000;

class Pipe : NonCopyable {
 public:
  Pipe() { EXPECT_EQ(pipe(ends_.data()), 0); }
  ~Pipe() {
    close(ends_[0]);
    close(ends_[1]);
  }
  [[nodiscard]] WaitHandle readEnd() const { return WaitHandle(ends_[0]); }
  void writeByte() const { EXPECT_EQ(write(ends_[1], "x", 1), 1); }

 private:
  std::array<int, 2> ends_{};
};

class RealClockTest : public testing::Test {
 protected:
  RealClockTest() { loop.useRealTime(); }
  ~RealClockTest() override {
    loop.invalidateTimers();
    dispatch_get_main_queue().removeAll();
    loop.useRealTime();  // discards the watched handle and the wake-ups
  }

  // Returns true if the run loop's descriptor becomes readable within `milliseconds`.
  bool isReadable(int milliseconds = 0) {
    pollfd pollEntry{.fd = loop.waitHandle().descriptor(), .events = POLLIN, .revents = 0};
    return poll(&pollEntry, 1, milliseconds) == 1;
  }
  // Runs passes until the descriptor is no longer readable, as a host does before it waits.
  void pumpUntilIdle() {
    while (isReadable()) {
      loop.pump();
    }
  }
  static void runOnAnotherThread(const std::function<void()>& work) { std::thread(work).join(); }

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
};

TEST_F(RealClockTest, NeverGoesBack) {
  Nanoseconds previousTime = loop.now();
  for (int reading = 0; reading < 1000; ++reading) {
    const Nanoseconds currentTime = loop.now();
    EXPECT_GE(currentTime, previousTime);
    previousTime = currentTime;
  }
}

TEST_F(RealClockTest, DoesNotWaitForAPastDeadline) {
  loop.clock().waitUntil(loop.now() - kMillisecond);
  loop.clock().waitUntil(0);
}

TEST_F(RealClockTest, AWaitNeverEndsEarly) {
  for (const Nanoseconds duration : {1, 1'000, 300'000, 1'000'000, 2'500'000}) {
    const Nanoseconds deadline = loop.now() + duration;
    loop.clock().waitUntil(deadline);
    EXPECT_GE(loop.now(), deadline);
  }
}

TEST_F(RealClockTest, ATimerNeverFiresEarly) {
  Nanoseconds fireTime = 0;
  const auto timer = schedule(0.003, [&] { fireTime = loop.now(); });
  const Nanoseconds fireDate = timer->fireDate();
  loop.runUntil([&] { return fireTime != 0; });
  EXPECT_GE(fireTime, fireDate);
}

TEST_F(RealClockTest, DelayedWorkNeverRunsEarly) {
  Nanoseconds runTime = 0;
  const dispatch_time_t dueTime = dispatch_time(kDispatchTimeNow, 3 * kMillisecond);
  dispatch_after(dueTime, dispatch_get_main_queue(), [&] { runTime = loop.now(); });
  loop.runUntil([&] { return runTime != 0; });
  EXPECT_GE(runTime, dueTime);
}

TEST_F(RealClockTest, ARepeatingTimerKeepsItsPhase) {
  const auto ticker = make<Ticker>();
  const auto timer = schedule(0.001, ticker, Repeats::Yes);
  const Nanoseconds firstFireDate = timer->fireDate();
  loop.runUntil([&] { return ticker->ticks() == 5; });
  EXPECT_EQ((timer->fireDate() - firstFireDate) % kMillisecond, 0);
}

TEST_F(RealClockTest, AWakeUpFromAnotherThreadEndsAWait) {
  std::thread otherThread([this] { loop.clock().wake(); });
  loop.clock().waitUntil(kNever);
  otherThread.join();
}

TEST_F(RealClockTest, AWakeUpBeforeAWaitEndsTheWait) {
  runOnAnotherThread([this] { loop.clock().wake(); });
  loop.clock().waitUntil(kNever);
}

TEST_F(RealClockTest, AnAcknowledgedWakeUpDoesNotEndAWait) {
  const std::unique_ptr<WaitSet> waitSet = makeWaitSet();
  RealClock clock(*waitSet);
  clock.wake();
  clock.wake();
  waitSet->acknowledgeWakeUps();
  const Nanoseconds deadline = clock.now() + kMillisecond;
  clock.waitUntil(deadline);
  EXPECT_GE(clock.now(), deadline);
}

TEST_F(RealClockTest, TheLoopWaitsUntilAnotherThreadWakesIt) {
  bool isFirstCheck = true;
  std::atomic<bool> hasLoopReturned = false;
  // The pass before the wait acknowledges all earlier wake-ups. So `otherThread` wakes the loop
  // repeatedly.
  std::thread otherThread([this, &hasLoopReturned] {
    while (!hasLoopReturned) {
      loop.wake();
      std::this_thread::yield();
    }
  });
  // The condition is true at the second check, so the loop waits only once.
  loop.runUntil([&isFirstCheck] { return !std::exchange(isFirstCheck, false); });
  hasLoopReturned = true;
  otherThread.join();
}

TEST_F(RealClockTest, WorkFromAnotherThreadEndsAWait) {
  // Work may arrive before a wait, at its start or during it. Many rounds make each likely.
  std::atomic<int> completedRounds = 0;
  int runCount = 0;  // used by the main thread only
  constexpr int kRounds = 500;
  std::thread otherThread([&] {
    for (int round = 0; round < kRounds; ++round) {
      dispatch_async(dispatch_get_main_queue(), [&] {
        ++runCount;
        completedRounds = runCount;
        completedRounds.notify_one();
      });
      completedRounds.wait(round);
    }
  });
  loop.runUntil([&] { return runCount == kRounds; });
  otherThread.join();
  EXPECT_EQ(runCount, kRounds);
}

TEST_F(RealClockTest, InputOnTheWatchedHandleEndsAWait) {
  const Pipe pipe;
  loop.watch(pipe.readEnd());
  pipe.writeByte();
  loop.clock().waitUntil(kNever);
  loop.watch(WaitHandle());
}

TEST_F(RealClockTest, InputOnAReplacedHandleIsIgnored) {
  const Pipe replacedPipe;
  const Pipe watchedPipe;
  loop.watch(replacedPipe.readEnd());
  loop.watch(watchedPipe.readEnd());
  replacedPipe.writeByte();
  pumpUntilIdle();
  EXPECT_FALSE(isReadable());
  watchedPipe.writeByte();
  EXPECT_TRUE(isReadable(kTimeoutInMilliseconds));
  loop.watch(WaitHandle());
  loop.pump();
  EXPECT_FALSE(isReadable());
}

TEST_F(RealClockTest, TheWatchedHandleMayBeClosedBeforeItIsReplaced) {
  {
    const Pipe pipe;
    loop.watch(pipe.readEnd());
  }
  EXPECT_NO_THROW(loop.watch(WaitHandle()));
}

TEST_F(RealClockTest, TheLoopsDescriptorIsNotReadableWhileThereIsNothingToDo) {
  schedule(3600, make<Ticker>());
  pumpUntilIdle();
  EXPECT_FALSE(isReadable());
}

TEST_F(RealClockTest, TheLoopsDescriptorBecomesReadableForWorkFromAnotherThread) {
  pumpUntilIdle();
  bool hasRun = false;
  runOnAnotherThread(
      [&hasRun] { dispatch_async(dispatch_get_main_queue(), [&hasRun] { hasRun = true; }); });
  EXPECT_TRUE(isReadable(kTimeoutInMilliseconds));
  loop.pump();
  EXPECT_TRUE(hasRun);
  EXPECT_FALSE(isReadable());
}

TEST_F(RealClockTest, TheLoopsDescriptorBecomesReadableForWorkFromTheMainThreadBetweenPasses) {
  pumpUntilIdle();
  dispatch_async(dispatch_get_main_queue(), [] {});
  EXPECT_TRUE(isReadable(kTimeoutInMilliseconds));
}

TEST_F(RealClockTest, TheLoopsDescriptorBecomesReadableAtTheNextDeadlineAndNotBefore) {
  const auto ticker = make<Ticker>();
  const auto timer = schedule(0.003, ticker);
  const Nanoseconds fireDate = timer->fireDate();
  pumpUntilIdle();
  while (ticker->ticks() == 0) {
    ASSERT_TRUE(isReadable(kTimeoutInMilliseconds));
    EXPECT_GE(loop.now(), fireDate);
    loop.pump();
  }
  EXPECT_FALSE(isReadable());
}

TEST_F(RealClockTest, TheLoopsDescriptorBecomesReadableAtANewEarlierDeadline) {
  schedule(3600, make<Ticker>());
  pumpUntilIdle();
  const auto ticker = make<Ticker>();
  schedule(0.002, ticker);
  while (ticker->ticks() == 0) {
    ASSERT_TRUE(isReadable(kTimeoutInMilliseconds));
    loop.pump();
  }
}

TEST_F(RealClockTest, TheLoopsDescriptorStaysReadableUntilTheNextPass) {
  pumpUntilIdle();
  runOnAnotherThread([this] { loop.wake(); });
  EXPECT_TRUE(isReadable(kTimeoutInMilliseconds));
  EXPECT_TRUE(isReadable());
  loop.pump();
  EXPECT_FALSE(isReadable());
}

TEST_F(RealClockTest, AWakeUpThatRacesWithAPassDoesNotLeaveTheLoopsDescriptorReadable) {
  constexpr int kRounds = 400;
  pumpUntilIdle();
  std::atomic<int> startedRound = 0;
  std::atomic<int> endedRound = 0;
  std::thread otherThread([&] {
    for (int round = 1; round <= kRounds; ++round) {
      startedRound.wait(round - 1);
      loop.wake();
      endedRound = round;
    }
  });
  int readableCount = 0;
  for (int round = 1; round <= kRounds; ++round) {
    startedRound = round;
    startedRound.notify_one();
    while (endedRound != round) {
      loop.pump();
    }
    // The other thread's call of `wake` has returned. The first pass acknowledges the wake-up. The
    // second pass has no work and must not make the descriptor readable.
    loop.pump();
    loop.pump();
    readableCount += isReadable() ? 1 : 0;
  }
  otherThread.join();
  EXPECT_EQ(readableCount, 0);
}

TEST_F(RealClockTest, NoWorkIsLostWhenSubmissionsRaceWithWaits) {
  constexpr int kThreads = 4;
  constexpr int kItemsPerThread = 500;
  int runCount = 0;  // used by the main thread only
  std::array<std::thread, kThreads> otherThreads;
  for (std::thread& otherThread : otherThreads) {
    otherThread = std::thread([&runCount] {
      for (int number = 0; number < kItemsPerThread; ++number) {
        dispatch_async(dispatch_get_main_queue(), [&runCount] { ++runCount; });
      }
    });
  }
  loop.runUntil([&runCount] { return runCount == kThreads * kItemsPerThread; });
  for (std::thread& otherThread : otherThreads) {
    otherThread.join();
  }
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

}  // namespace
}  // namespace vel::test
