#include "Host/Play/Timeline/Timeline.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "HostInterfaces/ContentBroker.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "Platform/AppKit/NSWindow.h"

namespace vel::host {

namespace {

// Two segments of the countdown have the same slope if their slopes differ by less than this
// tolerance. Rounding errors are far smaller. Real changes of the slope are far greater.
constexpr double kSlopeTolerance = 1e-6;
const Nanoseconds kTickInterval = nanosecondsFromSeconds(expirationTimeStep);

double slopeOf(const CountdownSegment& segment) {
  return (segment.timeLeftAtEnd - segment.timeLeftAtStart) /
         secondsFromNanoseconds(segment.span.end - segment.span.start);
}

bool isContinuation(const CountdownSegment& previous, const CountdownSegment& segment) {
  return previous.isCountingDown == segment.isCountingDown &&
         previous.span.end == segment.span.start &&
         previous.timeLeftAtEnd == segment.timeLeftAtStart;
}

// Adds a span. If the last span ends when the new span starts, extends the last span instead.
void addSpan(std::vector<TimeSpan>& spans, TimeSpan span) {
  if (!spans.empty() && spans.back().end == span.start) {
    spans.back().end = span.end;
  } else {
    spans.push_back(span);
  }
}

std::string controlsText(NSWindowStyleMask mask) {
  constexpr NamedValue<NSWindowStyleMask> kControls[] = {
      {"close", NSWindowStyleMaskClosable},
      {"miniaturise", NSWindowStyleMaskMiniaturizable},
      {"resize", NSWindowStyleMaskResizable},
  };
  std::string text;
  std::size_t count = 0;
  for (const auto& control : kControls) {
    if ((mask & control.value) != 0) {
      text.append(count++ == 0 ? "" : ", ").append(control.name);
    }
  }
  return count == 0 ? "no controls" : count == std::size(kControls) ? "all controls" : text;
}

// The library logs a refused operation as `Class (-[Class method]): reason`. Returns the reason.
// Returns `std::nullopt` if the log line has another format.
std::optional<std::string> refusalReasonIn(std::string_view logLine) {
  constexpr std::string_view kSeparator = "]): ";
  const std::size_t start = logLine.find(kSeparator);
  return start == std::string_view::npos
             ? std::nullopt
             : std::optional<std::string>(logLine.substr(start + kSeparator.size()));
}

}  // namespace

class Timeline::Marker {
 public:
  explicit Marker(Timeline& timeline) : timeline_(timeline) {}

  void operator()(const trace::StepStart& step) {
    // The step `inspect` only reads the state, so it gets no mark. The result of the step `request`
    // gets a mark, so the step itself gets no mark.
    if (step.name != "inspect" && step.name != "request") {
      timeline_.addMark(TimelineLane::Script, std::string(step.name));
    }
  }
  void operator()(const trace::Activation& activation) {
    if (!activation.result) {
      timeline_.addMark(TimelineLane::Refusal, "not activated");
    }
  }
  void operator()(const trace::ContentDataResult& data) {
    std::string_view text = "refused";
    if (data.content) {
      text = *data.content == ContentName::Main ? "main content" : "temporary content";
    }
    timeline_.addMark(TimelineLane::Request, std::string(text));
  }
  void operator()(const trace::LogLine& log) {
    if (auto text = refusalReasonIn(log.text)) {
      timeline_.addMark(TimelineLane::Refusal, std::move(*text));
    }
  }
  void operator()(const trace::StateChange& change) {
    if (change.state == ContentDataStateFailed) {
      timeline_.addMark(TimelineLane::Refusal, "content failed");
    }
  }
  void operator()(const trace::HostCall& call) {
    std::string text(nameOf(call.operation, kViewOperations));
    // Only `canContentViewDisappear:` returns a value. The library calls it before a dismissal.
    if (call.returnValue) {
      text += *call.returnValue ? " yes" : " no";
      timeline_.isDismissalRequested_ = true;
    }
    timeline_.addMark(TimelineLane::HostCall, std::move(text));
  }
  void operator()(const trace::RecordedEvent& event) {
    timeline_.addMark(TimelineLane::Event, event.name);
  }
  void operator()(const trace::Tick& tick) {
    // The library requests the dismissal when the time left becomes negative.
    if (tick.timeLeft < 0) {
      timeline_.isDismissalRequested_ = true;
    }
  }
  void operator()(const trace::StyleMaskAssignment& assignment) {
    if (timeline_.styledWindow_ == assignment.window) {
      // The previous trace line changed the style of the same window at the same time. Show only
      // the last change.
      timeline_.marks_.pop_back();
    }
    timeline_.addMark(TimelineLane::WindowStyle,
                      assignment.window + ": " + controlsText(assignment.styleMask));
    timeline_.styledWindow_ = assignment.window;
  }
  void operator()(const trace::LifeCycleCall& call) {
    if (call.method == LifeCycleMethod::DidDisappear) {
      timeline_.addMark(TimelineLane::Dismissal, "dismissed");
      timeline_.isDismissed_ = true;
    }
  }
  void operator()(const trace::FatalError& /*error*/) {
    timeline_.addMark(TimelineLane::Refusal, "the play stopped early");
  }
  void operator()(const auto& /*event*/) {}

 private:
  Timeline& timeline_;
};

void Timeline::traceLineAdded(const TraceLine& line) {
  end_ = line.time;
  // Keep `styledWindow_` only between consecutive style changes at the same time.
  if (!std::holds_alternative<trace::StyleMaskAssignment>(line.event) ||
      (!marks_.empty() && marks_.back().time != line.time)) {
    styledWindow_.reset();
  }
  std::visit(Marker(*this), line.event);
}

void Timeline::stateReached(const PlayState& state) {
  end_ = state.time;
  styledWindow_.reset();
  const bool isDismissalRefused = isDismissalRequested_ && !isDismissed_ && state.isCovered;
  isDismissalRequested_ = isDismissed_ = false;
  if (isDismissalRefused) {
    addMark(TimelineLane::Refusal, "not dismissed");
  }
  if (latestState_ && latestState_->time < state.time) {
    extendSpans(*latestState_, state);
  }
  latestState_ = state;
}

void Timeline::addMark(TimelineLane lane, std::string text) {
  marks_.push_back({.time = end_, .lane = lane, .text = std::move(text)});
}

void Timeline::extendSpans(const PlayState& previousState, const PlayState& currentState) {
  const TimeSpan span{.start = previousState.time, .end = currentState.time};
  if (previousState.isCovered) {
    addSpan(coveredSpans_, span);
  }
  if (const auto& keyWindow = previousState.keyWindow) {
    auto entry = std::ranges::find(keyWindows_, *keyWindow, &KeyWindowSpans::window);
    if (entry == keyWindows_.end()) {
      entry = keyWindows_.insert(entry, {.window = *keyWindow, .spans = {}});
    }
    addSpan(entry->spans, span);
  }
  // While the countdown is paused, the time left is constant. A different value in `currentState`
  // was set at `currentState.time`.
  const double timeLeftAtEnd =
      previousState.isCountingDown ? std::max(currentState.timeLeft, 0.0) : previousState.timeLeft;
  if (previousState.timeLeft > 0 && std::isfinite(previousState.timeLeft) &&
      std::isfinite(timeLeftAtEnd)) {
    extendCountdown({.span = span,
                     .timeLeftAtStart = previousState.timeLeft,
                     .timeLeftAtEnd = timeLeftAtEnd,
                     .isCountingDown = previousState.isCountingDown});
  }
}

void Timeline::extendCountdown(CountdownSegment segment) {
  // The countdown changes the time left only at ticks. The picture shows a straight line from tick
  // to tick. A scenario step between two ticks splits this line into a constant segment and a
  // falling segment. Merge these two segments.
  if (!countdown_.empty() && isContinuation(countdown_.back(), segment) &&
      countdown_.back().timeLeftAtStart == countdown_.back().timeLeftAtEnd &&
      segment.span.end - countdown_.back().span.start <= kTickInterval) {
    segment.span.start = countdown_.back().span.start;
    countdown_.pop_back();
  }
  if (!countdown_.empty() && isContinuation(countdown_.back(), segment) &&
      std::abs(slopeOf(countdown_.back()) - slopeOf(segment)) < kSlopeTolerance) {
    countdown_.back().span.end = segment.span.end;
    countdown_.back().timeLeftAtEnd = segment.timeLeftAtEnd;
  } else {
    countdown_.push_back(segment);
  }
}

}  // namespace vel::host
