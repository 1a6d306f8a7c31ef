// Tests work that other threads submit to the main queue.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSThread.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

class DispatchThreadsTest : public VirtualPlatformTest {
 protected:
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  DispatchQueue& queue = dispatch_get_main_queue();
};

TEST_F(DispatchThreadsTest, WorkFromAnotherThreadRunsOnTheMainThread) {
  bool hasRunOnMainThread = false;
  std::thread([&] {
    dispatch_async(queue, [&hasRunOnMainThread] { hasRunOnMainThread = NSThread::isMainThread(); });
  }).join();
  EXPECT_FALSE(hasRunOnMainThread);
  loop.pump();
  EXPECT_TRUE(hasRunOnMainThread);
}

TEST_F(DispatchThreadsTest, ADelayStartsWhenAnotherThreadSubmitsTheWork) {
  platform.run(1);
  std::vector<double> times;
  std::thread([&] {
    dispatch_after(dispatch_time(kDispatchTimeNow, kNanosecondsPerSecond / 2), queue,
                   [&] { times.push_back(platform.now()); });
  }).join();
  platform.run(1);
  EXPECT_EQ(times, std::vector<double>{1.5});
}

TEST_F(DispatchThreadsTest, WorkFromEachThreadRunsInTheOrderOfSubmission) {
  constexpr int kThreadCount = 4;
  constexpr int kItemsPerThread = 500;
  std::array<std::vector<int>, kThreadCount> recordedNumbers;
  std::array<std::thread, kThreadCount> threads;
  for (std::size_t index = 0; index < kThreadCount; ++index) {
    threads[index] = std::thread([&, index] {
      for (int number = 0; number < kItemsPerThread; ++number) {
        dispatch_async(
            queue, [&recordedNumbers, index, number] { recordedNumbers[index].push_back(number); });
      }
    });
  }
  for (int pass = 0; pass < 100; ++pass) {
    loop.pump();
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  platform.runDueWork();
  for (const std::vector<int>& numbers : recordedNumbers) {
    EXPECT_EQ(numbers.size(), std::size_t{kItemsPerThread});
    EXPECT_TRUE(std::ranges::is_sorted(numbers));
  }
}

TEST_F(DispatchThreadsTest, ANestedLoopRunsWorkFromAnotherThread) {
  bool hasRun = false;
  dispatch_async(queue, [&] {
    std::thread otherThread([&] { dispatch_async(queue, [&hasRun] { hasRun = true; }); });
    // `pump` does not wait. Waiting for another thread is an error with a virtual clock.
    while (!hasRun) {
      loop.pump();
    }
    otherThread.join();
  });
  loop.pump();
  EXPECT_TRUE(hasRun);
}

TEST_F(DispatchThreadsTest, AnotherThreadNeverSeesTheClockGoBack) {
  constexpr int kRequiredTimeChanges = 20;
  bool hasGoneBack = false;
  std::atomic<int> observedTimeChanges = 0;
  std::thread otherThread([&] {
    dispatch_time_t previousTime = dispatch_time(kDispatchTimeNow, 0);
    while (observedTimeChanges < kRequiredTimeChanges) {
      const dispatch_time_t currentTime = dispatch_time(kDispatchTimeNow, 0);
      hasGoneBack = hasGoneBack || currentTime < previousTime;
      observedTimeChanges += currentTime != previousTime ? 1 : 0;
      previousTime = currentTime;
    }
  });
  while (observedTimeChanges < kRequiredTimeChanges) {
    platform.run(0.1);
  }
  otherThread.join();
  EXPECT_FALSE(hasGoneBack);
}

}  // namespace
}  // namespace vel::test
