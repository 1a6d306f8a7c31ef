#pragma once

#include "Platform/Foundation/Export.h"

namespace vel {

/// Which thread is the main one.
class VEL_EXPORT NSThread {
 public:
  /// Whether the caller is on the main thread: the one that loaded the library, unless another has
  /// taken its place.
  static bool isMainThread();
  /// Makes the calling thread the main one, for hosts that open their windows on another. Only
  /// while nothing of the platform is in use.
  static void becomeMainThread();
};

}  // namespace vel
