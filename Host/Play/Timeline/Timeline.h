#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Host/Play/Trace/PlayListener.h"

namespace vel::host {

/// The lanes of a timeline, from top to bottom. Each lane has marks of one kind.
enum class TimelineLane : std::uint8_t {
  Request,   // the result of a content request
  Script,    // a step of the scenario
  HostCall,  // a call to the host's view delegate
  Refusal,   // a refused operation, or an error
  WindowStyle,
  Dismissal,
  Event  // an analytics event that the library recorded
};

/// A dot with a label in a lane.
struct TimelineMark {
  Nanoseconds time = 0;
  TimelineLane lane = TimelineLane::Script;
  std::string text;
};

struct TimeSpan {
  Nanoseconds start = 0;
  Nanoseconds end = 0;
};

/// A span in which the time left until the launch screen expires falls at a constant rate or does
/// not change.
struct CountdownSegment {
  TimeSpan span;
  double timeLeftAtStart = 0;  // in seconds
  double timeLeftAtEnd = 0;    // in seconds
  bool isCountingDown = false;
};

/// The spans in which a window was key.
struct KeyWindowSpans {
  std::string window;
  std::vector<TimeSpan> spans;
};

/// Collects the data for the picture of a scenario while the scenario is played. The size of the
/// data depends on what happens in the scenario, not on the duration of the scenario.
class Timeline final : public PlayListener {
 public:
  void traceLineAdded(const TraceLine& line) override;
  void stateReached(const PlayState& state) override;

  /// Returns the marks in order of time.
  [[nodiscard]] const std::vector<TimelineMark>& marks() const { return marks_; }
  /// Returns the windows in the order in which they first became key.
  [[nodiscard]] const std::vector<KeyWindowSpans>& keyWindows() const { return keyWindows_; }
  /// Returns the spans in which a launch screen was shown.
  [[nodiscard]] const std::vector<TimeSpan>& coveredSpans() const { return coveredSpans_; }
  /// Returns the segments in order of time. Leaves out the spans in which the time left is
  /// not positive or not finite.
  [[nodiscard]] const std::vector<CountdownSegment>& countdown() const { return countdown_; }
  /// Returns the time of the latest trace line or state.
  [[nodiscard]] Nanoseconds end() const { return end_; }

 private:
  // Adds the marks for a line of the trace.
  class Marker;

  void addMark(TimelineLane lane, std::string text);
  void extendSpans(const PlayState& previousState, const PlayState& currentState);
  void extendCountdown(CountdownSegment segment);

  std::vector<TimelineMark> marks_;
  std::vector<KeyWindowSpans> keyWindows_;
  std::vector<TimeSpan> coveredSpans_;
  std::vector<CountdownSegment> countdown_;
  Nanoseconds end_ = 0;
  std::optional<PlayState> latestState_;
  // The window in the latest trace line, if this line reports a style change. `stateReached` clears
  // the value.
  std::optional<std::string> styledWindow_;
  // True if a dismissal was requested since the latest state.
  bool isDismissalRequested_ = false;
  // True if a launch screen was dismissed since the latest state.
  bool isDismissed_ = false;
};

}  // namespace vel::host
