// Tests what the timeline collects from a play.
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

// A mark: its time in whole milliseconds and its text.
struct At {
  int time = 0;
  std::string text;
  bool operator==(const At&) const = default;
  friend void PrintTo(const At& mark, std::ostream* out) {
    *out << mark.time << " ms " << mark.text;
  }
};

int milliseconds(Nanoseconds time) { return static_cast<int>(time / 1'000'000); }

void timelineOf(Timeline& timeline, std::string_view steps, double until,
                std::string_view host = "{}") {
  const std::string text = "{\"host\":" + std::string(host) + ",\"steps\":[" + std::string(steps) +
                           "],\"until\":" + std::to_string(until) + "}";
  const Scenario script = readScenario(text);
  Player(script, timeline).play();
}

std::vector<At> marksIn(const Timeline& timeline, TimelineLane lane) {
  std::vector<At> found;
  for (const TimelineMark& mark : timeline.marks()) {
    if (mark.lane == lane) {
      found.push_back({milliseconds(mark.time), mark.text});
    }
  }
  return found;
}

using Span = std::pair<int, int>;

std::vector<Span> inMilliseconds(const std::vector<TimeSpan>& spans) {
  std::vector<Span> found;
  found.reserve(spans.size());
  for (const TimeSpan& span : spans) {
    found.emplace_back(milliseconds(span.from), milliseconds(span.to));
  }
  return found;
}

class TimelineTest : public testing::Test {
 protected:
  std::vector<At> marks(TimelineLane lane) { return marksIn(timeline_, lane); }

  Timeline timeline_;
};

constexpr std::string_view kHalfASecond =
    R"({"do":"activate"},{"do":"request","parameters":{"event":"end","max_duration_time":0.5}},)"
    R"({"do":"contentView"},{"do":"present","window":"player","mode":0})";

TEST_F(TimelineTest, MarksTheStepsOfTheScript) {
  timelineOf(timeline_, R"({"do":"activate"},{"at":0.3,"do":"resignKey"},{"do":"inspect"})", 1);
  EXPECT_THAT(marks(TimelineLane::Script), ElementsAre(At{0, "activate"}, At{300, "resignKey"}));
  EXPECT_EQ(milliseconds(timeline_.end()), 1000);
}

TEST_F(TimelineTest, MarksARequestWithItsResult) {
  timelineOf(timeline_,
             R"({"do":"request"},)"
             R"({"at":1,"do":"request","parameters":{"event":"e","max_duration_time":1}})",
             2);
  EXPECT_THAT(marks(TimelineLane::Request),
              ElementsAre(At{0, "refused"}, At{1000, "main content"}));
}

TEST_F(TimelineTest, MarksARefusalWithTheMessageOfTheLibrary) {
  timelineOf(timeline_, R"({"do":"request","parameters":{"max_duration_time":1}})", 1);
  EXPECT_THAT(marks(TimelineLane::Refusal), ElementsAre(At{0, "Next event name is nil or empty!"}));
}

TEST_F(TimelineTest, MarksOneRunFromRequestToEvent) {
  timelineOf(timeline_, kHalfASecond, 3);
  EXPECT_THAT(marks(TimelineLane::HostCall),
              ElementsAre(At{0, "contentViewWillAppear:"}, At{600, "canContentViewDisappear: yes"},
                          At{600, "contentViewDidDisappear:"}));
  EXPECT_THAT(marks(TimelineLane::WindowStyle),
              ElementsAre(At{0, "player: no controls"}, At{600, "player: all controls"}));
  EXPECT_THAT(marks(TimelineLane::Dismissal), ElementsAre(At{600, "dismissed"}));
  EXPECT_THAT(marks(TimelineLane::Event), ElementsAre(At{1100, "end"}));
  EXPECT_THAT(marks(TimelineLane::Refusal), IsEmpty());
  EXPECT_THAT(inMilliseconds(timeline_.covered()), ElementsAre(Span(0, 1600)));
}

TEST_F(TimelineTest, NamesTheRestoredControls) {
  timelineOf(timeline_, kHalfASecond, 1, R"({"windows":[{"name":"player","styleMask":11}]})");
  EXPECT_THAT(marks(TimelineLane::WindowStyle), Contains(At{600, "player: close, resize"}));
}

TEST_F(TimelineTest, MarksARefusedDismissal) {
  timelineOf(timeline_, std::string(kHalfASecond) + R"(,{"at":0.25,"do":"dismiss","by":"manager"})",
             0.3);
  EXPECT_THAT(marks(TimelineLane::Refusal), ElementsAre(At{250, "not dismissed"}));
}

TEST_F(TimelineTest, MarksACoverThatStaysAfterItsTime) {
  timelineOf(
      timeline_, kHalfASecond, 2,
      R"({"viewDelegate":{"operations":["canContentViewDisappear:"],"canDisappear":false}})");
  EXPECT_THAT(marks(TimelineLane::HostCall), ElementsAre(At{600, "canContentViewDisappear: no"}));
  EXPECT_THAT(marks(TimelineLane::Refusal), ElementsAre(At{600, "not dismissed"}));
}

TEST_F(TimelineTest, HasTheSpansInWhichWindowsAreKey) {
  timelineOf(timeline_,
             R"({"at":1,"do":"makeKey","window":"other"},{"at":2,"do":"resignKey"},)"
             R"({"at":3,"do":"makeKey","window":"player"})",
             4, R"({"windows":[{"name":"player"},{"name":"other"}]})");
  ASSERT_EQ(timeline_.keyWindows().size(), 2U);
  EXPECT_EQ(timeline_.keyWindows()[0].window, "player");
  EXPECT_THAT(inMilliseconds(timeline_.keyWindows()[0].spans),
              ElementsAre(Span(0, 1000), Span(3000, 4000)));
  EXPECT_EQ(timeline_.keyWindows()[1].window, "other");
  EXPECT_THAT(inMilliseconds(timeline_.keyWindows()[1].spans), ElementsAre(Span(1000, 2000)));
}

TEST_F(TimelineTest, TimeLeftIsFlatDuringAPause) {
  timelineOf(timeline_,
             std::string(kHalfASecond) +
                 R"(,{"at":0.2,"do":"resignKey"},{"at":1,"do":"makeKey","window":"player"})",
             1.2);
  const auto& countdown = timeline_.countdown();
  ASSERT_EQ(countdown.size(), 3U);
  EXPECT_TRUE(countdown[0].countsDown);
  EXPECT_DOUBLE_EQ(countdown[0].leftBefore, 0.5);
  EXPECT_NEAR(countdown[0].leftAfter, 0.3, 1e-9);
  EXPECT_FALSE(countdown[1].countsDown);
  EXPECT_EQ(milliseconds(countdown[1].span.from), 200);
  EXPECT_EQ(milliseconds(countdown[1].span.to), 1000);
  EXPECT_EQ(countdown[1].leftBefore, countdown[1].leftAfter);
  EXPECT_TRUE(countdown[2].countsDown);
  EXPECT_NEAR(countdown[2].leftAfter, 0.1, 1e-9);
}

TEST_F(TimelineTest, StepBetweenTicksDoesNotBendTheLine) {
  timelineOf(timeline_, std::string(kHalfASecond) + R"(,{"at":0.25,"do":"inspect"})", 0.4);
  EXPECT_EQ(timeline_.countdown().size(), 1U);
}

TEST_F(TimelineTest, LongCountdownTakesNoExtraSpace) {
  timelineOf(timeline_,
             R"({"do":"request","parameters":{"event":"end","max_duration_time":3600}},)"
             R"({"do":"contentView"},{"do":"present","window":"player","mode":0})",
             3700);
  EXPECT_LE(timeline_.countdown().size(), 3U);
  EXPECT_LE(timeline_.marks().size(), 12U);
}

TEST_F(TimelineTest, LeavesOutAnInfiniteTime) {
  timelineOf(timeline_,
             R"({"do":"request","parameters":{"event":"end","max_duration_time":"inf"}},)"
             R"({"do":"contentView"},{"do":"present","window":"player","mode":0})",
             1);
  EXPECT_THAT(timeline_.countdown(), IsEmpty());
}

TEST_F(TimelineTest, MarksThatThePlayStoppedEarly) {
  timelineOf(timeline_, kHalfASecond, 2,
             R"({"viewDelegate":{"operations":["contentViewDidDisappear:"],)"
             R"("deactivateDuring":"contentViewDidDisappear:"}})");
  EXPECT_THAT(marks(TimelineLane::Refusal), Contains(At{600, "the play stopped early"}));
}

}  // namespace
}  // namespace vel::host
