#pragma once

#include <functional>
#include <memory>

#include "Platform/Foundation/NonCopyable.h"

@class VelInputObserver;

namespace vel::cocoa {

/// Runs passes of the run loop in the host's native run loop. The run loop's descriptor becomes
/// readable at the next deadline, after a wake-up from any thread, and after a report of the back
/// end. The native loop watches the descriptor in its default, modal panel and event tracking
/// modes, each by its name: the free AppKit does not watch the common modes. Used on the main
/// thread.
class HostLoop final : public NonCopyable {
 public:
  /// `runPass` may destroy this object.
  HostLoop(int descriptor, std::function<void()> runPass);
  ~HostLoop();

  /// The observer calls this function when the descriptor is readable.
  void descriptorBecameReadable();

 private:
  std::shared_ptr<const std::function<void()>> runPass_;  // a pass may destroy this object
  VelInputObserver* observer_;
};

}  // namespace vel::cocoa
