#pragma once

#include <optional>
#include <string>

#include "Host/Play/Trace/TraceLine.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::host {

/// The state of a play at one moment.
struct PlayState {
  Nanoseconds time = 0;
  /// Seconds.
  double timeLeft = 0;
  bool countsDown = false;
  /// True if a cover of the library is on screen.
  bool isCovered = false;
  std::optional<std::string> keyWindow;
};

/// Receives what happens in a play.
class PlayListener : private NonCopyable {
 public:
  PlayListener() = default;
  virtual ~PlayListener() = default;

  /// A background thread may call this while the main thread waits for it.
  virtual void traceLineAdded(const TraceLine& line) = 0;
  /// Called after each step, and whenever all work that was due at a moment is done.
  virtual void stateReached(const PlayState& state) = 0;
};

}  // namespace vel::host
