#pragma once

#include <memory>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"
#include "Platform/Foundation/WaitHandle.h"

namespace vel {

/// The events that the run loop waits for: a deadline, wake-ups from other threads, and input on
/// one watched handle. The run loop owns its wait set. CMake chooses the implementation for the
/// operating system. Any thread may call `wake`. All other operations run on the main thread.
class WaitSet : NonCopyable {
 public:
  virtual ~WaitSet() = default;

  /// Replaces the watched handle. An invalid handle only removes the previous handle.
  virtual void watch(WaitHandle handle) = 0;
  /// Replaces the deadline, which is a time on the steady clock. `kNever` removes the deadline.
  virtual void setDeadline(Nanoseconds deadline) = 0;
  /// Blocks until the deadline, a wake-up or input. May also return early, after a signal.
  virtual void wait() = 0;

  /// Ends the current wait, and every later wait until `acknowledgeWakeUps` is called.
  virtual void wake() = 0;
  /// Clears the earlier wake-ups, so that they end no further wait. If another thread calls `wake`
  /// during this call, that wake-up may also be cleared.
  virtual void acknowledgeWakeUps() = 0;

  /// A handle that a host program can poll in its own event loop. Its descriptor is readable
  /// exactly when `wait` would return immediately. The handle is invalid on a system without
  /// descriptors.
  [[nodiscard]] virtual WaitHandle handle() const = 0;
};

/// Makes the wait set of this operating system. Throws `std::system_error` if the process has no
/// descriptors left.
[[nodiscard]] std::unique_ptr<WaitSet> makeWaitSet();

}  // namespace vel
