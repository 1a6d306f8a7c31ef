// Tests the data that a timeline collects while a scenario is played.
#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

#include "Host/Play/Scenario/ScenarioReader.h"
#include "Host/Play/Timeline/Timeline.h"
#include "Tests/Host/Play/PlaySupport.h"

namespace vel::host {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// A mark of the timeline. `time` is in whole milliseconds.
struct Mark {
  int time = 0;
  std::string text;
  bool operator==(const Mark&) const = default;
  friend void PrintTo(const Mark& mark, std::ostream* out) {
    *out << mark.time << " ms " << mark.text;
  }
};

int milliseconds(Nanoseconds time) { return static_cast<int>(time / 1'000'000); }

// Plays a scenario that ends after `until` seconds. `timeline` collects the data.
void playInto(Timeline& timeline, std::string_view steps, double until,
              std::string_view host = "{}") {
  const std::string text = "{\"host\":" + std::string(host) + ",\"steps\":[" + std::string(steps) +
                           "],\"until\":" + std::to_string(until) + "}";
  const Scenario scenario = readScenario(text);
  Player(scenario, timeline).play();
}

std::vector<Mark> marksIn(const Timeline& timeline, TimelineLane lane) {
  std::vector<Mark> result;
  for (const TimelineMark& mark : timeline.marks()) {
    if (mark.lane == lane) {
      result.push_back({milliseconds(mark.time), mark.text});
    }
  }
  return result;
}

// The start and the end of a time span in whole milliseconds.
using Span = std::pair<int, int>;

std::vector<Span> spansInMilliseconds(const std::vector<TimeSpan>& spans) {
  std::vector<Span> result;
  result.reserve(spans.size());
  for (const TimeSpan& span : spans) {
    result.emplace_back(milliseconds(span.start), milliseconds(span.end));
  }
  return result;
}

class TimelineTest : public testing::Test {
 protected:
  std::vector<Mark> marks(TimelineLane lane) { return marksIn(timeline_, lane); }

  Timeline timeline_;
};

// Steps that show a launch screen with a countdown of 0.5 s. The countdown ticks every 0.1 s.
// Because of rounding, it needs a sixth tick. The library dismisses the launch screen at 0.6 s,
// records the event at 1.1 s and removes the launch screen at 1.6 s.
constexpr std::string_view kHalfSecondSteps =
    R"({"do":"activate"},{"do":"request","parameters":{"event":"end","max_duration_time":0.5}},)"
    R"({"do":"contentView"},{"do":"present","window":"player","mode":0})";

TEST_F(TimelineTest, DoesNotMarkAnInspectStep) {
  playInto(timeline_, R"({"do":"activate"},{"at":0.3,"do":"resignKey"},{"do":"inspect"})", 1);
  EXPECT_THAT(marks(TimelineLane::Script),
              ElementsAre(Mark{0, "activate"}, Mark{300, "resignKey"}));
  EXPECT_EQ(milliseconds(timeline_.end()), 1000);
}

TEST_F(TimelineTest, MarksARequestWithItsResult) {
  playInto(timeline_,
           R"({"do":"request"},)"
           R"({"at":1,"do":"request","parameters":{"event":"e","max_duration_time":1}})",
           2);
  EXPECT_THAT(marks(TimelineLane::Request),
              ElementsAre(Mark{0, "refused"}, Mark{1000, "main content"}));
}

TEST_F(TimelineTest, MarksARefusalWithTheMessageOfTheLibrary) {
  playInto(timeline_, R"({"do":"request","parameters":{"max_duration_time":1}})", 1);
  EXPECT_THAT(marks(TimelineLane::Refusal),
              ElementsAre(Mark{0, "Next event name is nil or empty!"}));
}

TEST_F(TimelineTest, MarksALaunchScreenFromTheFirstHostCallToTheRecordedEvent) {
  playInto(timeline_, kHalfSecondSteps, 3);
  EXPECT_THAT(marks(TimelineLane::HostCall), ElementsAre(Mark{0, "contentViewWillAppear:"},
                                                         Mark{600, "canContentViewDisappear: yes"},
                                                         Mark{600, "contentViewDidDisappear:"}));
  EXPECT_THAT(marks(TimelineLane::WindowStyle),
              ElementsAre(Mark{0, "player: no controls"}, Mark{600, "player: all controls"}));
  EXPECT_THAT(marks(TimelineLane::Dismissal), ElementsAre(Mark{600, "dismissed"}));
  EXPECT_THAT(marks(TimelineLane::Event), ElementsAre(Mark{1100, "end"}));
  EXPECT_THAT(marks(TimelineLane::Refusal), IsEmpty());
  EXPECT_THAT(spansInMilliseconds(timeline_.coveredSpans()), ElementsAre(Span(0, 1600)));
}

TEST_F(TimelineTest, NamesTheRestoredControls) {
  playInto(timeline_, kHalfSecondSteps, 1, R"({"windows":[{"name":"player","styleMask":11}]})");
  EXPECT_THAT(marks(TimelineLane::WindowStyle), Contains(Mark{600, "player: close, resize"}));
}

TEST_F(TimelineTest, MarksADismissalThatTheManagerRefuses) {
  playInto(timeline_,
           std::string(kHalfSecondSteps) + R"(,{"at":0.25,"do":"dismiss","by":"manager"})", 0.3);
  EXPECT_THAT(marks(TimelineLane::Refusal), ElementsAre(Mark{250, "not dismissed"}));
}

TEST_F(TimelineTest, MarksADismissalThatTheHostRefuses) {
  playInto(timeline_, kHalfSecondSteps, 2,
           R"({"viewDelegate":{"operations":["canContentViewDisappear:"],"canDisappear":false}})");
  EXPECT_THAT(marks(TimelineLane::HostCall), ElementsAre(Mark{600, "canContentViewDisappear: no"}));
  EXPECT_THAT(marks(TimelineLane::Refusal), ElementsAre(Mark{600, "not dismissed"}));
}

TEST_F(TimelineTest, HasTheTimeSpansInWhichEachWindowIsKey) {
  playInto(timeline_,
           R"({"at":1,"do":"makeKey","window":"other"},{"at":2,"do":"resignKey"},)"
           R"({"at":3,"do":"makeKey","window":"player"})",
           4, R"({"windows":[{"name":"player"},{"name":"other"}]})");
  ASSERT_EQ(timeline_.keyWindows().size(), 2U);
  EXPECT_EQ(timeline_.keyWindows()[0].window, "player");
  EXPECT_THAT(spansInMilliseconds(timeline_.keyWindows()[0].spans),
              ElementsAre(Span(0, 1000), Span(3000, 4000)));
  EXPECT_EQ(timeline_.keyWindows()[1].window, "other");
  EXPECT_THAT(spansInMilliseconds(timeline_.keyWindows()[1].spans), ElementsAre(Span(1000, 2000)));
}

TEST_F(TimelineTest, TimeLeftDoesNotChangeDuringAPause) {
  playInto(timeline_,
           std::string(kHalfSecondSteps) +
               R"(,{"at":0.2,"do":"resignKey"},{"at":1,"do":"makeKey","window":"player"})",
           1.2);
  const auto& countdown = timeline_.countdown();
  ASSERT_EQ(countdown.size(), 3U);
  EXPECT_TRUE(countdown[0].isCountingDown);
  EXPECT_DOUBLE_EQ(countdown[0].timeLeftAtStart, 0.5);
  EXPECT_NEAR(countdown[0].timeLeftAtEnd, 0.3, 1e-9);
  EXPECT_FALSE(countdown[1].isCountingDown);
  EXPECT_EQ(milliseconds(countdown[1].span.start), 200);
  EXPECT_EQ(milliseconds(countdown[1].span.end), 1000);
  EXPECT_EQ(countdown[1].timeLeftAtStart, countdown[1].timeLeftAtEnd);
  EXPECT_TRUE(countdown[2].isCountingDown);
  EXPECT_NEAR(countdown[2].timeLeftAtEnd, 0.1, 1e-9);
}

TEST_F(TimelineTest, StepBetweenTicksDoesNotSplitTheCountdown) {
  playInto(timeline_, std::string(kHalfSecondSteps) + R"(,{"at":0.25,"do":"inspect"})", 0.4);
  EXPECT_EQ(timeline_.countdown().size(), 1U);
}

TEST_F(TimelineTest, LongCountdownHasFewSegmentsAndMarks) {
  playInto(timeline_,
           R"({"do":"request","parameters":{"event":"end","max_duration_time":3600}},)"
           R"({"do":"contentView"},{"do":"present","window":"player","mode":0})",
           3700);
  EXPECT_LE(timeline_.countdown().size(), 3U);
  EXPECT_LE(timeline_.marks().size(), 12U);
}

TEST_F(TimelineTest, HasNoCountdownIfTheDurationIsInfinite) {
  playInto(timeline_,
           R"({"do":"request","parameters":{"event":"end","max_duration_time":"inf"}},)"
           R"({"do":"contentView"},{"do":"present","window":"player","mode":0})",
           1);
  EXPECT_THAT(timeline_.countdown(), IsEmpty());
}

TEST_F(TimelineTest, HasAMarkIfThePlayStopsEarly) {
  playInto(timeline_, kHalfSecondSteps, 2,
           R"({"viewDelegate":{"operations":["contentViewDidDisappear:"],)"
           R"("deactivateDuring":"contentViewDidDisappear:"}})");
  EXPECT_THAT(marks(TimelineLane::Refusal), Contains(Mark{600, "the play stopped early"}));
}

}  // namespace
}  // namespace vel::host
