#pragma once

#include "Platform/Foundation/Export.h"

namespace vel {

/// Identifies the main thread: the thread that loaded the library, or the thread that called
/// `becomeMainThread` last.
class VEL_EXPORT NSThread {
 public:
  /// Returns true if the calling thread is the main thread.
  static bool isMainThread();
  /// Makes the calling thread the main thread. A host that loads the library on one thread and
  /// opens its windows on another thread must call this function. No part of the platform layer may
  /// be in use during the call.
  static void becomeMainThread();
};

}  // namespace vel
