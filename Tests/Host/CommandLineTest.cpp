#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "Host/CommandLine.h"

namespace vel::host {
namespace {

using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

struct Result {
  int status = 0;
  std::string output;
  std::string errors;
};

Result run(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "launchscreen");
  CaptureStdout();
  CaptureStderr();
  const int status = runCommandLine(static_cast<int>(arguments.size()), arguments.data());
  return {status, GetCapturedStdout(), GetCapturedStderr()};
}

TEST(CommandLineTest, HelpNamesTheCommands) {
  const Result result = run({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("\n  show "));
  EXPECT_THAT(result.output, HasSubstr("\n  play "));
  EXPECT_EQ(result.errors, "");
}

TEST(CommandLineTest, ShowHelpListsTheOptionsOfShow) {
  const Result result = run({"show", "--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("--duration SECONDS=5 "));
  EXPECT_EQ(result.errors, "");
}

TEST(CommandLineTest, VersionOptionWorksWithAndWithoutACommand) {
  for (const Result& result : {run({"--version"}), run({"show", "--version"})}) {
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, testing::MatchesRegex("launchscreen [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_EQ(result.errors, "");
  }
}

struct BadUsage {
  const char* testName;
  std::vector<const char*> arguments;
  const char* messagePart;

  friend void PrintTo(const BadUsage& usage, std::ostream* out) { *out << usage.testName; }
};

class BadUsageTest : public testing::TestWithParam<BadUsage> {};

TEST_P(BadUsageTest, IsReportedInOneLine) {
  const Result result = run(GetParam().arguments);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, testing::StartsWith("launchscreen: "));
  EXPECT_THAT(result.errors, HasSubstr(GetParam().messagePart));
  EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
  EXPECT_TRUE(result.errors.ends_with('\n'));
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, BadUsageTest,
    testing::Values(
        BadUsage{"NoCommand", {}, "a command is missing"},
        BadUsage{"UnknownCommand", {"dance"}, "dance"},
        BadUsage{"UnknownOption", {"show", "--bogus"}, "--bogus"},
        BadUsage{"UnknownOptionWithALineBreak", {"show", "--bo\ngus"}, "--bo gus"},
        BadUsage{"UnexpectedOperand", {"show", "now"}, "now"},
        BadUsage{"OptionWithoutValue", {"show", "--mode"}, "--mode"},
        BadUsage{"OptionTwice", {"show", "--duration", "1", "--duration", "2"}, "--duration"},
        BadUsage{"UnknownDisplay", {"show", "--display", "paper"}, "paper"},
        BadUsage{"UnknownMode", {"show", "--mode", "Skip"}, "Skip"},
        BadUsage{"UnknownPresentation", {"show", "--present", "0"}, "--present"},
        BadUsage{"SizeWithZeroWidth", {"show", "--size", "0x720"}, "0x720"},
        BadUsage{"NegativeSize", {"show", "--size", "-1x720"}, "-1x720"},
        BadUsage{"SizeWithoutHeight", {"show", "--size", "1280"}, "1280"},
        BadUsage{"SizeWithThreeNumbers", {"show", "--size", "1280x720x2"}, "1280x720x2"},
        BadUsage{"SizeWithAFraction", {"show", "--size", "1280x7.5"}, "1280x7.5"},
        BadUsage{"EmptySize", {"show", "--size", ""}, "--size"},
        BadUsage{"TooLargeSize", {"show", "--size", "99999999999x1"}, "99999999999x1"},
        BadUsage{"WindowThatIsNotANumber", {"show", "--window", "player"}, "'player'"},
        BadUsage{"WindowWithANonHexadecimalDigit", {"show", "--window", "0x12g"}, "'0x12g'"},
        BadUsage{"WindowWithoutDigits", {"show", "--window", "0x"}, "'0x'"},
        BadUsage{"NegativeWindow", {"show", "--window", "-5"}, "'-5'"},
        BadUsage{"WindowWithASize", {"show", "--window", "5", "--size", "2x2"}, "--size"},
        BadUsage{"WindowOnTheHeadlessDisplay",
                 {"show", "--window", "5", "--display", "headless"},
                 "--window: needs --display x11"},
        BadUsage{"WindowOnTheCocoaDisplay",
                 {"show", "--window", "5", "--display", "cocoa"},
                 "--window: needs --display x11"},
        BadUsage{"WindowOnTheWaylandDisplay",
                 {"show", "--window", "5", "--display", "wayland"},
                 "--window: needs --display x11"},
        BadUsage{"ScreenshotOnTheHeadlessDisplay",
                 {"show", "--screenshot", "x.png", "--display", "headless"},
                 "--screenshot: needs --display x11"},
        BadUsage{"ScreenshotOnTheWaylandDisplay",
                 {"show", "--screenshot", "x.png", "--display", "wayland"},
                 "--screenshot: needs --display x11"},
        BadUsage{
            "NonNumericSkipAfter", {"show", "--mode", "skip", "--skip-after", "x"}, "--skip-after"},
        BadUsage{
            "NegativeSkipAfter", {"show", "--mode", "skip", "--skip-after", "-1"}, "--skip-after"},
        BadUsage{"NaNSkipAfter", {"show", "--mode", "skip", "--skip-after", "nan"}, "--skip-after"},
        BadUsage{
            "InfiniteSkipAfter", {"show", "--mode", "skip", "--skip-after", "inf"}, "--skip-after"},
        BadUsage{"SkipAfterWithoutSkipMode", {"show", "--skip-after", "1"}, "needs --mode skip"},
        BadUsage{"EventsFileThatCannotBeWritten",
                 {"show", "--events", "/nonexistent/file"},
                 "/nonexistent/file"}),
    [](const testing::TestParamInfo<BadUsage>& testInfo) { return testInfo.param.testName; });

}  // namespace
}  // namespace vel::host
