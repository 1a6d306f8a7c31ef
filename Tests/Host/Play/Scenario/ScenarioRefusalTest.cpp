// Tests the errors for invalid scenarios. A scenario is the JSON document that `launchscreen play`
// plays.
#include <gmock/gmock.h>

#include <string>

#include "Host/Play/Scenario/ScenarioReader.h"

namespace vel::host {
namespace {

std::string errorFor(std::string_view text) {
  try {
    static_cast<void>(readScenario(text));
  } catch (const ScenarioError& error) {
    return error.what();
  }
  return "accepted";
}

struct Refusal {
  const char* testName;
  const char* scenario;
  const char* expectedError;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.testName; }

class ScenarioRefusalTest : public testing::TestWithParam<Refusal> {};

TEST_P(ScenarioRefusalTest, ErrorNamesTheInvalidMemberAndWhatIsExpected) {
  EXPECT_EQ(errorFor(GetParam().scenario), GetParam().expectedError);
}

constexpr const char* kExpectedDelegateOperation =
    R"(one of "contentViewWillAppear:", "canContentViewDisappear:", "contentViewDidDisappear:")";

std::string testNameOf(const testing::TestParamInfo<Refusal>& testInfo) {
  return testInfo.param.testName;
}

INSTANTIATE_TEST_SUITE_P(
    NotJson, ScenarioRefusalTest,
    testing::Values(
        Refusal{"EmptyText", "",
                R"("" (the document): expected well-formed JSON in UTF-8 at line 1, column 1)"},
        Refusal{"OnlyWhiteSpace", " \n ",
                R"("" (the document): expected well-formed JSON in UTF-8 at line 2, column 2)"},
        Refusal{"Words", "play it",
                R"("" (the document): expected well-formed JSON in UTF-8 at line 1, column 1)"},
        Refusal{"Truncated", "{\"steps\":[\n  {\"at\":1",
                "/steps/0: expected well-formed JSON in UTF-8 at line 2, column 10"},
        Refusal{"TruncatedAfterAMemberName",
                "{\"until\":", "/until: expected well-formed JSON in UTF-8 at line 1, column 10"},
        Refusal{"Comment", "{} // all",
                R"("" (the document): expected well-formed JSON in UTF-8 at line 1, column 4)"},
        Refusal{"SecondDocument", "{}{}",
                R"("" (the document): expected well-formed JSON in UTF-8 at line 1, column 3)"},
        Refusal{"InvalidUtf8", "{\"steps\":[{\"do\":\"\xc3(\"}]}",
                "/steps/0/do: expected well-formed JSON in UTF-8 at line 1, column 19"},
        Refusal{"NumberTooLargeForADouble", R"({"until":1e999})",
                "/until: expected a number within the range of a double"},
        Refusal{"DuplicateMember", R"({"steps":[{"at":1,"do":"inspect","at":2}]})",
                "/steps/0/at: expected each member only once in an object"}),
    testNameOf);

INSTANTIATE_TEST_SUITE_P(
    Document, ScenarioRefusalTest,
    testing::Values(
        Refusal{"Array", "[]", R"("" (the document): expected an object)"},
        Refusal{"Number", "7", R"("" (the document): expected an object)"},
        Refusal{"UnknownMember", R"({"actors":[]})",
                R"(/actors: expected a known member: one of "host", "steps", "until")"},
        Refusal{"MemberNameIsEscapedInTheJsonPointer", R"({"a/b~c":1})",
                R"(/a~1b~0c: expected a known member: one of "host", "steps", "until")"},
        Refusal{"MemberNameContainsALineFeed", R"({"a\nb":1})",
                R"(/a\u000ab: expected a known member: one of "host", "steps", "until")"},
        Refusal{"StepsAreNotAnArray", R"({"steps":{}})", "/steps: expected an array of steps"},
        Refusal{"StepIsNotAnObject", R"({"steps":["activate"]})", "/steps/0: expected a step"},
        Refusal{"UntilIsNotANumber", R"({"until":"late"})", "/until: expected a number"},
        Refusal{"UntilIsNegative", R"({"until":-1})",
                "/until: expected a number of seconds from 0 to 1000000"},
        Refusal{"UntilIsTooLarge", R"({"until":1000000.5})",
                "/until: expected a number of seconds from 0 to 1000000"}),
    testNameOf);

INSTANTIATE_TEST_SUITE_P(
    Host, ScenarioRefusalTest,
    testing::Values(
        Refusal{"IsNotAnObject", R"({"host":null})",
                "/host: expected an object that describes the host"},
        Refusal{"UnknownMember", R"({"host":{"name":"game"}})",
                R"(/host/name: expected a known member: one of "windows", )"
                R"("resolverDelegate", "viewDelegate", "osVersion")"},
        Refusal{"WindowsAreNotAnArray", R"({"host":{"windows":{}}})",
                "/host/windows: expected an array of windows"},
        Refusal{"WindowIsNotAnObject", R"({"host":{"windows":["player"]}})",
                "/host/windows/0: expected a window"},
        Refusal{"WindowWithoutName", R"({"host":{"windows":[{}]}})",
                "/host/windows/0/name: expected the window's name, which is missing"},
        Refusal{"WindowNameIsNotAString", R"({"host":{"windows":[{"name":1}]}})",
                "/host/windows/0/name: expected the window's name"},
        Refusal{"DuplicateWindowName", R"({"host":{"windows":[{"name":"a"},{"name":"a"}]}})",
                "/host/windows/1/name: expected a name that no earlier window has"},
        Refusal{"WindowNamedLikeAModalWindow", R"({"host":{"windows":[{"name":"modal-1"}]}})",
                "/host/windows/0/name: expected a name that is not reserved for presentations"},
        Refusal{"WindowNamedLikeASheet",
                R"({"host":{"windows":[{"name":"sheet-99999999999999999999"}]}})",
                "/host/windows/0/name: expected a name that is not reserved for presentations"},
        Refusal{"WindowWithAnUnknownMember", R"({"host":{"windows":[{"name":"a","title":"A"}]}})",
                R"(/host/windows/0/title: expected a known member: one of "name", )"
                R"("className", "styleMask", "frame", "contentViewController", "parent")"},
        Refusal{"ClassNameIsNotAString", R"({"host":{"windows":[{"name":"a","className":null}]}})",
                "/host/windows/0/className: expected a string"},
        Refusal{"StyleMaskNegative", R"({"host":{"windows":[{"name":"a","styleMask":-1}]}})",
                "/host/windows/0/styleMask: expected an integer from 0 to 18446744073709551615"},
        Refusal{"StyleMaskTooLarge",
                R"({"host":{"windows":[{"name":"a","styleMask":18446744073709551616}]}})",
                "/host/windows/0/styleMask: expected an integer from 0 to 18446744073709551615"},
        Refusal{"StyleMaskIsNotAnInteger", R"({"host":{"windows":[{"name":"a","styleMask":1.5}]}})",
                "/host/windows/0/styleMask: expected an integer from 0 to 18446744073709551615"},
        Refusal{"FrameOfThreeNumbers", R"({"host":{"windows":[{"name":"a","frame":[0,0,1]}]}})",
                "/host/windows/0/frame: expected four numbers: x, y, width and height"},
        Refusal{"FrameIsNotAnArray", R"({"host":{"windows":[{"name":"a","frame":"big"}]}})",
                "/host/windows/0/frame: expected four numbers: x, y, width and height"},
        Refusal{"FrameContainsAText", R"({"host":{"windows":[{"name":"a","frame":[0,0,"1",1]}]}})",
                "/host/windows/0/frame/2: expected a number"},
        Refusal{"ContentViewControllerIsNotAString",
                R"({"host":{"windows":[{"name":"a","contentViewController":true}]}})",
                "/host/windows/0/contentViewController: expected a string or null"},
        Refusal{"ParentIsALaterWindow",
                R"({"host":{"windows":[{"name":"a","parent":"b"},{"name":"b"}]}})",
                "/host/windows/0/parent: expected the name of an earlier window, or null"},
        Refusal{"ParentIsTheWindowItself", R"({"host":{"windows":[{"name":"a","parent":"a"}]}})",
                "/host/windows/0/parent: expected the name of an earlier window, or null"},
        Refusal{"ResolverDelegateUnknown", R"({"host":{"resolverDelegate":"yes"}})",
                R"(/host/resolverDelegate: expected one of "conforming", "undeclared")"},
        Refusal{"OsVersionOfTwoNumbers", R"({"host":{"osVersion":[10,14]}})",
                "/host/osVersion: expected three integers: major, minor and patch version"},
        Refusal{"OsVersionIsNotAnInteger", R"({"host":{"osVersion":[10,14.5,0]}})",
                "/host/osVersion/1: expected an integer from 0 to 9223372036854775807"}),
    testNameOf);

TEST(ScenarioReaderTest, InvalidViewDelegateIsRefused) {
  EXPECT_EQ(errorFor(R"({"host":{"viewDelegate":true}})"),
            "/host/viewDelegate: expected a view delegate, or null");
  EXPECT_EQ(errorFor(R"({"host":{"viewDelegate":{"operations":null}}})"),
            "/host/viewDelegate/operations: expected an array of operations");
  EXPECT_EQ(errorFor(R"({"host":{"viewDelegate":{"operations":["close"]}}})"),
            std::string("/host/viewDelegate/operations/0: expected ") + kExpectedDelegateOperation);
  EXPECT_EQ(errorFor(R"({"host":{"viewDelegate":{"canDisappear":1}}})"),
            "/host/viewDelegate/canDisappear: expected true or false");
  EXPECT_EQ(
      errorFor(R"({"host":{"viewDelegate":{"deactivateDuring":"close"}}})"),
      std::string("/host/viewDelegate/deactivateDuring: expected ") + kExpectedDelegateOperation);
  EXPECT_EQ(errorFor(R"({"host":{"viewDelegate":{"operations":["contentViewWillAppear:"],)"
                     R"("deactivateDuring":"contentViewDidDisappear:"}}})"),
            "/host/viewDelegate/deactivateDuring: expected one of the delegate's operations");
  EXPECT_EQ(errorFor(R"({"host":{"viewDelegate":{"mood":1}}})"),
            "/host/viewDelegate/mood: expected a known member: one of "
            R"("operations", "canDisappear", "deactivateDuring")");
}

// In these tests, `Refusal::scenario` is only the content of the array "steps".
class StepRefusalTest : public testing::TestWithParam<Refusal> {};

TEST_P(StepRefusalTest, ErrorNamesTheInvalidMemberAndWhatIsExpected) {
  EXPECT_EQ(errorFor("{\"steps\":[" + std::string(GetParam().scenario) + "]}"),
            GetParam().expectedError);
}

INSTANTIATE_TEST_SUITE_P(
    Time, StepRefusalTest,
    testing::Values(Refusal{"Negative", R"({"at":-0.1,"do":"inspect"})",
                            "/steps/0/at: expected a number of seconds from 0 to 1000000"},
                    Refusal{"EarlierThanThePreviousStep",
                            R"({"at":1.5,"do":"inspect"},{"do":"inspect"},{"at":1,"do":"inspect"})",
                            "/steps/2/at: expected a number of seconds from 1.5 to 1000000"},
                    Refusal{"TooLate", R"({"at":1000001,"do":"inspect"})",
                            "/steps/0/at: expected a number of seconds from 0 to 1000000"},
                    Refusal{"IsNotANumber", R"({"at":null,"do":"inspect"})",
                            "/steps/0/at: expected a number"}),
    testNameOf);

INSTANTIATE_TEST_SUITE_P(
    Members, StepRefusalTest,
    testing::Values(
        Refusal{"UnknownMember", R"({"do":"inspect","deep":true})",
                R"(/steps/0/deep: expected a known member: one of "at", "do")"},
        Refusal{"BrokerIsNotABoolean", R"({"do":"activate","broker":null})",
                "/steps/0/broker: expected true or false"},
        Refusal{"ParametersAreNotAnObject", R"({"do":"request","parameters":[]})",
                "/steps/0/parameters: expected an object with the request's parameters, or null"},
        Refusal{"ThreadUnknown", R"({"do":"request","thread":"main"})",
                R"(/steps/0/thread: expected "background")"},
        Refusal{"DismissByTheContentTakesNoThread",
                R"({"do":"dismiss","by":"content","thread":"background"})",
                R"(/steps/0/thread: expected a known member: one of "at", "do", "by")"},
        Refusal{"DeactivateTakesNoThread", R"({"do":"deactivate","thread":"background"})",
                R"(/steps/0/thread: expected a known member: one of "at", "do")"},
        Refusal{"ContentUnknown", R"({"do":"contentView","content":"other"})",
                R"(/steps/0/content: expected one of "main", "temporary")"},
        Refusal{
            "PresentWithoutWindow", R"({"do":"present","mode":0})",
            "/steps/0/window: expected the name of an earlier window, or null, which is missing"},
        Refusal{
            "PresentWithoutMode", R"({"do":"present","window":null})",
            "/steps/0/mode: expected an integer from -2147483648 to 2147483647, which is missing"},
        Refusal{"ModeTooLarge", R"({"do":"present","window":null,"mode":2147483648})",
                "/steps/0/mode: expected an integer from -2147483648 to 2147483647"},
        Refusal{"ModeTooSmall", R"({"do":"present","window":null,"mode":-2147483649})",
                "/steps/0/mode: expected an integer from -2147483648 to 2147483647"},
        Refusal{"ModeTooLargeForASigned64BitInteger",
                R"({"do":"present","window":null,"mode":18446744073709551615})",
                "/steps/0/mode: expected an integer from -2147483648 to 2147483647"},
        Refusal{"ModeIsNotAnInteger", R"({"do":"present","window":null,"mode":0.5})",
                "/steps/0/mode: expected an integer from -2147483648 to 2147483647"},
        Refusal{
            "DismissWithoutBy", R"({"do":"dismiss"})",
            R"(/steps/0/by: expected one of "manager", "controller", "content", which is missing)"},
        Refusal{
            "SendWithoutOperation", R"({"do":"send"})",
            R"(/steps/0/operation: expected one of "sendAnalyticsEvent", "subscribeAppLifecycle", )"
            R"("startTimer", "pauseTimer", "stopTimer", "createActivityIndicator", )"
            R"("createConstraintsActivityIndicator", which is missing)"},
        Refusal{"SkipModeIsNotABoolean", R"({"do":"configure","skipMode":0})",
                "/steps/0/skipMode: expected true or false"},
        Refusal{"NextEventNameIsNotAString", R"({"do":"configure","nextEventName":1})",
                "/steps/0/nextEventName: expected a string or null"},
        Refusal{"IntervalIsAnUnknownString", R"({"do":"configure","expirationTimeInterval":"NaN"})",
                R"(/steps/0/expirationTimeInterval: expected a number, "nan", "inf" or "-inf")"},
        Refusal{"ViewControllerIsNotABoolean", R"({"do":"configure","viewController":null})",
                "/steps/0/viewController: expected true or false"},
        Refusal{
            "DeactivateDuringWithoutOperations",
            R"({"do":"viewDelegate","operations":null,"deactivateDuring":"contentViewWillAppear:"})",
            "/steps/0/deactivateDuring: expected one of the delegate's operations"},
        Refusal{"OpenWindowWithoutName", R"({"do":"openWindow"})",
                "/steps/0/name: expected the window's name, which is missing"},
        Refusal{"OpenWindowWithADuplicateName", R"({"do":"openWindow","name":"player"})",
                "/steps/0/name: expected a name that no earlier window has"},
        Refusal{"CloseWindowWithoutWindow", R"({"do":"closeWindow"})",
                "/steps/0/window: expected the name of an earlier window, which is missing"},
        Refusal{"MakeKeyWithoutWindow", R"({"do":"makeKey","window":null})",
                "/steps/0/window: expected the name of an earlier window"},
        Refusal{"RunLoopModeMissing", R"({"do":"runLoopMode"})",
                R"(/steps/0/mode: expected one of "default", "eventTracking", which is missing)"},
        Refusal{"RunLoopModeUnknown", R"({"do":"runLoopMode","mode":"modalPanel"})",
                R"(/steps/0/mode: expected one of "default", "eventTracking")"}),
    testNameOf);

INSTANTIATE_TEST_SUITE_P(
    WindowNames, StepRefusalTest,
    // The first presentation in mode 1 opens the window "sheet-1". The first presentation in mode 2
    // opens the window "modal-1". Mode 0 opens no window.
    testing::Values(
        Refusal{"Unknown", R"({"do":"miniaturize","window":"Player"})",
                "/steps/0/window: expected the name of an earlier window"},
        Refusal{"OpenedLater", R"({"do":"makeKey","window":"b"},{"do":"openWindow","name":"b"})",
                "/steps/0/window: expected the name of an earlier window"},
        Refusal{
            "ModalWindowThatNoEarlierStepOpens",
            R"({"do":"present","window":"player","mode":2},{"do":"makeKey","window":"modal-2"})",
            "/steps/1/window: expected the name of an earlier window"},
        Refusal{
            "SheetThatNoEarlierStepOpens",
            R"({"do":"present","window":"player","mode":0},{"do":"makeKey","window":"sheet-1"})",
            "/steps/1/window: expected the name of an earlier window"},
        Refusal{
            "SheetNumberZero",
            R"({"do":"present","window":"player","mode":1},{"do":"makeKey","window":"sheet-0"})",
            "/steps/1/window: expected the name of an earlier window"}),
    testNameOf);

TEST(ScenarioReaderTest, ErrorForAnUnknownOrMissingStepNameListsTheNames) {
  const std::string error = errorFor(R"({"steps":[{"do":"dance"}]})");
  EXPECT_THAT(error,
              testing::StartsWith(R"(/steps/0/do: expected one of "activate", "request", )"));
  EXPECT_THAT(error, testing::EndsWith(R"("runLoopMode", "inspect")"));
  EXPECT_THAT(errorFor(R"({"steps":[{}]})"), testing::EndsWith(R"("inspect", which is missing)"));
}

TEST(ScenarioReaderTest, NestingDeeperThan64IsRefused) {
  const auto documentOfDepth = [](std::size_t depth) {
    // The document, "steps", the step and "parameters" are the first four levels.
    const std::size_t arrayDepth = depth - 4;
    return R"({"steps":[{"do":"request","parameters":{"a":)" + std::string(arrayDepth, '[') +
           std::string(arrayDepth, ']') + "}}]}";
  };
  EXPECT_EQ(errorFor(documentOfDepth(64)), "accepted");
  EXPECT_THAT(errorFor(documentOfDepth(65)), testing::StartsWith("/steps/0/parameters/a/0/0/"));
  EXPECT_THAT(errorFor(std::string(100'000, '[')),
              testing::EndsWith(": expected at most 64 levels of nested objects and arrays"));
}

TEST(ScenarioReaderTest, OptionalMembersMayBeMissingOrNull) {
  EXPECT_EQ(errorFor("{}"), "accepted");
  EXPECT_EQ(errorFor(R"({"host":{"windows":[],"resolverDelegate":null,"viewDelegate":null}})"),
            "accepted");
  EXPECT_EQ(errorFor(R"({"host":{"windows":[{"name":"a"},{"name":"b","parent":"a"}]}})"),
            "accepted");
  EXPECT_EQ(errorFor(R"({"steps":[{"do":"configure"},{"do":"viewDelegate"}],"until":1000000})"),
            "accepted");
}

TEST(ScenarioReaderTest, ByteOrderMarkIsAllowed) {
  EXPECT_EQ(errorFor("\xef\xbb\xbf{}"), "accepted");
}

TEST(ScenarioReaderTest, StepsCanUseTheWindowsOfEarlierPresentations) {
  // Mode 2 opens a modal window, and mode -1 opens a sheet.
  EXPECT_EQ(errorFor(R"({"steps":[{"do":"present","window":null,"mode":2},)"
                     R"({"do":"present","window":"modal-1","mode":-1},)"
                     R"({"do":"openWindow","name":"b","parent":"sheet-1"},{"do":"presentOver"},)"
                     R"({"do":"makeKey","window":"sheet-2"}]})"),
            "accepted");
}

}  // namespace
}  // namespace vel::host
