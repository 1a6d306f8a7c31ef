#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Host/Play/Trace/PlayListener.h"

namespace vel::host {

/// What a mark of a timeline tells of, in the order in which they stand below each other.
enum class TimelineLane : std::uint8_t {
  Request,
  Script,
  HostCall,
  Refusal,
  WindowStyle,
  Dismissal,
  Event
};

/// Something that happened at one moment.
struct TimelineMark {
  Nanoseconds time = 0;
  TimelineLane lane = TimelineLane::Script;
  std::string text;
};

struct TimeSpan {
  Nanoseconds from = 0;
  Nanoseconds to = 0;
};

/// A stretch of time in which the time left fell, or stood still.
struct CountdownStretch {
  TimeSpan span;
  /// Seconds, at both its ends.
  double leftBefore = 0;
  double leftAfter = 0;
  bool countsDown = false;
};

/// When a window was key.
struct KeyWindowSpans {
  std::string window;
  std::vector<TimeSpan> spans;
};

/// Collects from a play what a picture of it shows. What does not change takes no room, however
/// long it lasts. Belongs to whoever plays.
class Timeline final : public PlayListener {
 public:
  void traceLineAdded(const TraceLine& line) override;
  void stateReached(const PlayState& state) override;

  /// In the order in which they happened.
  [[nodiscard]] const std::vector<TimelineMark>& marks() const { return marks_; }
  /// In the order in which the windows became key for the first time.
  [[nodiscard]] const std::vector<KeyWindowSpans>& keyWindows() const { return keyWindows_; }
  [[nodiscard]] const std::vector<TimeSpan>& covered() const { return covered_; }
  /// Without the stretches in which there is no time left.
  [[nodiscard]] const std::vector<CountdownStretch>& countdown() const { return countdown_; }
  /// When the play ended.
  [[nodiscard]] Nanoseconds end() const { return end_; }

 private:
  // Marks of the kinds of lines that have some.
  class Marker;

  void mark(TimelineLane lane, std::string text);
  void follow(const PlayState& before, const PlayState& now);
  void extendCountdown(CountdownStretch stretch);

  std::vector<TimelineMark> marks_;
  std::vector<KeyWindowSpans> keyWindows_;
  std::vector<TimeSpan> covered_;
  std::vector<CountdownStretch> countdown_;
  Nanoseconds end_ = 0;
  std::optional<PlayState> state_;
  // The window whose style mask was the last thing to be set.
  std::optional<std::string> styledWindow_;
  // What has happened since it was last settled: whether the cover was to go, and whether it went.
  bool dismissalAsked_ = false;
  bool dismissed_ = false;
};

}  // namespace vel::host
