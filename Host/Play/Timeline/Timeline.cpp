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

// Seconds a second; far below what a tick makes of it, far above rounding.
constexpr double kStraight = 1e-6;
const Nanoseconds kTickInterval = nanosecondsFromSeconds(expirationTimeStep);

double slopeOf(const CountdownStretch& stretch) {
  return (stretch.leftAfter - stretch.leftBefore) /
         secondsFromNanoseconds(stretch.span.to - stretch.span.from);
}

// Whether a stretch begins where another one ended, and is of its kind.
bool goesOn(const CountdownStretch& before, const CountdownStretch& stretch) {
  return before.countsDown == stretch.countsDown && before.span.to == stretch.span.from &&
         before.leftAfter == stretch.leftBefore;
}

// Adds a span, or lengthens the last one.
void extend(std::vector<TimeSpan>& spans, TimeSpan span) {
  if (!spans.empty() && spans.back().to == span.from) {
    spans.back().to = span.to;
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

// What a complaint in the log says; nothing for other lines.
std::optional<std::string> complaint(std::string_view logged) {
  constexpr std::string_view kBegins = "]): ";
  const std::size_t begins = logged.find(kBegins);
  return begins == std::string_view::npos
             ? std::nullopt
             : std::optional<std::string>(logged.substr(begins + kBegins.size()));
}

}  // namespace

class Timeline::Marker {
 public:
  explicit Marker(Timeline& timeline) : timeline_(timeline) {}

  void operator()(const trace::StepStarted& step) {
    if (step.name != "inspect" && step.name != "request") {  // a request is told when answered
      timeline_.mark(TimelineLane::Script, std::string(step.name));
    }
  }
  void operator()(const trace::Activated& activated) {
    if (!activated.answer) {
      timeline_.mark(TimelineLane::Refusal, "not activated");
    }
  }
  void operator()(const trace::ContentDataAnswered& data) {
    std::string_view text = "refused";
    if (data.answer) {
      text = *data.answer == ContentName::Main ? "main content" : "temporary content";
    }
    timeline_.mark(TimelineLane::Request, std::string(text));
  }
  void operator()(const trace::Logged& logged) {
    if (auto text = complaint(logged.text)) {
      timeline_.mark(TimelineLane::Refusal, std::move(*text));
    }
  }
  void operator()(const trace::StateChanged& change) {
    if (change.state == ContentDataStateFailed) {
      timeline_.mark(TimelineLane::Refusal, "content failed");
    }
  }
  void operator()(const trace::HostCalled& called) {
    std::string text(nameOf(called.operation, kViewOperations));
    if (called.answer) {
      text += *called.answer ? " yes" : " no";
      timeline_.dismissalAsked_ = true;
    }
    timeline_.mark(TimelineLane::HostCall, std::move(text));
  }
  void operator()(const trace::EventRecorded& event) {
    timeline_.mark(TimelineLane::Event, event.name);
  }
  void operator()(const trace::Ticked& tick) {
    if (tick.timeLeft < 0) {  // used up: the cover is to go
      timeline_.dismissalAsked_ = true;
    }
  }
  void operator()(const trace::StyleMaskSet& set) {
    if (timeline_.styledWindow_ == set.window) {  // one of several steps: the last one counts
      timeline_.marks_.pop_back();
    }
    timeline_.mark(TimelineLane::WindowStyle, set.window + ": " + controlsText(set.styleMask));
    timeline_.styledWindow_ = set.window;
  }
  void operator()(const trace::CoverStep& step) {
    if (step.step == LifeCycleStep::DidDisappear) {
      timeline_.mark(TimelineLane::Dismissal, "dismissed");
      timeline_.dismissed_ = true;
    }
  }
  void operator()(const trace::Fatal& /*fatal*/) {
    timeline_.mark(TimelineLane::Refusal, "the play broke off");
  }
  void operator()(const auto& /*others*/) {}

 private:
  Timeline& timeline_;
};

void Timeline::traceLineAdded(const TraceLine& line) {
  end_ = line.time;
  if (!std::holds_alternative<trace::StyleMaskSet>(line.event) ||
      (!marks_.empty() && marks_.back().time != line.time)) {
    styledWindow_.reset();
  }
  std::visit(Marker(*this), line.event);
}

void Timeline::stateReached(const PlayState& state) {
  end_ = state.time;
  styledWindow_.reset();
  const bool stays = dismissalAsked_ && !dismissed_ && state.isCovered;
  dismissalAsked_ = dismissed_ = false;
  if (stays) {
    mark(TimelineLane::Refusal, "not dismissed");
  }
  if (state_ && state_->time < state.time) {
    follow(*state_, state);
  }
  state_ = state;
}

void Timeline::mark(TimelineLane lane, std::string text) {
  marks_.push_back({.time = end_, .lane = lane, .text = std::move(text)});
}

void Timeline::follow(const PlayState& before, const PlayState& now) {
  const TimeSpan span{.from = before.time, .to = now.time};
  if (before.isCovered) {
    extend(covered_, span);
  }
  if (const auto& key = before.keyWindow) {
    auto found = std::ranges::find(keyWindows_, *key, &KeyWindowSpans::window);
    if (found == keyWindows_.end()) {
      found = keyWindows_.insert(found, {.window = *key, .spans = {}});
    }
    extend(found->spans, span);
  }
  // Where nothing counts, the time left changes in one go: at the end of the stretch.
  const double leftAfter = before.countsDown ? std::max(now.timeLeft, 0.0) : before.timeLeft;
  if (before.timeLeft > 0 && std::isfinite(before.timeLeft) && std::isfinite(leftAfter)) {
    extendCountdown({.span = span,
                     .leftBefore = before.timeLeft,
                     .leftAfter = leftAfter,
                     .countsDown = before.countsDown});
  }
}

void Timeline::extendCountdown(CountdownStretch stretch) {
  // The time left is a line, not stairs: it falls from one tick to the next, whatever else happens
  // in between.
  if (!countdown_.empty() && goesOn(countdown_.back(), stretch) &&
      countdown_.back().leftBefore == countdown_.back().leftAfter &&
      stretch.span.to - countdown_.back().span.from <= kTickInterval) {
    stretch.span.from = countdown_.back().span.from;
    countdown_.pop_back();
  }
  if (!countdown_.empty() && goesOn(countdown_.back(), stretch) &&
      std::abs(slopeOf(countdown_.back()) - slopeOf(stretch)) < kStraight) {
    countdown_.back().span.to = stretch.span.to;
    countdown_.back().leftAfter = stretch.leftAfter;
  } else {
    countdown_.push_back(stretch);
  }
}

}  // namespace vel::host
