#pragma once

#include <optional>
#include <string>

#include "Host/Play/Trace/TraceLine.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::host {

/// The state at one moment of a scenario that is being played.
struct PlayState {
  Nanoseconds time = 0;  // since the start of the scenario
  /// The time left until the launch screen expires, in seconds.
  double timeLeft = 0;
  bool isCountingDown = false;
  /// True if a launch screen is shown.
  bool isCovered = false;
  /// The name of the key window. No value if no window is key.
  std::optional<std::string> keyWindow;
};

/// Receives trace lines and play states while a scenario is played.
class PlayListener : private NonCopyable {
 public:
  PlayListener() = default;
  virtual ~PlayListener() = default;

  /// May be called on a background thread. The main thread then waits for the call to return.
  virtual void traceLineAdded(const TraceLine& line) = 0;
  /// Called when the scenario starts, after each step, and each time the run loop has done all due
  /// work.
  virtual void stateReached(const PlayState& state) = 0;
};

}  // namespace vel::host
