// Tests of NSLog and formatLogLine. NSLog passes each formatted line to a function, the sink.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <regex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Platform/Foundation/NSLog.h"

namespace vel::test {
namespace {

class NSLogTest : public testing::Test {
 protected:
  NSLogTest() {
    setNSLogSink([this](std::string_view line) { lines.emplace_back(line); });
  }
  ~NSLogTest() override { setNSLogSink(nullptr); }

  std::vector<std::string> lines;
};

TEST(FormatLogLineTest, ReplacesPercentAtByAString) {
  EXPECT_EQ(formatLogLine("%@!", {"Player"}), "Player!");
}

TEST(FormatLogLineTest, ReplacesPercentSByAString) {
  EXPECT_EQ(formatLogLine("(%s)", {"-[Player run]"}), "(-[Player run])");
}

TEST(FormatLogLineTest, ReplacesPercentUByANumber) {
  EXPECT_EQ(formatLogLine("mode: %u", {0U}), "mode: 0");
  EXPECT_EQ(formatLogLine("%u", {std::numeric_limits<std::uint32_t>::max()}), "4294967295");
}

TEST(FormatLogLineTest, UsesTheArgumentsInOrder) {
  EXPECT_EQ(formatLogLine("%@ (%s) mode: %u", {"Content", "-[Content present]", 2U}),
            "Content (-[Content present]) mode: 2");
}

TEST(FormatLogLineTest, ReplacesTwoPercentSignsByOne) {
  EXPECT_EQ(formatLogLine("100%% of %@", {"it"}), "100% of it");
  EXPECT_EQ(formatLogLine("%%@", {}), "%@");
  EXPECT_EQ(formatLogLine("%%%@", {"x"}), "%x");
}

TEST(FormatLogLineTest, KeepsASpecifierWithoutAnArgument) {
  EXPECT_EQ(formatLogLine("%@ and %@", {"one"}), "one and %@");
  EXPECT_EQ(formatLogLine("%u", {}), "%u");
}

TEST(FormatLogLineTest, KeepsUnknownSpecifiersAndATrailingPercentSign) {
  EXPECT_EQ(formatLogLine("%d %@ 5%", {"x"}), "%d x 5%");
}

TEST(FormatLogLineTest, DoesNotReplaceSpecifiersInsideAnArgument) {
  EXPECT_EQ(formatLogLine("%@ %@", {"%s", "%%"}), "%s %%");
}

TEST(FormatLogLineTest, AStringArgumentMayBeEmptyOrContainAnyBytes) {
  EXPECT_EQ(formatLogLine("<%@>", {""}), "<>");
  EXPECT_EQ(formatLogLine("<%@>", {std::string_view("a\0b", 3)}), std::string("<a\0b>", 5));
  EXPECT_EQ(formatLogLine("<%@>", {"größer"}), "<größer>");
}

TEST_F(NSLogTest, PassesTheLineToTheSink) {
  NSLog("%@ (%s): %u%%", "Player", std::string("run"), std::uint32_t{5});
  EXPECT_EQ(lines, std::vector<std::string>{"Player (run): 5%"});
}

TEST_F(NSLogTest, SetNSLogSinkReturnsThePreviousSink) {
  const NSLogSink previousSink = setNSLogSink([](std::string_view) {});
  NSLog("lost");
  EXPECT_TRUE(lines.empty());
  previousSink("kept");
  EXPECT_EQ(lines, std::vector<std::string>{"kept"});
}

TEST_F(NSLogTest, ASinkMayReplaceItself) {
  setNSLogSink([this](std::string_view line) {
    setNSLogSink(nullptr);
    lines.emplace_back(line);
  });
  NSLog("last");
  EXPECT_EQ(lines, std::vector<std::string>{"last"});
}

TEST_F(NSLogTest, WritesAPrefixAndTheLineToStandardErrorIfNoSinkIsSet) {
  setNSLogSink(nullptr);
  testing::internal::CaptureStderr();
  NSLog("%@ is %s", "Player", "ready");
  const std::string output = testing::internal::GetCapturedStderr();
  const std::string processId = std::to_string(getpid());
  // The prefix ends with the process id and the thread id. The id of the main thread is the process
  // id.
  EXPECT_TRUE(
      std::regex_match(output, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \S+\[)" +
                                          processId + ":" + processId + R"(\] Player is ready\n)")))
      << output;
}

TEST_F(NSLogTest, ThePrefixContainsTheProgramName) {
  testing::internal::CaptureStderr();
  writeToStandardSink("line");
  const std::string output = testing::internal::GetCapturedStderr();
  EXPECT_NE(output.find(std::string(" ") + program_invocation_short_name + "["), std::string::npos)
      << output;
}

TEST_F(NSLogTest, WritesALineThatContainsAZeroByte) {
  testing::internal::CaptureStderr();
  writeToStandardSink(std::string_view("a\0b", 3));
  const std::string output = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(output.ends_with(std::string("] a\0b\n", 6))) << output;
}

TEST_F(NSLogTest, DoesNotMixTheLinesOfSeveralThreads) {
  setNSLogSink(nullptr);
  testing::internal::CaptureStderr();
  const auto work = [] {
    for (int number = 0; number < 50; ++number) {
      NSLog("%@", std::string(200, 'x'));
    }
  };
  std::thread firstThread(work);
  std::thread secondThread(work);
  firstThread.join();
  secondThread.join();
  const std::string output = testing::internal::GetCapturedStderr();
  const std::regex wholeLine(R"([^\n]*\] x{200}\n)");
  EXPECT_EQ(std::distance(std::sregex_iterator(output.begin(), output.end(), wholeLine), {}), 100);
  EXPECT_EQ(std::ranges::count(output, '\n'), 100);
}

}  // namespace
}  // namespace vel::test
