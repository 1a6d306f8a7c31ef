// Consoles print the progress of `launchscreen show` for the user.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::host {

enum class CountdownState : std::uint8_t { Running, Paused };

/// The countdown to the end of the launch screen: the time left, the total duration, and whether
/// the countdown is paused.
struct TimeLeft {
  double remainingSeconds = 0;
  double totalSeconds = 0;
  CountdownState state = CountdownState::Running;
};

/// Reports the progress of `launchscreen show` to the user. In all functions, `time` is the time in
/// seconds since the command started. When the command requests the content of the launch screen,
/// `time` restarts at 0. Only the main thread may use a console.
class Console : private NonCopyable {
 public:
  Console() = default;
  virtual ~Console() = default;

  /// Prints a report. On a terminal, later output may replace the report.
  virtual void report(double time, std::string_view text) = 0;
  /// Prints a report that no later output replaces.
  virtual void reportOnOwnLine(double time, std::string_view text) { report(time, text); }
  /// Shows the time left. Called when the countdown starts, at each tick of the countdown, and when
  /// the countdown pauses or resumes.
  virtual void showTimeLeft(double time, const TimeLeft& timeLeft) = 0;
  /// Called before other code writes to the terminal. A console must erase a line that it has
  /// written without a line feed.
  virtual void clearLine() {}
  /// Called after the last report.
  virtual void finish() {}
};

/// Prints each report on a line that starts with the time.
class LineConsole final : public Console {
 public:
  /// `out` must outlive the console.
  explicit LineConsole(std::ostream& out) : out_(&out) {}

  void report(double time, std::string_view text) override;
  /// Prints a line when the time left reaches a whole second, and when the countdown pauses or
  /// resumes.
  void showTimeLeft(double time, const TimeLeft& timeLeft) override;

 private:
  std::ostream* out_;
  CountdownState countdownState_ = CountdownState::Running;
  double lastPrintedSecond_ = std::numeric_limits<double>::infinity();
};

/// Updates one line of a terminal. The line shows either the time left and a progress bar, or the
/// reports since the latest call of `showTimeLeft`.
class LiveConsole final : public Console {
 public:
  /// Returns the width of the terminal in columns. The console calls this function for each line,
  /// because the width may change.
  using ColumnCounter = std::function<std::size_t()>;

  /// `out` must outlive the console. The console shows `hint` after the bar while the countdown
  /// runs.
  LiveConsole(std::ostream& out, ColumnCounter columnCount, std::string_view hint)
      : out_(&out), columnCount_(std::move(columnCount)), hint_(hint) {}

  void report(double time, std::string_view text) override;
  void showTimeLeft(double time, const TimeLeft& timeLeft) override;
  void reportOnOwnLine(double time, std::string_view text) override;
  /// Erases the line until the next call of `report` or `showTimeLeft`.
  void clearLine() override;
  /// Ends the line with a line feed.
  void finish() override;

 private:
  void write(std::string_view line);

  std::ostream* out_;
  ColumnCounter columnCount_;
  std::string hint_;
  std::string reports_;        // the reports since the latest call of `showTimeLeft`
  std::size_t lineWidth_ = 0;  // the number of columns that the line uses
};

/// Returns a line of at most `columns` columns: the time left, a bar that fills as time passes, and
/// `trailingText`. Omits the bar if `columns` is too small.
[[nodiscard]] std::string countdownLine(const TimeLeft& timeLeft, std::string_view trailingText,
                                        std::size_t columns);

}  // namespace vel::host
