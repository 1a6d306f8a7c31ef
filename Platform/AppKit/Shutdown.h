#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel {

/// Shuts down the platform layer of this process, in this order:
///   1. Timers are invalidated and blocks are removed from the main queue.
///   2. The application closes its windows and disconnects from its window system. The window
///      that was opened last is closed first.
///   3. Each `ShutdownStep` runs.
///   4. The notification centre removes all its observers.
///   5. Timers and blocks that steps 2 and 3 have added are removed like those in step 1.
///   6. The release pool of the main thread is drained.
/// Does not reset the clock, the log sink, the metrics sink or the default configuration. Also
/// works without an application. Only the main thread may call this function. No timer, observer,
/// life-cycle method or other callback of the platform layer may call it.
VEL_EXPORT void shutDown();

/// Registers a function that `shutDown` calls in step 3. The function releases the process-wide
/// objects of a layer above AppKit. A registration cannot be removed, so a `ShutdownStep` must have
/// static storage duration.
class ShutdownStep : private NonCopyable {
 public:
  explicit ShutdownStep(void (*run)()) noexcept;

 private:
  friend void shutDown();

  void (*run_)();
  const ShutdownStep* next_;
};

}  // namespace vel
