// The main queue: work for the main thread, now or later, submitted from any thread.
#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <typeinfo>
#include <vector>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSRunLoop.h"

namespace vel {

/// A moment on the run loop's clock, in nanoseconds.
using dispatch_time_t = Nanoseconds;

inline constexpr std::int64_t NSEC_PER_SEC = kNanosecondsPerSecond;
inline constexpr dispatch_time_t DISPATCH_TIME_NOW = 0;

/// Work that waits for the main thread. The run loop serves it in each pass, in every mode: what
/// has come due when its turn begins, earliest deadline first, equals in the order of submission;
/// what that work submits waits for the next pass.
class VEL_EXPORT DispatchQueue final : public RunLoopSource {
 public:
  using Work = std::function<void()>;

  DispatchQueue();

  /// Adds work that is due at `deadline`; DISPATCH_TIME_NOW stands for now. Any thread; a waiting
  /// run loop is woken.
  void submit(dispatch_time_t deadline, Work work);

  bool deliver() override;
  [[nodiscard]] Nanoseconds nextDeadline() const override {
    return next_ < due_.size() ? 0 : nextDeadline_.load();
  }

  /// Work that waits, due or not.
  [[nodiscard]] std::size_t pendingCount() const;
  /// A piece of work that waits: when it is due, and the type of what will be called.
  struct Pending {
    dispatch_time_t deadline;
    const std::type_info* kind;
  };
  /// The work that waits, in the order in which it will run; for looking at what goes on.
  [[nodiscard]] std::vector<Pending> pending() const;
  /// Drops all work that waits. Main thread.
  void removeAll();

 private:
  /// A task's place in the order.
  struct Place {
    Nanoseconds deadline;
    std::uint64_t submission;
    auto operator<=>(const Place&) const = default;
  };
  struct Task {
    Place place;
    Work work;
  };

  void noteNextDeadline();
  void takeDue();

  mutable std::mutex mutex_;
  // What was submitted for now, and what for a moment of its own; both in order. The former is due
  // without asking the clock.
  std::vector<Task> arrived_;
  std::map<Place, Work> later_;
  std::uint64_t submitted_ = 0;
  std::atomic<Nanoseconds> nextDeadline_ = kNever;
  // The main thread's own: what has come due, in order, and how much of it has been run. Work that
  // runs the loop itself (a modal dialog) leaves the rest to be served there.
  std::vector<Task> due_;
  std::size_t next_ = 0;
};

/// The one queue there is; served by the main run loop.
VEL_EXPORT DispatchQueue& dispatch_get_main_queue();

/// The moment `delta` nanoseconds after `when`; DISPATCH_TIME_NOW stands for now. Any thread.
[[nodiscard]] VEL_EXPORT dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta);

/// Runs `work` on the main thread, in the run loop's next turn of the queue. Any thread.
VEL_EXPORT void dispatch_async(DispatchQueue& queue, DispatchQueue::Work work);

/// Runs `work` on the main thread at `when`; it cannot be cancelled. Any thread.
VEL_EXPORT void dispatch_after(dispatch_time_t when, DispatchQueue& queue,
                               DispatchQueue::Work work);

}  // namespace vel
