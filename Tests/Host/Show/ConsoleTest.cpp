// The two consoles of `launchscreen show`: `LineConsole` prints each report on its own line, and
// `LiveConsole` keeps one line of a terminal up to date.
#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include "Host/Show/Console.h"

namespace vel::host {
namespace {

TimeLeft runningCountdown(double seconds, double total) {
  return {.remainingSeconds = seconds, .totalSeconds = total};
}
TimeLeft pausedCountdown(double seconds, double total) {
  return {.remainingSeconds = seconds, .totalSeconds = total, .state = CountdownState::Paused};
}

class LineConsoleTest : public testing::Test {
 protected:
  // Shows a whole countdown on the console, with a tick every 0.1 s.
  void countDown(double total) {
    double time = 0;
    for (double remaining = total; remaining > 0; remaining -= 0.1, time += 0.1) {
      console.showTimeLeft(time, runningCountdown(remaining, total));
    }
  }

  std::ostringstream out;
  LineConsole console{out};
};

TEST_F(LineConsoleTest, ReportIsPrintedOnALineWithItsTime) {
  console.report(1.6004, "dismissed");
  console.report(1234.5, "event recorded: e");
  EXPECT_EQ(out.str(), "   1.600 s  dismissed\n1234.500 s  event recorded: e\n");
}

TEST_F(LineConsoleTest, ControlCharactersArePrintedAsQuestionMarks) {
  console.report(0, "event recorded: a\nb\033[2J");
  EXPECT_EQ(out.str(), "   0.000 s  event recorded: a?b?[2J\n");
}

TEST_F(LineConsoleTest, PrintsALineForEachWholeSecond) {
  countDown(3);
  EXPECT_EQ(out.str(), "   0.000 s  3 s left\n   1.000 s  2 s left\n   2.000 s  1 s left\n");
}

TEST_F(LineConsoleTest, WholeSecondIsPrintedAtTheNearestTick) {
  countDown(2.37);
  EXPECT_EQ(out.str(), "   0.400 s  2 s left\n   1.400 s  1 s left\n");
}

TEST_F(LineConsoleTest, CountdownBelowOneSecondPrintsNoSeconds) {
  countDown(0.9);
  EXPECT_EQ(out.str(), "");
}

TEST_F(LineConsoleTest, InfiniteTimePrintsNoSeconds) {
  console.showTimeLeft(0, runningCountdown(std::numeric_limits<double>::infinity(),
                                           std::numeric_limits<double>::infinity()));
  EXPECT_EQ(out.str(), "");
}

TEST_F(LineConsoleTest, PauseAndResumptionPrintOneLineEach) {
  console.showTimeLeft(0, runningCountdown(2, 5));
  console.showTimeLeft(0.5, pausedCountdown(2, 5));
  console.showTimeLeft(0.6, pausedCountdown(2, 5));
  console.showTimeLeft(3, runningCountdown(2, 5));
  EXPECT_EQ(out.str(),
            "   0.000 s  2 s left\n"
            "   0.500 s  paused: not in front\n"
            "   3.000 s  resumed: in front again\n");
}

TEST(CountdownLineTest, BarFillsAsTimePasses) {
  EXPECT_EQ(countdownLine(runningCountdown(5, 5), "", 26), "  5.0 s left  [----------]");
  EXPECT_EQ(countdownLine(runningCountdown(3.5, 5), "", 26), "  3.5 s left  [###-------]");
  EXPECT_EQ(countdownLine(runningCountdown(0, 5), "", 26), "  0.0 s left  [##########]");
}

TEST(CountdownLineTest, NegativeTimeIsShownAsZero) {
  EXPECT_EQ(countdownLine(runningCountdown(-0.1, 5), "", 26), "  0.0 s left  [##########]");
}

TEST(CountdownLineTest, TrailingTextFollowsTheBar) {
  EXPECT_EQ(countdownLine(runningCountdown(2.5, 5), "paused", 34),
            "  2.5 s left  [#####-----]  paused");
}

TEST(CountdownLineTest, BarHasAtMostFortyColumns) {
  EXPECT_EQ(countdownLine(runningCountdown(1, 1), "", 200).size(),
            std::string("  1.0 s left  []").size() + 40);
}

TEST(CountdownLineTest, NarrowTerminalGetsNoBar) {
  EXPECT_EQ(countdownLine(runningCountdown(2.5, 5), "paused", 28), "  2.5 s left  paused");
}

TEST(CountdownLineTest, LineFitsIntoTheTerminal) {
  for (std::size_t columns = 0; columns < 100; ++columns) {
    EXPECT_LE(countdownLine(runningCountdown(2.5, 5), "paused: not in front", columns).size(),
              columns);
  }
}

TEST(CountdownLineTest, InfiniteTimeLeavesTheBarEmpty) {
  constexpr double kEndless = std::numeric_limits<double>::infinity();
  EXPECT_EQ(countdownLine(runningCountdown(kEndless, kEndless), "", 26),
            "  inf s left  [----------]");
}

class LiveConsoleTest : public testing::Test {
 protected:
  std::size_t columns = 40;
  std::ostringstream out;
  LiveConsole console{out, [this] { return columns; }, /*hint=*/"press Enter"};
};

TEST_F(LiveConsoleTest, EveryLineReplacesThePreviousLine) {
  console.showTimeLeft(0, runningCountdown(5, 5));
  console.showTimeLeft(0.1, runningCountdown(4.9, 5));
  console.report(5.1, "dismissed");
  EXPECT_EQ(out.str().find('\n'), std::string::npos);
  const std::string output = out.str();
  EXPECT_EQ(std::ranges::count(output, '\r'), 3);
}

TEST_F(LiveConsoleTest, ReportOnItsOwnLineIsNotReplaced) {
  console.showTimeLeft(0, runningCountdown(5, 5));
  const std::size_t previousSize = out.str().size();
  console.reportOnOwnLine(0.2, "controls kept");
  console.showTimeLeft(0.3, runningCountdown(4.7, 5));
  EXPECT_THAT(out.str().substr(previousSize),
              testing::ContainsRegex("\r {30,}\r   0.200 s  controls kept\n\r  4.7 s left"));
}

TEST_F(LiveConsoleTest, ShorterLineErasesTheEndOfALongerLine) {
  console.showTimeLeft(0, runningCountdown(5, 5));
  const std::size_t previousSize = out.str().size();
  console.report(5.1, "dismissed");
  // The countdown line is 18 characters longer than the report.
  EXPECT_EQ(out.str().substr(previousSize), "\r   5.100 s  dismissed" + std::string(18, ' '));
}

TEST_F(LiveConsoleTest, CountdownLineShowsTheHint) {
  console.showTimeLeft(0, runningCountdown(5, 5));
  EXPECT_EQ(out.str(), "\r  5.0 s left  [----------]  press Enter");
}

TEST_F(LiveConsoleTest, CountdownLineShowsAPause) {
  columns = 60;
  console.showTimeLeft(0, pausedCountdown(5, 5));
  EXPECT_NE(out.str().find("]  paused: not in front"), std::string::npos) << out.str();
}

TEST_F(LiveConsoleTest, ReportsAfterTheCountdownShareOneLine) {
  columns = 80;
  console.report(0, "covered");
  console.showTimeLeft(0, runningCountdown(1, 1));
  const std::size_t previousSize = out.str().size();
  console.report(1.1, "dismissed");
  console.report(1.6, "event recorded: e");
  EXPECT_NE(out.str().find("\r   1.600 s  dismissed, event recorded: e", previousSize),
            std::string::npos);
}

TEST_F(LiveConsoleTest, OldestReportsAreDroppedWhenTheLineIsTooLong) {
  console.report(1, "controls restored");
  console.report(2, "dismissed");
  console.report(3, "uncovered");
  EXPECT_TRUE(out.str().ends_with("\r   3.000 s  dismissed, uncovered")) << out.str();
}

TEST_F(LiveConsoleTest, LastColumnStaysEmpty) {
  columns = 20;
  console.report(1, std::string(100, 'x'));
  EXPECT_EQ(out.str(), "\r   1.000 s  xxxxxxx");
}

TEST_F(LiveConsoleTest, ClearLineDoesNothingWhenCalledAgain) {
  console.report(1, "covered");
  console.clearLine();
  out << "a log line\n";
  console.clearLine();
  EXPECT_EQ(out.str(), "\r   1.000 s  covered\r" + std::string(19, ' ') + "\ra log line\n");
}

TEST_F(LiveConsoleTest, FinishEndsTheLineOnce) {
  console.finish();
  EXPECT_EQ(out.str(), "");
  console.report(1, "covered");
  console.finish();
  console.finish();
  EXPECT_TRUE(out.str().ends_with("covered\n"));
}

}  // namespace
}  // namespace vel::host
