// Tests the steps of a scenario. A scenario is a JSON document that describes a host application
// and the steps that the host or its user performs.
#include <gmock/gmock.h>

#include <string>

#include "Host/Play/Scenario/ScenarioReader.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Tests/Host/Play/PlaySupport.h"

namespace vel::host {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// Plays a request with the parameter "max_duration_time". `duration` is the value of this parameter
// as JSON text. Returns the "expirationTimeInterval" of the configuration. Returns null if the
// library refuses the request.
json intervalFor(const std::string& duration) {
  const Lines trace =
      play(R"({"do":"request","parameters":{"event":"e","max_duration_time":)" + duration + "}}");
  const bool isRefused =
      linesAfter(trace, "request").back() == R"("answer":{"contentDataForContentRequest:":null}})";
  return isRefused ? json() : lastInspection(trace)["configuration"]["expirationTimeInterval"];
}

// The steps "activate", "request" and "contentView"

TEST(PlayStepsTest, ActivateRegistersTheManagerWithTheBroker) {
  EXPECT_THAT(linesAfter(play(R"({"do":"activate"})"), "activate"),
              ElementsAre(R"("registered":["launch_screen"]})", R"("answer":{"activate:":true}})"));
}

TEST(PlayStepsTest, ActivateWithoutBrokerDoesNotRegister) {
  EXPECT_THAT(linesAfter(play(R"({"do":"activate","broker":false})"), "activate"),
              ElementsAre(R"("answer":{"activate:":true}})"));
}

TEST(PlayStepsTest, RequestWithoutParametersReturnsNull) {
  constexpr auto kRefusalLine =
      R"("log":"LaunchScreenManager (-[LaunchScreenManager parseParameters:]): )"
      R"(Content request parameters is nil or empty!"})";
  constexpr auto kNullResult = R"("answer":{"contentDataForContentRequest:":null}})";
  EXPECT_THAT(linesAfter(play(R"({"do":"request"})"), "request"),
              ElementsAre(kRefusalLine, kNullResult));
  EXPECT_THAT(linesAfter(play(R"({"do":"request","parameters":null})"), "request"),
              ElementsAre(kRefusalLine, kNullResult));
  EXPECT_THAT(linesAfter(play(R"({"do":"request","parameters":{}})"), "request"),
              ElementsAre(testing::HasSubstr("Next event name is nil or empty!"), kNullResult));
}

TEST(PlayStepsTest, DurationMayBeANumberOrATextOrTrue) {
  // The library converts the duration to a float.
  EXPECT_EQ(intervalFor("5"), 5);
  EXPECT_EQ(intervalFor("0.1"), 0.10000000149011612);
  EXPECT_EQ(intervalFor("-9223372036854775808"), -9223372036854775808.0);
  EXPECT_EQ(intervalFor("18446744073709551615"), 18446744073709551616.0);
  EXPECT_EQ(intervalFor("1e300"), "inf");
  EXPECT_EQ(intervalFor(R"(" 2.5s")"), 2.5);
  EXPECT_EQ(intervalFor("true"), 1);
}

struct RefusedDuration {
  const char* testName;
  const char* value;
  friend void PrintTo(const RefusedDuration& duration, std::ostream* out) {
    *out << duration.testName;
  }
};

class RefusedDurationTest : public testing::TestWithParam<RefusedDuration> {};

INSTANTIATE_TEST_SUITE_P(
    PlaySteps, RefusedDurationTest,
    testing::Values(RefusedDuration{"Null", "null"}, RefusedDuration{"False", "false"},
                    RefusedDuration{"Array", "[5]"}, RefusedDuration{"Object", R"({"seconds":5})"},
                    RefusedDuration{"Word", R"("soon")"}, RefusedDuration{"Zero", "0"}),
    [](const testing::TestParamInfo<RefusedDuration>& testInfo) {
      return testInfo.param.testName;
    });

TEST_P(RefusedDurationTest, IsRefusedByTheLibrary) {
  EXPECT_EQ(intervalFor(GetParam().value), nullptr);
}

TEST(PlayStepsTest, RequestIgnoresAnArrayAsModeAndRefusesANumberAsEvent) {
  const Lines trace =
      play(R"({"do":"request","parameters":{"mode":["skip"],"event":5,"max_duration_time":5}})");
  EXPECT_THAT(linesOfKind(trace, "log"),
              ElementsAre(testing::HasSubstr("Next event name is nil or empty!")));
  EXPECT_EQ(lastInspection(trace)["configuration"]["skipMode"], false);
}

TEST(PlayStepsTest, RequestFromABackgroundThreadReturnsBeforeTheContentIsLoaded) {
  const Lines trace = play(
      R"({"do":"request","parameters":{"event":"e","max_duration_time":5},"thread":"background"})");
  EXPECT_THAT(linesAfter(trace, "request"),
              ElementsAre(R"("answer":{"contentDataForContentRequest:":"main"}})",
                          R"("state":3,"content":"main"})"));
}

TEST(PlayStepsTest, RequestDuringALaunchScreenMakesATemporaryContentAndContentViewReleasesIt) {
  const std::string coverAndRequestSteps =
      coverThen(R"({"do":"request","parameters":{"event":"e","max_duration_time":5}})");
  const Lines trace = play(coverAndRequestSteps, 0, kHostWithController);
  EXPECT_THAT(linesAfter(trace, "request"),
              ElementsAre(R"("answer":{"contentDataForContentRequest:":"temporary"}})"));
  EXPECT_EQ(lastInspection(trace)["manager"]["tempContent"], true);
  // For both contents, `contentView` returns the view of the main content.
  for (const char* content : {"main", "temporary"}) {
    const Lines viewTrace =
        play(coverAndRequestSteps + R"(,{"do":"contentView","content":")" + content + R"("})", 0,
             kHostWithController);
    EXPECT_THAT(linesAfter(viewTrace, "contentView"),
                ElementsAre(R"("answer":{"contentViewForContentData:":"main"}})"));
    EXPECT_EQ(lastInspection(viewTrace)["manager"]["tempContent"], false);
  }
}

TEST(PlayStepsTest, RequestAndContentViewReturnNullAfterDeactivate) {
  const Lines trace = play(
      R"({"do":"deactivate"},{"do":"request","parameters":{"event":"e","max_duration_time":5}},)"
      R"({"do":"contentView"})");
  EXPECT_THAT(linesAfter(trace, "request"),
              ElementsAre(R"("answer":{"contentDataForContentRequest:":null}})"));
  EXPECT_THAT(linesAfter(trace, "contentView"),
              ElementsAre(R"("answer":{"contentViewForContentData:":null}})"));
  EXPECT_EQ(lastInspection(trace)["content"], nullptr);
  EXPECT_EQ(lastInspection(trace)["controller"], nullptr);
}

// The steps "present", "dismiss" and "deactivate"

TEST(PlayStepsTest, PresentCoversTheNamedWindow) {
  const Lines trace = play(coverThen(R"({"do":"inspect"})"));
  EXPECT_EQ(lastInspection(trace)["controller"]["window"], "player");
  EXPECT_EQ(lastInspection(trace)["controller"]["appWindow"], "player");
}

TEST(PlayStepsTest, PresentWithoutWindowShowsNothing) {
  const Lines trace = play(R"({"do":"request","parameters":{"event":"e","max_duration_time":5}},)"
                           R"({"do":"present","window":null,"mode":0})");
  EXPECT_THAT(linesOfKind(trace, "cover"), IsEmpty());
  EXPECT_EQ(lastInspection(trace)["controller"]["window"], nullptr);
}

// `hostMode` is the mode of a "present" step. It selects `presentationMode`, a value of
// `LaunchScreenPresentationMode`.
struct ModePair {
  int hostMode;
  int presentationMode;
  friend void PrintTo(const ModePair& modes, std::ostream* out) { *out << modes.hostMode; }
};

class PresentModeTest : public testing::TestWithParam<ModePair> {};

INSTANTIATE_TEST_SUITE_P(HostModes, PresentModeTest,
                         testing::Values(ModePair{0, 0}, ModePair{1, 2}, ModePair{2, 1},
                                         ModePair{-1, 2}));

TEST_P(PresentModeTest, HostModeSelectsThePresentationMode) {
  const Lines trace = play(R"({"do":"request","parameters":{"event":"e","max_duration_time":5}},)"
                           R"({"do":"present","window":"player","mode":)" +
                           std::to_string(GetParam().hostMode) + "}");
  EXPECT_EQ(lastInspection(trace)["controller"]["presentationMode"], GetParam().presentationMode);
}

TEST(PlayStepsTest, PresentMayShowTheTemporaryContent) {
  const Lines trace =
      play(coverThen(R"({"do":"request","parameters":{"event":"e","max_duration_time":5}},)"
                     R"({"do":"present","window":"player","mode":2,"content":"temporary"})"),
           0, kHostWithController);
  EXPECT_THAT(linesAfter(trace, "present"), Contains(R"("window":"modal-1","is":"opened"})"));
  // The inspection describes only the controller of the main content.
  EXPECT_EQ(lastInspection(trace)["controller"]["window"], "player");
}

TEST(PlayStepsTest, DismissByTheManagerMarksTheLaunchScreenExpired) {
  const Lines trace = play(coverThen(R"({"do":"dismiss","by":"manager"})"));
  EXPECT_THAT(linesAfter(trace, "dismiss"),
              ElementsAre(R"("host":"canContentViewDisappear:","answer":true})"));
  EXPECT_EQ(lastInspection(trace)["manager"]["launchScreenExpired"], true);
}

TEST(PlayStepsTest, DismissFromABackgroundThreadAsksTheDelegates) {
  const Lines trace = play(coverThen(R"({"do":"dismiss","by":"manager","thread":"background"})"));
  EXPECT_THAT(linesAfter(trace, "dismiss"),
              ElementsAre(R"("host":"canContentViewDisappear:","answer":true})"));
  EXPECT_EQ(lastInspection(trace)["manager"]["launchScreenExpired"], true);
}

TEST(PlayStepsTest, DismissByTheControllerAsksTheDelegates) {
  const Lines trace = play(coverThen(R"({"do":"dismiss","by":"controller"})"));
  EXPECT_THAT(linesAfter(trace, "dismiss"),
              ElementsAre(R"("host":"canContentViewDisappear:","answer":true})"));
  EXPECT_EQ(lastInspection(trace)["manager"]["launchScreenExpired"], false);
}

TEST(PlayStepsTest, DismissByTheContentDoesNotAskTheDelegates) {
  const Lines trace = play(coverThen(R"({"do":"dismiss","by":"content"})"));
  EXPECT_THAT(linesAfter(trace, "dismiss"), ElementsAre(R"("cover":"viewDidDisappear"})",
                                                        R"("host":"contentViewDidDisappear:"})"));
}

class DismissWithoutContentTest : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(By, DismissWithoutContentTest,
                         testing::Values("manager", "controller", "content"),
                         [](const testing::TestParamInfo<std::string>& testInfo) {
                           return testInfo.param;
                         });

TEST_P(DismissWithoutContentTest, DoesNothing) {
  const Lines trace = play(R"({"do":"deactivate"},{"do":"dismiss","by":")" + GetParam() + R"("})");
  EXPECT_THAT(linesAfter(trace, "dismiss"), IsEmpty());
}

TEST(PlayStepsTest, DeactivateReleasesTheContent) {
  EXPECT_EQ(lastInspection(play(R"({"do":"deactivate"})"))["manager"]["content"], false);
}

// The step "send" calls an operation of the manager or of the view controller.

TEST(PlayStepsTest, SendStepCanRecordTheAnalyticsEvent) {
  const Lines trace = play(coverThen(R"({"do":"send","operation":"sendAnalyticsEvent"})"), 0.5);
  EXPECT_THAT(trace, Contains(R"({"t":0.500000000,"event":"launch_end"})"));
}

TEST(PlayStepsTest, SendStepCanSubscribeTheManagerToNotificationsAgain) {
  // When the player window becomes key, the manager attempts the postponed dismissal once for each
  // subscription. Each attempt calls the host.
  const std::string postponedDismissalSteps =
      R"({"do":"request","parameters":{"mode":"skip","event":"e","max_duration_time":5}},)"
      R"({"do":"contentView"},{"do":"present","window":"player","mode":0},{"do":"resignKey"},)"
      R"({"do":"viewDelegate","operations":["canContentViewDisappear:"],"canDisappear":false},)"
      R"({"do":"dismiss","by":"manager"},)";
  const std::string makeKeyStep = R"({"do":"makeKey","window":"player"})";
  const std::string subscribeStep = R"({"do":"send","operation":"subscribeAppLifecycle"},)";
  EXPECT_EQ(linesOfKind(play(postponedDismissalSteps + makeKeyStep), "host").size(), 3U);
  EXPECT_EQ(linesOfKind(play(postponedDismissalSteps + subscribeStep + makeKeyStep), "host").size(),
            4U);
}

TEST(PlayStepsTest, SendStepCanStartPauseAndStopTheTimer) {
  const auto hasTimerAndTimeLeftAfter = [](const std::string& steps) {
    const json manager = lastInspection(play(
        R"({"do":"request","parameters":{"event":"e","max_duration_time":5}})" + steps))["manager"];
    return std::pair(manager["launchScreenExpirationTimer"].get<bool>(),
                     manager["launchScreenExpirationTimeLeft"].get<double>());
  };
  const std::string startStep = R"(,{"do":"send","operation":"startTimer"})";
  EXPECT_EQ(hasTimerAndTimeLeftAfter(""), std::pair(false, 5.0));
  EXPECT_EQ(hasTimerAndTimeLeftAfter(startStep), std::pair(true, 5.0));
  EXPECT_EQ(hasTimerAndTimeLeftAfter(startStep + R"(,{"do":"send","operation":"pauseTimer"})"),
            std::pair(false, 5.0));
  EXPECT_EQ(hasTimerAndTimeLeftAfter(startStep + R"(,{"do":"send","operation":"stopTimer"})"),
            std::pair(false, 0.0));
}

TEST(PlayStepsTest, SendStepCanCreateTheActivityIndicator) {
  EXPECT_EQ(lastInspection(play(kCoverSteps))["controller"]["activityIndicator"], false);
  EXPECT_EQ(lastInspection(play(coverThen(
                R"({"do":"send","operation":"createActivityIndicator"})")))["controller"]
                                                                           ["activityIndicator"],
            true);
}

TEST(PlayStepsTest, SendStepCanCreateTheConstraintsOfTheActivityIndicator) {
  class ConstraintCounter final : public PlayListener {
   public:
    void traceLineAdded(const TraceLine& /*line*/) override {}
    void stateReached(const PlayState& /*state*/) override {
      for (const Strong<NSView>& cover : NSApp->keyWindow()->contentView()->subviews()) {
        constraintCount = cover->constraints().size();
      }
    }
    std::size_t constraintCount = 0;
  };
  const std::string scenarioStart =
      R"({"steps":[)" + coverThen(R"({"do":"send","operation":"createActivityIndicator"})");
  const auto constraintCountAfter = [](const std::string& scenarioText) {
    const Scenario scenario = readScenario(scenarioText);
    ConstraintCounter counter;
    Player(scenario, counter).play();
    return counter.constraintCount;
  };
  EXPECT_EQ(constraintCountAfter(scenarioStart + "]}"), 0U);
  EXPECT_EQ(
      constraintCountAfter(scenarioStart +
                           R"(,{"do":"send","operation":"createConstraintsActivityIndicator"}]})"),
      4U);
}

// The steps "configure" and "replaceConfiguration"

TEST(PlayStepsTest, ConfigureSetsOnlyTheMembersThatTheStepHas) {
  const auto configurationAfter = [](const std::string& members) {
    return lastInspection(play(R"({"do":"configure","skipMode":true,"nextEventName":"e",)"
                               R"("expirationTimeInterval":1.5},{"do":"configure")" +
                               members + "}"))["configuration"];
  };
  EXPECT_EQ(configurationAfter(""),
            json::parse(R"({"viewController":false,"skipMode":true,)"
                        R"("nextEventName":"e","expirationTimeInterval":1.5})"));
  EXPECT_EQ(configurationAfter(R"(,"skipMode":false)")["skipMode"], false);
  EXPECT_EQ(configurationAfter(R"(,"nextEventName":null)")["nextEventName"], nullptr);
  EXPECT_EQ(configurationAfter(R"(,"nextEventName":"")")["nextEventName"], "");
  EXPECT_EQ(configurationAfter(R"(,"expirationTimeInterval":-2)")["expirationTimeInterval"], -2);
  for (const char* word : {"nan", "inf", "-inf"}) {
    EXPECT_EQ(configurationAfter(std::string(R"(,"expirationTimeInterval":")") + word +
                                 R"(")")["expirationTimeInterval"],
              word);
  }
  EXPECT_EQ(configurationAfter(R"(,"viewController":true)")["viewController"], true);
  EXPECT_EQ(
      configurationAfter(
          R"(,"viewController":true},{"do":"configure","viewController":false)")["viewController"],
      false);
}

TEST(PlayStepsTest, ConfigureSetsTheIntervalBeforeItMakesTheController) {
  const auto hasController = [](const std::string& interval) {
    return lastInspection(play(R"({"do":"configure","viewController":true,)"
                               R"("expirationTimeInterval":)" +
                               interval + "}"))["configuration"]["viewController"];
  };
  EXPECT_EQ(hasController("0.1"), true);
  EXPECT_EQ(hasController(R"("nan")"), true);
  EXPECT_EQ(hasController("0"), false) << "`LaunchScreenViewController::init` returns null";
}

TEST(PlayStepsTest, ConfiguredControllerIsPresented) {
  const Lines trace =
      play(R"({"do":"configure","expirationTimeInterval":5,"viewController":true},)" +
           std::string(kCoverSteps));
  EXPECT_THAT(linesOfKind(trace, "state"), IsEmpty());
  EXPECT_THAT(linesOfKind(trace, "host"), IsEmpty())
      << "the content is not a delegate of this controller";
  EXPECT_EQ(lastInspection(trace)["controller"]["window"], "player");
}

TEST(PlayStepsTest, ReplaceConfigurationSetsANewConfiguration) {
  EXPECT_EQ(lastInspection(play(
                R"({"do":"configure","skipMode":true,"nextEventName":"e",)"
                R"("expirationTimeInterval":1},{"do":"replaceConfiguration"})"))["configuration"],
            json::parse(R"({"viewController":false,"skipMode":false,"nextEventName":null,)"
                        R"("expirationTimeInterval":0})"));
}

// The view delegate

TEST(PlayStepsTest, ViewDelegateHasOnlyTheListedOperations) {
  const std::string steps = std::string(kCoverSteps) + R"(,{"do":"dismiss","by":"content"})";
  const auto hostCalls = [&steps](const std::string& delegate) {
    return linesOfKind(play(steps, 0, R"({"viewDelegate":)" + delegate + "}"), "host");
  };
  const std::string willAppear = R"("host":"contentViewWillAppear:"})";
  const std::string didDisappear = R"("host":"contentViewDidDisappear:"})";
  // Without a list, the delegate has all operations.
  EXPECT_THAT(hostCalls("{}"), ElementsAre(willAppear, didDisappear));
  EXPECT_THAT(hostCalls("null"), IsEmpty());
  EXPECT_THAT(hostCalls(R"({"operations":[]})"), IsEmpty());
  EXPECT_THAT(hostCalls(R"({"operations":["contentViewWillAppear:"]})"), ElementsAre(willAppear));
  EXPECT_THAT(hostCalls(R"({"operations":["contentViewDidDisappear:"]})"),
              ElementsAre(didDisappear));
}

TEST(PlayStepsTest, ViewDelegateReturnsTheMemberCanDisappear) {
  const std::string refusingDelegateStep =
      R"({"do":"viewDelegate","operations":["canContentViewDisappear:"],"canDisappear":false})";
  // In skip mode, the manager allows the dismissal. Only the view delegate refuses it.
  const std::string skipModeStep = R"(,{"do":"configure","skipMode":true},)";
  const Lines trace =
      play(coverThen(refusingDelegateStep + skipModeStep + R"({"do":"dismiss","by":"manager"})"));
  EXPECT_THAT(linesAfter(trace, "dismiss"),
              ElementsAre(R"("host":"canContentViewDisappear:","answer":false})"));
  EXPECT_EQ(lastInspection(trace)["controller"]["window"], "player");
}

TEST(PlayStepsTest, ViewDelegateCanBeRemovedAndSetAgain) {
  const std::string dismissStep = R"(,{"do":"dismiss","by":"content"})";
  EXPECT_THAT(
      linesAfter(play(coverThen(R"({"do":"viewDelegate","operations":null})" + dismissStep)),
                 "dismiss"),
      Not(Contains(testing::HasSubstr("host"))));
  EXPECT_THAT(linesAfter(play(coverThen(R"({"do":"viewDelegate","operations":null},)"
                                        R"({"do":"viewDelegate"})" +
                                        dismissStep)),
                         "dismiss"),
              Contains(R"("host":"contentViewDidDisappear:"})"));
}

class DeactivationDuringCallbackTest : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(Operations, DeactivationDuringCallbackTest,
                         testing::Values("contentViewWillAppear:", "canContentViewDisappear:",
                                         "contentViewDidDisappear:"),
                         [](const testing::TestParamInfo<std::string>& testInfo) {
                           return testInfo.param.substr(0, testInfo.param.size() - 1);
                         });

TEST_P(DeactivationDuringCallbackTest, StopsThePlayWithAFatalError) {
  const PlayResult result = playScenario(
      std::string(R"({"host":{"viewDelegate":{"deactivateDuring":")") + GetParam() +
      R"("}},"steps":[{"do":"request","parameters":{"mode":"skip","event":"e","max_duration_time":5}},)"
      R"({"do":"contentView"},{"do":"present","window":"player","mode":0},)"
      R"({"at":1,"do":"dismiss","by":"manager","thread":"background"}]})");
  EXPECT_EQ(result.outcome, PlayOutcome::CollectionMutated);
  EXPECT_THAT(result.lines.back(),
              testing::EndsWith(R"("fatal":"collection mutated while being enumerated"})"));
  EXPECT_THAT(result.lines[result.lines.size() - 2],
              testing::HasSubstr(std::string(R"("host":")") + GetParam()));
}

// Windows

TEST(PlayStepsTest, OpenedWindowIsInFrontButNotKey) {
  const json application =
      lastInspection(play(R"({"do":"openWindow","name":"tools","styleMask":9})"))["application"];
  EXPECT_EQ(application, json::parse(R"({"keyWindow":"player","mainWindow":"player",)"
                                     R"("orderedWindows":["tools","player"],"modalWindow":null,)"
                                     R"("styleMasks":{"player":15,"tools":9}})"));
}

TEST(PlayStepsTest, WindowsOfTheHostOpenInOrderAndTheFirstIsKey) {
  const Lines trace = play("", 0, R"({"windows":[{"name":"a"},{"name":"b"},{"name":"c"}]})");
  EXPECT_EQ(trace.size(), 1U) << "opening the windows is not traced";
  const json application = lastInspection(trace)["application"];
  EXPECT_EQ(application["keyWindow"], "a");
  EXPECT_EQ(application["orderedWindows"], json::parse(R"(["c","b","a"])"));
}

TEST(PlayStepsTest, OpenWindowSetsTheClassAndTheParent) {
  // The default class of a window in a scenario is PlayerWindow. The countdown of a modal launch
  // screen continues if the key window or its parent is a PlayerWindow.
  const auto keyWindowPausesCountdown = [](const std::string& windowMembers) {
    return lastInspection(
        play(R"({"do":"openWindow","name":"other")" + windowMembers +
                 R"(},{"do":"request","parameters":{"event":"e","max_duration_time":5}},)"
                 R"({"do":"contentView"},{"do":"present","window":"player","mode":2},)"
                 R"({"do":"makeKey","window":"other"})",
             0))["manager"]["appIsUnfocused"];
  };
  EXPECT_EQ(keyWindowPausesCountdown(""), false);
  EXPECT_EQ(keyWindowPausesCountdown(R"(,"className":"ToolWindow")"), true);
  EXPECT_EQ(keyWindowPausesCountdown(R"(,"className":"ToolWindow","parent":"player")"), false);
}

TEST(PlayStepsTest, HostWindowCanHaveAContentViewController) {
  // The second request makes a temporary content only if the launch screen's controller is a child
  // of the window's content view controller.
  const std::string steps =
      coverThen(R"({"do":"request","parameters":{"event":"e","max_duration_time":5}})");
  EXPECT_EQ(lastInspection(play(steps))["manager"]["tempContent"], false);
  EXPECT_EQ(lastInspection(play(steps, 0, kHostWithController))["manager"]["tempContent"], true);
}

TEST(PlayStepsTest, CloseWindowClosesTheWindow) {
  const Lines trace =
      play(R"({"do":"openWindow","name":"b"},{"do":"closeWindow","window":"player"},)"
           R"({"do":"closeWindow","window":"player"})");
  EXPECT_THAT(linesOfKind(trace, "becomeKey"), ElementsAre(R"("becomeKey":"b"})"));
  EXPECT_EQ(lastInspection(trace)["application"]["orderedWindows"], json::parse(R"(["b"])"));
}

TEST(PlayStepsTest, StepsMayReferToTheWindowThatAPresentationOpens) {
  const std::string makeKeySteps =
      R"({"do":"request","parameters":{"event":"e","max_duration_time":5}},{"do":"contentView"},)"
      R"({"do":"present","window":"player","mode":2},{"do":"makeKey","window":"player"},)"
      R"({"do":"makeKey","window":"modal-1"})";
  EXPECT_THAT(linesAfter(play(makeKeySteps), "makeKey"), Contains(R"("becomeKey":"modal-1"})"));
  const std::string closeSteps = makeKeySteps + R"(,{"do":"closeWindow","window":"modal-1"},)";
  const Lines trace = play(closeSteps + R"({"do":"present","window":"player","mode":2})");
  EXPECT_THAT(linesAfter(trace, "closeWindow"), Contains(R"("window":"modal-1","is":"closed"})"));
  EXPECT_THAT(linesAfter(trace, "present"), Contains(R"("window":"modal-2","is":"opened"})"));
  const Lines makeKeyTrace = play(closeSteps + R"({"do":"makeKey","window":"modal-1"})");
  EXPECT_THAT(linesAfter(makeKeyTrace, "makeKey"), IsEmpty());
}

TEST(PlayStepsTest, MakeKeyMakesAnOpenWindowKeyAndIgnoresAClosedWindow) {
  EXPECT_THAT(linesAfter(play(R"({"do":"openWindow","name":"b"},{"do":"makeKey","window":"b"})"),
                         "makeKey"),
              ElementsAre(R"("resignKey":"player"})", R"("becomeKey":"b"})"));
  EXPECT_THAT(linesAfter(play(R"({"do":"openWindow","name":"b"},{"do":"closeWindow","window":"b"},)"
                              R"({"do":"makeKey","window":"b"})"),
                         "makeKey"),
              IsEmpty());
}

TEST(PlayStepsTest, MiniaturizeAndDeminiaturizeChangeTheWindowsOnScreen) {
  const std::string miniaturizeSteps =
      R"({"do":"openWindow","name":"b"},{"do":"miniaturize","window":"player"})";
  const Lines miniaturizedTrace = play(miniaturizeSteps);
  EXPECT_THAT(linesAfter(miniaturizedTrace, "miniaturize"),
              ElementsAre(R"("resignKey":"player"})", R"("becomeKey":"b"})"));
  EXPECT_EQ(lastInspection(miniaturizedTrace)["application"]["orderedWindows"],
            json::parse(R"(["b"])"));
  const Lines deminiaturizedTrace =
      play(miniaturizeSteps + R"(,{"do":"deminiaturize","window":"player"})");
  EXPECT_THAT(linesAfter(deminiaturizedTrace, "deminiaturize"), IsEmpty());
  EXPECT_EQ(lastInspection(deminiaturizedTrace)["application"]["orderedWindows"],
            json::parse(R"(["player","b"])"));
  EXPECT_EQ(lastInspection(deminiaturizedTrace)["application"]["keyWindow"], "b");
}

// The application

TEST(PlayStepsTest, ResignKeyLeavesNoKeyWindow) {
  const Lines trace = play(R"({"do":"resignKey"})");
  EXPECT_THAT(linesAfter(trace, "resignKey"), ElementsAre(R"("resignKey":"player"})"));
  EXPECT_EQ(lastInspection(trace)["application"]["keyWindow"], nullptr);
  EXPECT_EQ(lastInspection(trace)["application"]["mainWindow"], "player");
}

TEST(PlayStepsTest, ActivateAppRestoresTheKeyWindow) {
  const Lines trace = play(R"({"do":"deactivateApp"},{"do":"deactivateApp"},{"do":"activateApp"})");
  EXPECT_THAT(linesOfKind(trace, "resignKey"), ElementsAre(R"("resignKey":"player"})"));
  EXPECT_THAT(linesAfter(trace, "activateApp"), ElementsAre(R"("becomeKey":"player"})"));
}

TEST(PlayStepsTest, StopModalEndsTheModalSession) {
  const std::string modalSteps =
      R"({"do":"request","parameters":{"event":"e","max_duration_time":5}},)"
      R"({"do":"present","window":"player","mode":2})";
  EXPECT_EQ(lastInspection(play(modalSteps))["application"]["modalWindow"], "modal-1");
  EXPECT_EQ(
      lastInspection(play(modalSteps + R"(,{"do":"stopModal"})"))["application"]["modalWindow"],
      nullptr);
  EXPECT_THAT(linesAfter(play(R"({"do":"stopModal"})"), "stopModal"), IsEmpty());
}

// The step "presentOver" opens a sheet over the launch screen. The step "dismissOver" closes
// the newest open sheet.

TEST(PlayStepsTest, PresentOverStepOpensASheetAndDismissOverStepClosesTheNewest) {
  const std::string presentSteps = coverThen(R"({"do":"presentOver"})");
  const Lines presentedTrace = play(presentSteps);
  EXPECT_THAT(linesAfter(presentedTrace, "presentOver"),
              ElementsAre(R"("window":"sheet-1","is":"opened"})", R"("resignKey":"player"})",
                          R"("becomeKey":"sheet-1"})"));
  EXPECT_EQ(lastInspection(presentedTrace)["controller"]["presented"], 1);
  const Lines dismissedTrace = play(presentSteps + R"(,{"do":"presentOver"},{"do":"dismissOver"})");
  EXPECT_THAT(linesAfter(dismissedTrace, "dismissOver"),
              Contains(R"("window":"sheet-2","is":"closed"})"));
  EXPECT_EQ(lastInspection(dismissedTrace)["controller"]["presented"], 1);
}

TEST(PlayStepsTest, DismissOverStepSkipsClosedSheets) {
  const Lines trace = play(coverThen(
      R"({"do":"presentOver"},{"do":"presentOver"},{"do":"closeWindow","window":"sheet-2"},)"
      R"({"do":"dismissOver"})"));
  EXPECT_THAT(linesAfter(trace, "dismissOver"), Contains(R"("window":"sheet-1","is":"closed"})"));
  // Without a launch screen, `presentOver` opens no sheet.
  EXPECT_THAT(linesAfter(play(R"({"do":"presentOver"},{"do":"dismissOver"})"), "dismissOver"),
              IsEmpty());
}

TEST(PlayStepsTest, EventTrackingModePausesTheCountdown) {
  const std::string trackingSteps =
      coverThen(R"({"at":1,"do":"runLoopMode","mode":"eventTracking"})");
  EXPECT_EQ(linesOfKind(play(trackingSteps, 2), "tick").size(), 10U);
  EXPECT_EQ(
      linesOfKind(play(trackingSteps + R"(,{"at":1.5,"do":"runLoopMode","mode":"default"})", 2),
                  "tick")
          .size(),
      16U);  // 10 ticks until 1 s, and 6 ticks from 1.5 s to 2 s
}

TEST(PlayStepsTest, ModalSessionDoesNotEndTheEventTrackingMode) {
  const std::string steps =
      R"({"do":"runLoopMode","mode":"eventTracking"},)"
      R"({"do":"request","parameters":{"event":"e","max_duration_time":5}},{"do":"contentView"},)"
      R"({"do":"present","window":"player","mode":2})";
  EXPECT_THAT(linesOfKind(play(steps, 2), "tick"), IsEmpty());
}

TEST(PlayStepsTest, InspectChangesNothing) {
  const Lines trace = play(R"({"do":"inspect"},{"do":"inspect"})");
  ASSERT_EQ(trace.size(), 5U);
  EXPECT_EQ(trace[1], trace[3]);
  EXPECT_EQ(trace[1], trace[4]);
}

// Time

TEST(PlayStepsTest, StepRunsAfterTheWorkThatIsDueAtTheSameTime) {
  const Lines trace = play(coverThen(R"({"at":0.1,"do":"resignKey"})"));
  EXPECT_THAT(linesAfter(trace, "present"), Contains(R"("tick":4.9})"));
}

TEST(PlayStepsTest, WorkThatAStepQueuesRunsBeforeTheNextStep) {
  const Lines trace = play(
      R"({"do":"request","parameters":{"event":"e","max_duration_time":5},"thread":"background"},)"
      R"({"do":"contentView"})");
  EXPECT_THAT(linesAfter(trace, "request"), Contains(R"("state":3,"content":"main"})"));
  // The controller has the content as its first delegate. If the content is loaded, `contentView`
  // adds the manager as the second delegate.
  EXPECT_EQ(lastInspection(trace)["controller"]["delegates"], 2);
}

TEST(PlayStepsTest, StepWithoutTimeHasTheTimeOfThePreviousStep) {
  const Lines trace = play(R"({"do":"resignKey"},{"at":1.25,"do":"inspect"},{"do":"resignKey"})");
  EXPECT_THAT(trace, Contains(R"({"t":0.000000000,"do":"resignKey"})"));
  EXPECT_THAT(trace, Contains(R"({"t":1.250000000,"do":"resignKey"})"));
}

TEST(PlayStepsTest, PlayEndsAtItsEndTimeButNotBeforeItsLastStep) {
  EXPECT_THAT(play(R"({"at":2,"do":"inspect"})", 1).back(),
              testing::StartsWith(R"({"t":2.000000000,"inspect":)"));
  EXPECT_THAT(play(R"({"at":2,"do":"inspect"})", 1'000'000).back(),
              testing::StartsWith(R"({"t":1000000.000000000,"inspect":)"));
}

TEST(PlayStepsTest, ContentHasItsErrorUntilTheNextPassOfTheRunLoop) {
  const std::string failingRequest =
      R"({"do":"request","parameters":{"event":"e","max_duration_time":-1}})";
  EXPECT_EQ(lastInspection(play(failingRequest))["content"]["error"],
            json::parse(R"({"domain":"LaunchScreen view controller is NIL","code":404})"));
  EXPECT_EQ(lastInspection(play(failingRequest, 1))["content"]["error"], nullptr);
}

}  // namespace
}  // namespace vel::host
