#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel {

/// Shuts down the platform layer of this process:
///   1. Invalidates all timers and removes all blocks from the main queue.
///   2. Closes the application's windows, the most recently opened window first. Disconnects the
///      application from its window system.
///   3. Calls the functions that are registered with `ShutdownStep`.
///   4. Removes all observers from the notification centre.
///   5. Repeats 1, because callbacks may have added timers and blocks.
///   6. Drains the release pool of the main thread.
/// Does not reset the clock, the log sink, the metrics sink or the default configuration. The
/// process need not have an application. Only the main thread may call `shutDown`. A callback of
/// the platform layer, such as a timer or an observer, must not call `shutDown`.
VEL_EXPORT void shutDown();

/// Makes `shutDown` call a function that releases the process-wide objects of a layer above the
/// platform layer. A `ShutdownStep` must have static storage duration, because `shutDown` keeps a
/// pointer to it.
class ShutdownStep : private NonCopyable {
 public:
  explicit ShutdownStep(void (*run)()) noexcept;

 private:
  friend void shutDown();

  void (*run_)();
  const ShutdownStep* next_;
};

}  // namespace vel
