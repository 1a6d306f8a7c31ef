#pragma once

#include <optional>
#include <string>

#include "Host/Play/Trace/TraceLine.h"

namespace vel::host {

/// How a play stands at one moment.
struct PlayState {
  Nanoseconds time = 0;
  /// Seconds.
  double timeLeft = 0;
  bool countsDown = false;
  /// Whether any cover of the library's is on screen.
  bool isCovered = false;
  std::optional<std::string> keyWindow;
};

/// Follows a play from outside.
class PlayListener {
 public:
  PlayListener() = default;
  PlayListener(const PlayListener&) = delete;
  PlayListener& operator=(const PlayListener&) = delete;
  PlayListener(PlayListener&&) = delete;
  PlayListener& operator=(PlayListener&&) = delete;
  virtual ~PlayListener() = default;

  /// Something has happened. A line may come from a background thread, while the main one waits.
  virtual void traceLineAdded(const TraceLine& line) = 0;
  /// A step has been done, or all that was due at a moment.
  virtual void stateReached(const PlayState& state) = 0;
};

}  // namespace vel::host
