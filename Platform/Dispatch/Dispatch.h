// The main queue: work that any thread submits and the main thread runs, now or later.
#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSRunLoop.h"

namespace vel {

/// A moment on the run loop's clock, in nanoseconds.
using dispatch_time_t = Nanoseconds;

/// Means the current time. Not named DISPATCH_TIME_NOW, which is a macro on macOS.
inline constexpr dispatch_time_t kDispatchTimeNow = 0;

/// A queue of work for the main thread. Each pass of the run loop calls `deliver` once, in every
/// mode. `deliver` runs the work that is due when the call begins: earlier deadlines first, and
/// equal deadlines in the order of submission. Work that is submitted during the call waits for the
/// next pass. One queue exists, and it is never destroyed.
class VEL_EXPORT DispatchQueue final : public RunLoopSource {
 public:
  using Work = std::function<void()>;

  DispatchQueue();

  /// Adds work that is due at `deadline`; `kDispatchTimeNow` means now. Wakes a waiting run loop.
  /// The label says what the work does; `pendingWork` returns the label. The label must be a
  /// literal, or another string that lives as long as the process. Any thread may call this
  /// function.
  void submit(dispatch_time_t deadline, Work work, std::string_view label = {});

  bool deliver() override;
  [[nodiscard]] Nanoseconds nextDeadline() const override {
    return nextDueTask_ < dueTasks_.size() ? 0 : nextDeadline_.load();
  }
  [[nodiscard]] std::string describePending() const override;

  /// The number of pieces of work that have not run yet.
  [[nodiscard]] std::size_t pendingWorkCount() const;
  /// A piece of work that has not run yet.
  struct PendingWork {
    dispatch_time_t deadline;
    std::string_view label;  // empty if the work has no label
  };
  /// The work that has not run yet, in the order in which it will run. Only the main thread may
  /// call this function.
  [[nodiscard]] std::vector<PendingWork> pendingWork() const;
  /// Removes all work that has not run yet. Only the main thread may call this function.
  void removeAll();

 private:
  /// Decides the order of tasks: by deadline, then by submission.
  struct SortKey {
    Nanoseconds deadline;
    std::uint64_t submissionNumber;
    auto operator<=>(const SortKey&) const = default;
  };
  struct Task {
    SortKey sortKey;
    std::string_view label;
    Work work;
    bool operator<(const Task& other) const { return sortKey < other.sortKey; }
  };

  void updateNextDeadline();
  void takeDueTasks();

  mutable std::mutex mutex_;
  std::vector<Task> immediateTasks_;  // submitted with kDispatchTimeNow, in order
  std::set<Task> delayedTasks_;       // submitted with a deadline
  std::uint64_t submissionCount_ = 0;
  // The earliest deadline in `immediateTasks_` and `delayedTasks_`.
  std::atomic<Nanoseconds> nextDeadline_ = kNever;
  // Only the main thread uses these two members: the tasks that were due when `deliver` was called,
  // in order, and the index of the first task that has not run. If a task runs a nested loop, for
  // example for a modal dialog, the nested loop runs the remaining tasks.
  std::vector<Task> dueTasks_;
  std::size_t nextDueTask_ = 0;
};

/// The main queue. The main run loop runs the work in this queue.
VEL_EXPORT DispatchQueue& dispatch_get_main_queue();

/// The moment `delta` nanoseconds after `when`; `kDispatchTimeNow` means now. Any thread may
/// call this function.
[[nodiscard]] VEL_EXPORT dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta);

/// Runs `work` on the main thread, in the next pass of the run loop. Any thread may call this
/// function. `DispatchQueue::submit` describes the label.
VEL_EXPORT void dispatch_async(DispatchQueue& queue, DispatchQueue::Work work);
VEL_EXPORT void dispatch_async(DispatchQueue& queue, std::string_view label,
                               DispatchQueue::Work work);

/// Runs `work` on the main thread at `when`. The work cannot be cancelled. Any thread may call this
/// function. `DispatchQueue::submit` describes the label.
VEL_EXPORT void dispatch_after(dispatch_time_t when, DispatchQueue& queue,
                               DispatchQueue::Work work);
VEL_EXPORT void dispatch_after(dispatch_time_t when, DispatchQueue& queue, std::string_view label,
                               DispatchQueue::Work work);

}  // namespace vel
