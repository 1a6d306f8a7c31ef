#include "Host/Play/Timeline/TimelineSvg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "Host/Play/Timeline/LabelLayout.h"
#include "Host/Play/Timeline/Svg.h"
#include "Host/Play/Timeline/TextWidth.h"

namespace vel::host {

namespace {

constexpr std::string_view kStyleSheet = R"(text{font:13px "DejaVu Sans",Verdana,sans-serif}
.title{font-size:16px}.lane-name{font-size:13px}
.background{fill:#fff}text{fill:#1f2328}.muted{fill:#59636e}
.line,.axis{stroke:#d1d9e0;fill:none}.axis{stroke:#818b98}
.label{stroke:#fff;stroke-width:4px;stroke-linejoin:round;paint-order:stroke}
.counting-down,.paused{fill:none;stroke:#0969da;stroke-width:2.5px;stroke-linejoin:round}
.paused{stroke:#59636e;stroke-dasharray:4 3;stroke-width:2px}
.key{fill:#7fb3e6}.cover{fill:#a58ad6}
.Request{fill:#0969da}.Script{fill:#59636e}.HostCall{fill:#8250df}.Refusal{fill:#d1242f}
.WindowStyle{fill:#bc4c00}.Dismissal{fill:#6e40c9}.Event{fill:#1a7f37}
@media (prefers-color-scheme:dark){
.background{fill:#0d1117}text{fill:#f0f6fc}.muted{fill:#9198a1}
.line{stroke:#30363d}.axis{stroke:#656c76}
.label{stroke:#0d1117}
.counting-down{stroke:#58a6ff}.paused{stroke:#9198a1}
.key{fill:#1f5a99}.cover{fill:#6e50b0}
.Request{fill:#58a6ff}.Script{fill:#9198a1}.HostCall{fill:#bc8cff}.Refusal{fill:#ff7b72}
.WindowStyle{fill:#f0883e}.Dismissal{fill:#a371f7}.Event{fill:#3fb950}
}
)";

struct LaneStyle {
  TimelineLane lane;
  std::string_view styleClass;
  std::string_view name;
};
constexpr LaneStyle kLanes[] = {
    {TimelineLane::Request, "Request", "request"},
    {TimelineLane::Script, "Script", "scenario steps"},
    {TimelineLane::HostCall, "HostCall", "host callbacks"},
    {TimelineLane::Refusal, "Refusal", "refusals"},
    {TimelineLane::WindowStyle, "WindowStyle", "window style"},
    {TimelineLane::Dismissal, "Dismissal", "dismissal"},
    {TimelineLane::Event, "Event", "event"},
};

constexpr double kWidth = 960;
constexpr double kMargin = 16;
constexpr double kLeft = 150;   // the x coordinate of the start of the scenario
constexpr double kRight = 920;  // the x coordinate of the end of the scenario
constexpr double kFontSize = 13;
constexpr double kTitleSize = 16;
constexpr double kBaselineOffset = 4.5;  // from the vertical centre of a text to its baseline
constexpr double kRowHeight = 20;
constexpr double kLanePadding = 4;
constexpr double kBandHeight = 12;
constexpr double kChartHeight = 120;
constexpr double kMarkRadius = 4;
constexpr double kMarkToLabelDistance = 4;
constexpr double kMinimumLabelSpacing = 8;
// A label of at most this width fits on at least one side of its mark.
constexpr double kMaximumLabelWidth = (kRight - kLeft) / 2 - 4 * kMarkRadius;
constexpr int kTimeAxisTickLimit = 7;
constexpr int kCountdownAxisTickLimit = 5;

struct AxisTick {
  double value = 0;
  std::string text;
};

// Returns the ticks of an axis from 0 to `end` seconds: a tick at 0 and at most `maximumCount`
// further ticks at round values.
std::vector<AxisTick> axisTicks(double end, int maximumCount) {
  const double exponent = std::floor(std::log10(end / maximumCount));
  double step = 0;
  for (const double factor : {1.0, 2.0, 5.0, 10.0}) {
    step = factor * std::pow(10, exponent);
    if (end / step <= maximumCount) {
      break;
    }
  }
  const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 0.001)));
  std::vector<AxisTick> ticks;
  for (int index = 0; index <= maximumCount && index * step <= end * 1.0001; ++index) {
    const double value = index * step;
    const bool usesFixedNotation = step >= 1e-6 && value < 1e7;
    char text[40];
    std::snprintf(text, sizeof text, usesFixedNotation ? "%.*f s" : "%.*g s",
                  usesFixedNotation ? decimals : 3, value);
    ticks.push_back({.value = value, .text = text});
  }
  return ticks;
}

/// Draws the picture from top to bottom.
class Drawing {
 public:
  Drawing(const Timeline& timeline, std::string_view title)
      : timeline_(timeline), title_(title), duration_(secondsFromNanoseconds(timeline.end())) {
    if (duration_ <= 0) {
      duration_ = 1;  // the time axis must have a length
    }
  }

  std::string draw() {
    drawHeader();
    const double gridTop = bottomEdge_;
    for (const KeyWindowSpans& keyWindow : timeline_.keyWindows()) {
      drawBand(keyWindow.window + " is key", "key", keyWindow.spans);
    }
    drawBand("cover is shown", "cover", timeline_.coveredSpans());
    drawCountdown();
    for (const LaneStyle& laneStyle : kLanes) {
      drawMarks(laneStyle);
    }
    // The background and the grid are behind the lanes, so they come first in the document. Their
    // height is known only after the lanes have been drawn.
    Svg picture;
    picture.addRect("background",
                    {.x = 0, .y = 0, .width = kWidth, .height = bottomEdge_ + kMargin});
    for (const AxisTick& tick : axisTicks(duration_, kTimeAxisTickLimit)) {
      picture.addLine("line", {xOf(tick.value), gridTop}, {xOf(tick.value), bottomEdge_});
    }
    picture.append(svg_);
    return picture.document(kWidth, bottomEdge_ + kMargin, "Timeline of " + title_, kStyleSheet);
  }

 private:
  [[nodiscard]] double xOf(double seconds) const {
    return kLeft + (kRight - kLeft) * seconds / duration_;
  }
  [[nodiscard]] double xOf(Nanoseconds time) const { return xOf(secondsFromNanoseconds(time)); }

  // `position` is at the vertical centre of the text.
  void drawText(std::string_view styleClass, PicturePoint position, Svg::Anchor anchor,
                std::string_view text) {
    svg_.addText(styleClass, {position.x, position.y + kBaselineOffset}, anchor, text);
  }

  void drawHeader() {
    drawText("title", {kMargin, kMargin + kTitleSize / 2}, Svg::Anchor::Start,
             shorten(title_, kTitleSize, kWidth - 2 * kMargin));
    const double middle = kMargin + kTitleSize + kRowHeight;
    drawText("muted", {kMargin, middle}, Svg::Anchor::Start, "time");
    for (const AxisTick& tick : axisTicks(duration_, kTimeAxisTickLimit)) {
      const double maximumX = kWidth - kMargin / 2 - textWidth(tick.text, kFontSize) / 2;
      drawText("muted", {std::min(xOf(tick.value), maximumX), middle}, Svg::Anchor::Middle,
               tick.text);
    }
    bottomEdge_ = middle + kRowHeight / 2;
  }

  // Draws the line above a lane and the name of the lane. Returns the vertical centre of the
  // first row of the lane.
  double beginLane(std::string_view name) {
    svg_.addLine("line", {kMargin, bottomEdge_}, {kWidth - kMargin / 2, bottomEdge_});
    const double middle = bottomEdge_ + kLanePadding + kRowHeight / 2;
    drawText("lane-name", {kMargin, middle}, Svg::Anchor::Start,
             shorten(name, kFontSize, kLeft - kMargin - 2 * kMarkRadius));
    return middle;
  }

  void drawEmptyLane(double middle) {
    drawText("muted label", {kLeft + kMinimumLabelSpacing, middle}, Svg::Anchor::Start, "none");
  }

  void drawBand(std::string_view name, std::string_view styleClass,
                const std::vector<TimeSpan>& spans) {
    const double middle = beginLane(name);
    for (const TimeSpan& span : spans) {
      svg_.addRect(styleClass, {.x = xOf(span.start),
                                .y = middle - kBandHeight / 2,
                                .width = xOf(span.end) - xOf(span.start),
                                .height = kBandHeight});
    }
    if (spans.empty()) {
      drawEmptyLane(middle);
    }
    bottomEdge_ = middle + kRowHeight / 2 + kLanePadding;
  }

  void drawCountdown() {
    const double topRowMiddle = beginLane("time left");
    const auto& countdown = timeline_.countdown();
    if (countdown.empty()) {
      drawEmptyLane(topRowMiddle);
      bottomEdge_ = topRowMiddle + kRowHeight / 2 + kLanePadding;
      return;
    }
    const double maximumTimeLeft =
        std::ranges::max(countdown, {}, &CountdownSegment::timeLeftAtStart).timeLeftAtStart;
    const double chartBottom = topRowMiddle + kRowHeight + kChartHeight;
    const auto yOf = [&](double timeLeft) {
      return chartBottom - kChartHeight * (timeLeft / maximumTimeLeft);
    };
    for (const AxisTick& tick : axisTicks(maximumTimeLeft, kCountdownAxisTickLimit)) {
      const double y = yOf(tick.value);
      svg_.addLine(tick.value == 0 ? "axis" : "line", {kLeft, y}, {kRight, y});
      drawText("muted", {kLeft - kMinimumLabelSpacing, y}, Svg::Anchor::End, tick.text);
    }
    drawText("muted label", {kLeft + kMinimumLabelSpacing, topRowMiddle}, Svg::Anchor::Start,
             "solid: counting down, dashed: paused");
    // Draws one path for adjacent segments that are all counting down or all paused.
    for (auto segment = countdown.begin(); segment != countdown.end();) {
      const bool isCountingDown = segment->isCountingDown;
      std::vector<PicturePoint> points;
      Nanoseconds pathEnd = segment->span.start;
      for (; segment != countdown.end() && segment->isCountingDown == isCountingDown &&
             segment->span.start == pathEnd;
           ++segment) {
        points.push_back({xOf(segment->span.start), yOf(segment->timeLeftAtStart)});
        points.push_back({xOf(segment->span.end), yOf(segment->timeLeftAtEnd)});
        pathEnd = segment->span.end;
      }
      svg_.addPath(isCountingDown ? "counting-down" : "paused", points);
    }
    bottomEdge_ = chartBottom + kRowHeight / 2 + kLanePadding;
  }

  void drawMarks(const LaneStyle& laneStyle) {
    const double middle = beginLane(laneStyle.name);
    LabelLayout layout(kWidth - kMargin / 2, kMarkRadius, kMinimumLabelSpacing);
    for (const TimelineMark& mark : timeline_.marks()) {
      if (mark.lane != laneStyle.lane) {
        continue;
      }
      const std::string text = shorten(mark.text, kFontSize, kMaximumLabelWidth);
      const double x = xOf(mark.time);
      const LabelPosition position =
          layout.place(x, kMarkToLabelDistance + textWidth(text, kFontSize));
      const double y = middle + static_cast<double>(position.row) * kRowHeight;
      const bool isRightOfMark = position.side == LabelPosition::Side::Right;
      const double distance = kMarkRadius + kMarkToLabelDistance;
      svg_.addCircle(laneStyle.styleClass, {x, y}, kMarkRadius);
      drawText("label", {isRightOfMark ? x + distance : x - distance, y},
               isRightOfMark ? Svg::Anchor::Start : Svg::Anchor::End, text);
    }
    if (layout.rowCount() == 0) {
      drawEmptyLane(middle);
    }
    const double rowCount = static_cast<double>(std::max<std::size_t>(layout.rowCount(), 1));
    bottomEdge_ = middle + (rowCount - 0.5) * kRowHeight + kLanePadding;
  }

  const Timeline& timeline_;
  std::string title_;
  double duration_;  // in seconds
  Svg svg_;
  double bottomEdge_ = 0;  // the bottom edge of the elements drawn so far
};

}  // namespace

std::string timelineSvg(const Timeline& timeline, std::string_view title) {
  return Drawing(timeline, title).draw();
}

}  // namespace vel::host
