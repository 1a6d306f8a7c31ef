// The main queue. The clock is virtual: `platform.run` and `letTimePass` advance it.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

class DispatchTest : public VirtualPlatformTest {
 protected:
  using Names = std::vector<std::string>;

  static dispatch_time_t timeAfter(double seconds) {
    return dispatch_time(kDispatchTimeNow, nanosecondsFromSeconds(seconds));
  }
  void submit(const std::string& name, const std::function<void()>& work = nullptr) {
    dispatch_async(queue, makeRecordingWork(name, work));
  }
  void submitAt(dispatch_time_t time, const std::string& name,
                const std::function<void()>& work = nullptr) {
    dispatch_after(time, queue, makeRecordingWork(name, work));
  }
  // Advances the clock without running the run loop.
  void letTimePass(double seconds) {
    loop.clock().waitUntil(loop.now() + nanosecondsFromSeconds(seconds));
  }

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  DispatchQueue& queue = dispatch_get_main_queue();
  Names recordedNames;

 private:
  DispatchQueue::Work makeRecordingWork(const std::string& name,
                                        const std::function<void()>& work) {
    return [this, name, work] {
      recordedNames.push_back(name);
      if (work) {
        work();
      }
    };
  }
};

TEST_F(DispatchTest, WorkRunsInTheNextPassAndNotBefore) {
  submit("work");
  EXPECT_TRUE(recordedNames.empty());
  EXPECT_TRUE(loop.pump());
  EXPECT_EQ(recordedNames, Names{"work"});
  EXPECT_FALSE(loop.pump());
  EXPECT_EQ(recordedNames, Names{"work"});
}

TEST_F(DispatchTest, WorkRunsInTheOrderOfSubmission) {
  for (const char* name : {"first", "second", "third"}) {
    submit(name);
  }
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"first", "second", "third"}));
}

TEST_F(DispatchTest, DelayedWorkRunsAtItsTimeAndNotBefore) {
  submitAt(timeAfter(0.5), "work");
  platform.run(0.499999999);
  EXPECT_TRUE(recordedNames.empty());
  platform.run(0.000000001);
  EXPECT_EQ(recordedNames, Names{"work"});
}

TEST_F(DispatchTest, DueWorkRunsInTheOrderOfItsDeadlines) {
  submitAt(timeAfter(0.3), "third");
  submitAt(timeAfter(0.1), "first");
  submitAt(timeAfter(0.2), "second");
  letTimePass(1);
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"first", "second", "third"}));
}

TEST_F(DispatchTest, WorkWithEqualDeadlinesRunsInTheOrderOfSubmission) {
  submitAt(timeAfter(0.2), "first");
  letTimePass(0.1);
  submitAt(timeAfter(0.1), "second");
  letTimePass(0.1);
  submit("third");
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"first", "second", "third"}));
}

TEST_F(DispatchTest, ManyPiecesOfWorkWithEqualDeadlinesRunInTheOrderOfSubmission) {
  std::vector<int> order;
  for (int number = 0; number < 10'000; ++number) {
    dispatch_after(timeAfter(number % 10), queue, [&order, number] { order.push_back(number); });
  }
  platform.run(10);
  ASSERT_EQ(order.size(), 10'000u);
  EXPECT_TRUE(
      std::ranges::is_sorted(order, {}, [](int number) { return std::pair(number % 10, number); }));
}

TEST_F(DispatchTest, DispatchAfterWithoutADelayKeepsTheOrderOfSubmission) {
  letTimePass(1);
  submit("first");
  submitAt(kDispatchTimeNow, "second");
  submitAt(timeAfter(0), "third");
  submit("fourth");
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"first", "second", "third", "fourth"}));
}

TEST_F(DispatchTest, ImmediateAndDelayedWorkRunsInTheOrderOfDeadlines) {
  submitAt(timeAfter(0.5), "half a second");
  letTimePass(1);
  submit("one second");
  submitAt(timeAfter(-0.75), "a quarter");
  submitAt(timeAfter(0), "one second again");
  const std::vector<DispatchQueue::PendingWork> pendingWork = queue.pendingWork();
  ASSERT_EQ(pendingWork.size(), 4u);
  EXPECT_EQ(pendingWork[0].deadline, kNanosecondsPerSecond / 4);
  EXPECT_EQ(pendingWork[1].deadline, kNanosecondsPerSecond / 2);
  EXPECT_EQ(pendingWork[3].deadline, kNanosecondsPerSecond);
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"a quarter", "half a second", "one second", "one second again"}));
}

TEST_F(DispatchTest, WorkThatIsDueDoesNotWaitForLaterWork) {
  submitAt(timeAfter(1), "later");
  submit("now");
  loop.pump();
  EXPECT_EQ(recordedNames, Names{"now"});
  EXPECT_EQ(queue.nextDeadline(), kNanosecondsPerSecond);
}

TEST_F(DispatchTest, WorkWithAPastDeadlineIsDueNow) {
  letTimePass(2);
  submitAt(timeAfter(-1), "work");
  loop.pump();
  EXPECT_EQ(recordedNames, Names{"work"});
}

TEST_F(DispatchTest, WorkSubmittedDuringAPassRunsInTheNextPass) {
  submit("outer", [this] { submit("inner"); });
  submit("other");
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"outer", "other"}));
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"outer", "other", "inner"}));
}

TEST_F(DispatchTest, OverdueWorkSubmittedDuringAPassRunsInTheNextPass) {
  letTimePass(2);
  submit("outer", [this] { submitAt(timeAfter(-1), "inner"); });
  submit("other");
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"outer", "other"}));
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"outer", "other", "inner"}));
}

TEST_F(DispatchTest, WorkThatBecomesDueDuringAPassRunsInTheNextPass) {
  submit("slow", [this] { letTimePass(1); });
  submitAt(timeAfter(0.5), "later");
  loop.pump();
  EXPECT_EQ(recordedNames, Names{"slow"});
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"slow", "later"}));
}

TEST_F(DispatchTest, ANestedPassRunsTheRemainingDueWorkAndThenNewWork) {
  submit("outer", [this] {
    submit("submitted inside");
    loop.pump();
    recordedNames.emplace_back("outer ends");
  });
  submit("rest");
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"outer", "rest", "submitted inside", "outer ends"}));
}

TEST_F(DispatchTest, WorkSubmittedAfterANestedPassRunsInTheNextPass) {
  submit("outer", [this] {
    loop.pump();
    submit("new");
  });
  submit("rest");
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"outer", "rest"}));
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"outer", "rest", "new"}));
}

TEST_F(DispatchTest, PassesMayBeNestedDeeply) {
  std::function<void(int)> nest = [&](int depth) {
    if (depth > 0) {
      submit("level", [&, depth] { nest(depth - 1); });
      loop.pump();
    }
  };
  nest(50);
  EXPECT_EQ(recordedNames.size(), 50u);
  EXPECT_EQ(queue.pendingWorkCount(), 0u);
}

TEST_F(DispatchTest, TheNextDeadlineIsTheEarliestDeadlineOfPendingWork) {
  EXPECT_EQ(queue.nextDeadline(), kNever);
  submitAt(timeAfter(0.5), "later");
  submitAt(timeAfter(0.2), "sooner");
  EXPECT_EQ(queue.nextDeadline(), nanosecondsFromSeconds(0.2));
  platform.run(0.3);
  EXPECT_EQ(queue.nextDeadline(), nanosecondsFromSeconds(0.5));
}

TEST_F(DispatchTest, TheNextDeadlineDuringAPassIsThatOfTheRemainingWork) {
  submit("outer", [this] { EXPECT_LE(loop.nextDeadline(), loop.now()); });
  submit("rest");
  loop.pump();
  EXPECT_EQ(loop.nextDeadline(), kNever);
}

TEST_F(DispatchTest, CountsPendingWork) {
  submit("now");
  submitAt(timeAfter(1), "later");
  EXPECT_EQ(queue.pendingWorkCount(), 2u);
  loop.pump();
  EXPECT_EQ(queue.pendingWorkCount(), 1u);
}

TEST_F(DispatchTest, ListsPendingWorkInTheOrderInWhichItWillRun) {
  submitAt(timeAfter(2), "last");
  submitAt(timeAfter(1), "later");
  submit("now");
  std::vector<dispatch_time_t> deadlines;
  for (const DispatchQueue::PendingWork& work : queue.pendingWork()) {
    deadlines.push_back(work.deadline);
  }
  EXPECT_EQ(deadlines,
            (std::vector<dispatch_time_t>{0, kNanosecondsPerSecond, 2 * kNanosecondsPerSecond}));
}

TEST_F(DispatchTest, PendingWorkHasItsLabel) {
  dispatch_async(queue, "first", [] {});
  dispatch_after(timeAfter(1), queue, "second", [] {});
  submitAt(timeAfter(2), "without a label");
  std::vector<std::string_view> labels;
  for (const DispatchQueue::PendingWork& work : queue.pendingWork()) {
    labels.push_back(work.label);
  }
  EXPECT_EQ(labels, (std::vector<std::string_view>{"first", "second", ""}));
}

TEST_F(DispatchTest, TheErrorOfAnEndlessWaitListsPendingWork) {
  dispatch_after(kNever, queue, "never due", [] {});
  dispatch_after(kNever, queue, [] {});
  try {
    loop.runUntil([] { return false; });
    FAIL() << "the wait did not throw";
  } catch (const EndlessWaitError& error) {
    const std::string text = error.what();
    EXPECT_NE(text.find("work: never due"), std::string::npos) << text;
    EXPECT_NE(text.find("work: no label"), std::string::npos) << text;
  }
}

TEST_F(DispatchTest, RemovedWorkDoesNotRun) {
  submit("now");
  submitAt(timeAfter(1), "later");
  queue.removeAll();
  platform.run(2);
  EXPECT_TRUE(recordedNames.empty());
}

TEST_F(DispatchTest, WorkMayRemoveTheRemainingWork) {
  submit("remover", [this] { queue.removeAll(); });
  submit("rest");
  platform.run(1);
  EXPECT_EQ(recordedNames, Names{"remover"});
}

TEST_F(DispatchTest, CapturedObjectsAreDestroyedWithTheWork) {
  const auto object = std::make_shared<int>(5);
  dispatch_async(queue, [object] {});
  EXPECT_EQ(object.use_count(), 2);
  loop.pump();
  EXPECT_EQ(object.use_count(), 1);
}

TEST_F(DispatchTest, CapturedObjectsAreDestroyedBeforeTheNextPieceOfWorkRuns) {
  const auto object = std::make_shared<int>(5);
  long useCount = 0;
  dispatch_async(queue, [object] {});
  submit("next", [&] { useCount = object.use_count(); });
  loop.pump();
  EXPECT_EQ(useCount, 1);
}

TEST_F(DispatchTest, ADeleterMaySubmitWorkDuringRemoveAll) {
  const auto submittingDeleter = [this](const int* value) {
    submit("late work");
    delete value;
  };
  dispatch_async(queue, [holder = std::shared_ptr<int>(new int(5), submittingDeleter)] {});
  queue.removeAll();
  EXPECT_EQ(queue.pendingWorkCount(), 1u);
  queue.removeAll();
}

TEST_F(DispatchTest, WorkThatThrowsLeavesTheRestForTheNextPass) {
  submit("throws", [] { throw std::runtime_error("stop"); });
  submit("rest");
  EXPECT_THROW(loop.pump(), std::runtime_error);
  EXPECT_EQ(recordedNames, Names{"throws"});
  loop.pump();
  EXPECT_EQ(recordedNames, (Names{"throws", "rest"}));
}

TEST_F(DispatchTest, DispatchTimeAddsADelayToNowOrToAGivenTime) {
  letTimePass(1);
  EXPECT_EQ(dispatch_time(kDispatchTimeNow, 0), kNanosecondsPerSecond);
  EXPECT_EQ(dispatch_time(kDispatchTimeNow, kNanosecondsPerSecond / 2),
            kNanosecondsPerSecond * 3 / 2);
  EXPECT_EQ(dispatch_time(5 * kNanosecondsPerSecond, kNanosecondsPerSecond),
            6 * kNanosecondsPerSecond);
}

TEST_F(DispatchTest, ATimeThatOverflowsBecomesKNever) {
  letTimePass(1);
  EXPECT_EQ(dispatch_time(kDispatchTimeNow, kNever), kNever);
  EXPECT_EQ(dispatch_time(kNever, 1), kNever);
  EXPECT_EQ(dispatch_time(kNever, 0), kNever);
}

TEST_F(DispatchTest, ATimeThatUnderflowsIsTheEarliestTime) {
  EXPECT_EQ(dispatch_time(-kNever, -1), -kNever);
  EXPECT_EQ(dispatch_time(-kNanosecondsPerSecond, std::numeric_limits<std::int64_t>::min()),
            -kNever);
  EXPECT_EQ(dispatch_time(-kNanosecondsPerSecond, 0), -kNanosecondsPerSecond);
}

}  // namespace
}  // namespace vel::test
