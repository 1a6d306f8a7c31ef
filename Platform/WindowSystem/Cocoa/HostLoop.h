#pragma once

#include <functional>
#include <memory>

#include "Platform/Foundation/NonCopyable.h"

@class VelInputObserver;

namespace vel::cocoa {

/// Runs passes of the library's run loop in the host's native loop (`[NSApp run]`). The descriptor
/// of the library's run loop becomes readable at the next deadline, after a wake-up from any
/// thread, and after a report of the back end. The native loop watches the descriptor in its
/// default and modal panel modes. It does not watch in the event tracking mode, because the
/// countdown must not run there. It watches each mode by its name, because the free AppKit of
/// GNUstep does not support the common modes here. Used on the main thread.
class HostLoop final : public NonCopyable {
 public:
  /// `runPass` may destroy this object.
  HostLoop(int descriptor, std::function<void()> runPass);
  ~HostLoop();

  /// `VelInputObserver` calls this function when the descriptor is readable.
  void descriptorBecameReadable();

 private:
  // Shared with the running pass, because the pass may destroy this object.
  std::shared_ptr<const std::function<void()>> runPass_;
  VelInputObserver* observer_;
};

}  // namespace vel::cocoa
