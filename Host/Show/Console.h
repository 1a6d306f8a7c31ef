// What `show` tells its user, and in which form.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>

namespace vel::host {

enum class Countdown : std::uint8_t { Runs, Paused };

/// How much of the launch screen's time is left, and of how much; both in seconds.
struct TimeLeft {
  double left = 0;
  double total = 0;
  Countdown countdown = Countdown::Runs;
};

/// Tells the user what happens. Times are in seconds since the beginning. Main thread.
class Console {
 public:
  Console() = default;
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;
  Console(Console&&) = delete;
  Console& operator=(Console&&) = delete;
  virtual ~Console() = default;

  virtual void happened(double time, std::string_view what) = 0;
  /// The same for what the user should be able to read later, too.
  virtual void remark(double time, std::string_view what) { happened(time, what); }
  /// Called when the countdown begins, at each of its steps, and when it is paused or goes on.
  virtual void timeLeft(double time, const TimeLeft& timeLeft) = 0;
  /// Something else is about to write a line to the terminal.
  virtual void makeWay() {}
  /// Nothing more will happen.
  virtual void finish() {}
};

/// A line for each happening, with its time.
class LineConsole final : public Console {
 public:
  /// `out` must outlive the console.
  explicit LineConsole(std::ostream& out) : out_(&out) {}

  void happened(double time, std::string_view what) override;
  /// A line for each whole second left, and for each pause and its end.
  void timeLeft(double time, const TimeLeft& timeLeft) override;

 private:
  std::ostream* out_;
  Countdown countdown_ = Countdown::Runs;
  double latestSecond_ = std::numeric_limits<double>::infinity();
};

/// One line of a terminal, written over and over: the time left with a bar while the countdown is
/// on, and what has happened before it and after.
class LiveConsole final : public Console {
 public:
  /// Answers the terminal's width; asked at each writing, since it may change.
  using Columns = std::function<std::size_t()>;

  /// `out` must outlive the console. `hint` says what the user can do while the countdown is on.
  LiveConsole(std::ostream& out, Columns columns, std::string_view hint)
      : out_(&out), columns_(std::move(columns)), hint_(hint) {}

  void happened(double time, std::string_view what) override;
  void timeLeft(double time, const TimeLeft& timeLeft) override;
  /// Writes a line of its own, which stays above.
  void remark(double time, std::string_view what) override;
  /// Clears the line; it is written anew with the next happening.
  void makeWay() override;
  /// Leaves the line as it is and ends it.
  void finish() override;

 private:
  void write(std::string_view line);

  std::ostream* out_;
  Columns columns_;
  std::string hint_;
  std::string happenings_;   // since the countdown was last written
  std::size_t written_ = 0;  // columns of the line that are in use
};

/// The countdown in one line of at most `columns` columns: the time left, a bar that fills as it
/// goes, and a note.
[[nodiscard]] std::string countdownLine(const TimeLeft& timeLeft, std::string_view note,
                                        std::size_t columns);

}  // namespace vel::host
