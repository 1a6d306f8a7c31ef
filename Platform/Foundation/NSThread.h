#pragma once

#include "Platform/Foundation/Export.h"

namespace vel {

/// Knows which thread is the main thread.
class VEL_EXPORT NSThread {
 public:
  /// Whether the caller runs on the main thread. This is the thread that loaded the library, until
  /// another thread calls `becomeMainThread`.
  static bool isMainThread();
  /// Makes the calling thread the main thread, for hosts that open their windows on another thread.
  /// No part of the platform may be in use.
  static void becomeMainThread();
};

}  // namespace vel
