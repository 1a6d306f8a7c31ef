// Tests the trace: the lines that `launchscreen play` prints. An inspection is a line that
// describes the state of the library and of the platform.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>

#include "Host/Play/Scenario/Decimal.h"
#include "Tests/Host/Play/PlaySupport.h"

namespace vel::host {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;

std::string textOf(TraceEvent event, Nanoseconds time = 0) {
  return traceText({.time = time, .event = std::move(event)});
}

// The text of a line

TEST(TraceTextTest, TimeHasNineDecimals) {
  EXPECT_EQ(textOf(trace::Tick{1}, 1), R"({"t":0.000000001,"tick":1})");
  EXPECT_EQ(textOf(trace::Tick{1}, 1'500'000'000), R"({"t":1.500000000,"tick":1})");
  EXPECT_EQ(textOf(trace::Tick{1}, 1'000'000 * kNanosecondsPerSecond),
            R"({"t":1000000.000000000,"tick":1})");
}

TEST(TraceTextTest, EachKindOfLineHasItsMembersInOrder) {
  EXPECT_EQ(textOf(trace::StepStart{"present"}), R"({"t":0.000000000,"do":"present"})");
  EXPECT_EQ(textOf(trace::Activation{true}), R"({"t":0.000000000,"answer":{"activate:":true}})");
  EXPECT_EQ(textOf(trace::ContentDataResult{ContentName::Temporary}),
            R"({"t":0.000000000,"answer":{"contentDataForContentRequest:":"temporary"}})");
  EXPECT_EQ(textOf(trace::ContentDataResult{}),
            R"({"t":0.000000000,"answer":{"contentDataForContentRequest:":null}})");
  EXPECT_EQ(textOf(trace::ContentViewResult{ContentName::Main}),
            R"({"t":0.000000000,"answer":{"contentViewForContentData:":"main"}})");
  EXPECT_EQ(textOf(trace::ContentViewResult{}),
            R"({"t":0.000000000,"answer":{"contentViewForContentData:":null}})");
  EXPECT_EQ(textOf(trace::Registration{{"a", "b"}}), R"({"t":0.000000000,"registered":["a","b"]})");
  EXPECT_EQ(textOf(trace::Registration{}), R"({"t":0.000000000,"registered":[]})");
  EXPECT_EQ(textOf(trace::LogLine{"one line"}), R"({"t":0.000000000,"log":"one line"})");
  EXPECT_EQ(textOf(trace::StateChange{.state = 3, .content = ContentName::Main}),
            R"({"t":0.000000000,"state":3,"content":"main"})");
  EXPECT_EQ(textOf(trace::HostCall{.operation = ViewOperation::WillAppear, .returnValue = {}}),
            R"({"t":0.000000000,"host":"contentViewWillAppear:"})");
  EXPECT_EQ(textOf(trace::HostCall{.operation = ViewOperation::CanDisappear, .returnValue = false}),
            R"({"t":0.000000000,"host":"canContentViewDisappear:","answer":false})");
  EXPECT_EQ(textOf(trace::HostCall{.operation = ViewOperation::DidDisappear, .returnValue = {}}),
            R"({"t":0.000000000,"host":"contentViewDidDisappear:"})");
  EXPECT_EQ(textOf(trace::RecordedEvent{"launch_end"}),
            R"({"t":0.000000000,"event":"launch_end"})");
  EXPECT_EQ(textOf(trace::Tick{4.9}), R"({"t":0.000000000,"tick":4.9})");
  EXPECT_EQ(
      textOf(trace::KeyWindowChange{.change = KeyStatusChange::ResignsKey, .window = "player"}),
      R"({"t":0.000000000,"resignKey":"player"})");
  EXPECT_EQ(
      textOf(trace::KeyWindowChange{.change = KeyStatusChange::BecomesKey, .window = "player"}),
      R"({"t":0.000000000,"becomeKey":"player"})");
  EXPECT_EQ(
      textOf(trace::StyleMaskAssignment{.styleMask = ~NSWindowStyleMask{0}, .window = "player"}),
      R"({"t":0.000000000,"styleMask":18446744073709551615,"window":"player"})");
  using WindowChange = trace::PresentationWindowChange;
  EXPECT_EQ(textOf(WindowChange{.window = "modal-1", .change = WindowChange::Change::Opened}),
            R"({"t":0.000000000,"window":"modal-1","is":"opened"})");
  EXPECT_EQ(textOf(WindowChange{.window = "sheet-2", .change = WindowChange::Change::Closed}),
            R"({"t":0.000000000,"window":"sheet-2","is":"closed"})");
  EXPECT_EQ(textOf(trace::FatalError{"why"}), R"({"t":0.000000000,"fatal":"why"})");
}

TEST(TraceTextTest, LifeCycleCallsHaveTheirPlatformNames) {
  EXPECT_EQ(textOf(trace::LifeCycleCall{LifeCycleMethod::WillAppear}),
            R"({"t":0.000000000,"cover":"viewWillAppear"})");
  EXPECT_EQ(textOf(trace::LifeCycleCall{LifeCycleMethod::DidAppear}),
            R"({"t":0.000000000,"cover":"viewDidAppear"})");
  EXPECT_EQ(textOf(trace::LifeCycleCall{LifeCycleMethod::WillDisappear}),
            R"({"t":0.000000000,"cover":"viewWillDisappear"})");
  EXPECT_EQ(textOf(trace::LifeCycleCall{LifeCycleMethod::DidDisappear}),
            R"({"t":0.000000000,"cover":"viewDidDisappear"})");
}

TEST(TraceTextTest, DoubleIsWrittenAsTheShortestDecimalThatConvertsBackToIt) {
  EXPECT_EQ(shortestDecimal(5.0), "5");
  EXPECT_EQ(shortestDecimal(4.9), "4.9");
  EXPECT_EQ(shortestDecimal(0.30000001192092896), "0.30000001192092896");
  EXPECT_EQ(shortestDecimal(5.0 - 0.1 - 0.1 - 0.1), "4.700000000000001");
  EXPECT_EQ(shortestDecimal(1.3877787807814457e-16), "1.3877787807814457e-16");
  EXPECT_EQ(shortestDecimal(-0.1), "-0.1");
}

TEST(TraceTextTest, InfinityAndNaNBecomeStrings) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(textOf(trace::Tick{std::nan("")}), R"({"t":0.000000000,"tick":"nan"})");
  EXPECT_EQ(textOf(trace::Tick{kInfinity}), R"({"t":0.000000000,"tick":"inf"})");
  EXPECT_EQ(textOf(trace::Tick{-kInfinity}), R"({"t":0.000000000,"tick":"-inf"})");
}

TEST(TraceTextTest, StringsAreEscapedAsInJson) {
  EXPECT_EQ(textOf(trace::RecordedEvent{"a\"b\\c\nd\x01\xc3\xa9"}),
            "{\"t\":0.000000000,\"event\":\"a\\\"b\\\\c\\nd\\u0001\xc3\xa9\"}");
}

// The order of lines

TEST(PlayTraceTest, LinesOfARunInAModalWindowAreInOrder) {
  const Lines trace =
      play(R"({"do":"request","parameters":{"event":"e","max_duration_time":0.05}},)"
           R"({"do":"contentView"},{"do":"present","window":"player","mode":2})",
           1);
  // The only tick dismisses the launch screen. The dismissal sets the time left to 0, and the tick
  // then subtracts 0.1 s. The test leaves out the last line, which is an inspection.
  EXPECT_THAT(
      std::vector(trace.begin(), trace.end() - 1),
      ElementsAre(
          R"({"t":0.000000000,"do":"request"})", R"({"t":0.000000000,"state":3,"content":"main"})",
          R"({"t":0.000000000,"answer":{"contentDataForContentRequest:":"main"}})",
          R"({"t":0.000000000,"do":"contentView"})",
          R"({"t":0.000000000,"answer":{"contentViewForContentData:":"main"}})",
          R"({"t":0.000000000,"do":"present"})",
          R"({"t":0.000000000,"log":"LaunchScreenContent (-[LaunchScreenContent )"
          R"(presentForWindow:withPresentationMode:]) mode: 2"})",
          R"({"t":0.000000000,"cover":"viewWillAppear"})",
          R"({"t":0.000000000,"host":"contentViewWillAppear:"})",
          R"({"t":0.000000000,"styleMask":0,"window":"modal-1"})",
          R"({"t":0.000000000,"window":"modal-1","is":"opened"})",
          R"({"t":0.000000000,"resignKey":"player"})", R"({"t":0.000000000,"becomeKey":"modal-1"})",
          R"({"t":0.000000000,"cover":"viewDidAppear"})",
          R"({"t":0.100000000,"host":"canContentViewDisappear:","answer":true})",
          R"({"t":0.100000000,"cover":"viewWillDisappear"})",
          R"({"t":0.100000000,"window":"modal-1","is":"closed"})",
          R"({"t":0.100000000,"cover":"viewDidDisappear"})",
          R"({"t":0.100000000,"host":"contentViewDidDisappear:"})",
          R"({"t":0.100000000,"resignKey":"modal-1"})", R"({"t":0.100000000,"becomeKey":"player"})",
          R"({"t":0.100000000,"tick":-0.1})", R"({"t":0.600000000,"event":"e"})"));
}

TEST(PlayTraceTest, PresentationIsLoggedWithItsModeAsAnUnsignedNumber) {
  EXPECT_THAT(linesOfKind(play(R"({"do":"present","window":null,"mode":-1})"), "log"),
              ElementsAre(testing::EndsWith(R"(mode: 4294967295"})")));
}

// A conforming delegate adopts the protocol ContentResolverDelegate. An undeclared delegate has the
// operation of the protocol but does not adopt the protocol.
TEST(PlayTraceTest, StateLineRequiresAConformingResolverDelegate) {
  const auto stateLines = [](const char* resolverDelegate) {
    return linesOfKind(play(R"({"do":"request","parameters":{"event":"e","max_duration_time":-1}})",
                            0, std::string(R"({"resolverDelegate":)") + resolverDelegate + "}"),
                       "state");
  };
  EXPECT_THAT(stateLines(R"("conforming")"), ElementsAre(R"("state":4,"content":"main"})"));
  EXPECT_THAT(stateLines(R"("undeclared")"), testing::IsEmpty());
  EXPECT_THAT(stateLines("null"), testing::IsEmpty());
}

TEST(PlayTraceTest, AssigningAnUnchangedStyleMaskAddsALine) {
  const Lines trace = play(kCoverSteps, 0, R"({"windows":[{"name":"player","styleMask":1}]})");
  // The library assigns the style mask once for each of the three controls close, miniaturise and
  // resize. This window has no controls.
  constexpr auto kAssignmentLine = R"("styleMask":1,"window":"player"})";
  EXPECT_THAT(linesOfKind(trace, "styleMask"),
              ElementsAre(kAssignmentLine, kAssignmentLine, kAssignmentLine));
}

TEST(PlayTraceTest, OpeningOrClosingAWindowOfTheHostAddsNoWindowLine) {
  EXPECT_THAT(
      linesOfKind(play(R"({"do":"openWindow","name":"b"},{"do":"closeWindow","window":"b"})"),
                  "window"),
      testing::IsEmpty());
}

TEST(PlayTraceTest, TickLineHasTheTimeLeftAfterTheTick) {
  const Lines trace = play(kCoverSteps, 0.25);
  EXPECT_THAT(linesOfKind(trace, "tick"),
              ElementsAre(R"("tick":4.9})", R"("tick":4.800000000000001})"));
}

TEST(PlayTraceTest, SameStepsGiveTheSameTrace) {
  const std::string steps =
      coverThen(R"({"at":1,"do":"dismiss","by":"manager","thread":"background"},)"
                R"({"at":2,"do":"resignKey"},{"at":3,"do":"makeKey","window":"player"})");
  const Lines firstTrace = play(steps, 10);
  EXPECT_EQ(play(steps, 10), firstTrace);
}

// Inspections

TEST(PlayInspectionTest, HasItsMembersInOrder) {
  EXPECT_EQ(
      play(R"({"do":"request","parameters":{"event":"launch_end","max_duration_time":5}},)"
           R"({"do":"contentView"},{"do":"present","window":"player","mode":0})",
           0.1)
          .back(),
      R"({"t":0.100000000,"inspect":{"manager":{"content":true,"tempContent":false,)"
      R"("appIsUnfocused":false,"eventWasSended":false,"launchScreenExpirationTimer":true,)"
      R"("launchScreenExpirationTimeLeft":4.9,"launchScreenExpired":false,)"
      R"("launchShouldBeClosed":false},"configuration":{"viewController":false,"skipMode":false,)"
      R"("nextEventName":"launch_end","expirationTimeInterval":5},"content":{"state":3,)"
      R"("error":null,"contentRequest":true},"controller":{"presentationMode":0,)"
      R"("appWindow":"player","appWindowStyleMask":"f","delegates":2,"activityIndicator":false,)"
      R"("window":"player","presented":0},"application":{"keyWindow":"player",)"
      R"("mainWindow":"player","orderedWindows":["player"],"modalWindow":null,)"
      R"("styleMasks":{"player":1}}}})");
}

TEST(PlayInspectionTest, InitialStateHasNoControllerAndNoRequest) {
  EXPECT_EQ(play("").back(),
            R"({"t":0.000000000,"inspect":{"manager":{"content":true,"tempContent":false,)"
            R"("appIsUnfocused":false,"eventWasSended":false,"launchScreenExpirationTimer":false,)"
            R"("launchScreenExpirationTimeLeft":0,"launchScreenExpired":false,)"
            R"("launchShouldBeClosed":false},"configuration":{"viewController":false,)"
            R"("skipMode":false,"nextEventName":null,"expirationTimeInterval":0},)"
            R"("content":{"state":0,"error":null,"contentRequest":false},"controller":null,)"
            R"("application":{"keyWindow":"player","mainWindow":"player",)"
            R"("orderedWindows":["player"],"modalWindow":null,"styleMasks":{"player":15}}}})");
}

TEST(PlayInspectionTest, ControllerOfTheHostHasNoDelegatesSavedStyleMaskOrWindow) {
  const json controller = lastInspection(
      play(R"({"do":"configure","expirationTimeInterval":1,"viewController":true},)"
           R"({"do":"request","parameters":{"event":"e","max_duration_time":1}})"))["controller"];
  EXPECT_EQ(controller["delegates"], nullptr);
  EXPECT_EQ(controller["appWindowStyleMask"], "ffffffffffffffff");
  EXPECT_EQ(controller["window"], nullptr);
}

TEST(PlayInspectionTest, ContainsTheFlagsOfTheManager) {
  const std::string skipSteps =
      R"({"do":"request","parameters":{"mode":"skip","event":"e","max_duration_time":5}},)"
      R"({"do":"contentView"},{"do":"present","window":"player","mode":0},{"do":"resignKey"})";
  json manager = lastInspection(play(skipSteps))["manager"];
  EXPECT_EQ(manager["appIsUnfocused"], true);
  EXPECT_EQ(manager["launchShouldBeClosed"], false);
  manager = lastInspection(play(skipSteps + R"(,{"do":"dismiss","by":"manager"})"))["manager"];
  EXPECT_EQ(manager["launchScreenExpired"], true);
  EXPECT_EQ(manager["launchShouldBeClosed"], true);
  manager = lastInspection(
      play(coverThen(R"({"do":"send","operation":"sendAnalyticsEvent"})")))["manager"];
  EXPECT_EQ(manager["eventWasSended"], true);
}

TEST(PlayInspectionTest, WindowsHaveTheirNamesAndStyleMasksAreSortedByWindowName) {
  const json application =
      lastInspection(play(R"({"do":"openWindow","name":"zoo","styleMask":3},)"
                          R"({"do":"openWindow","name":"abc","styleMask":5},)"
                          R"({"do":"request","parameters":{"event":"e","max_duration_time":5}},)"
                          R"({"do":"present","window":"player","mode":2})"))["application"];
  EXPECT_EQ(application["keyWindow"], "modal-1");
  EXPECT_EQ(application["mainWindow"], "player");
  EXPECT_EQ(application["modalWindow"], "modal-1");
  EXPECT_EQ(application["orderedWindows"], json::parse(R"(["modal-1","abc","zoo","player"])"));
  const Lines trace = play(R"({"do":"openWindow","name":"abc"})");
  EXPECT_THAT(trace.back(), testing::HasSubstr(R"("styleMasks":{"abc":15,"player":15})"));
}

}  // namespace
}  // namespace vel::host
