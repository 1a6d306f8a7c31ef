#pragma once

#include <cstddef>
#include <memory>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::bench {

/// The clock argument of `RunningApplication` that selects the system's clock.
inline constexpr std::nullptr_t kRealTime = nullptr;

/// Starts the application with the given clock and discards log lines and events. A null window
/// system selects the headless window system. The destructor stops the application and resets what
/// the process shares: the run loop, the default configuration and the sinks.
class RunningApplication : private NonCopyable {
 public:
  explicit RunningApplication(std::unique_ptr<Clock> clock,
                              std::unique_ptr<WindowSystem> windowSystem = nullptr);
  ~RunningApplication();
};

}  // namespace vel::bench
