#pragma once

#include <optional>
#include <string>

#include "Host/Play/Trace/TraceLine.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::host {

/// The state of a play at one moment.
struct PlayState {
  Nanoseconds time = 0;
  /// The time left of the launch screen, in seconds.
  double timeLeft = 0;
  bool countsDown = false;
  /// True if a cover of the library is on screen.
  bool isCovered = false;
  std::optional<std::string> keyWindow;
};

/// Receives the trace and the states of a play.
class PlayListener : private NonCopyable {
 public:
  PlayListener() = default;
  virtual ~PlayListener() = default;

  /// A background thread may call this while the main thread waits for that thread.
  virtual void traceLineAdded(const TraceLine& line) = 0;
  /// Called after each step, and after all work that was due at one time.
  virtual void stateReached(const PlayState& state) = 0;
};

}  // namespace vel::host
