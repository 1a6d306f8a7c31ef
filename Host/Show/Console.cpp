#include "Host/Show/Console.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

namespace vel::host {

namespace {

constexpr std::string_view kSeparator = ", ";
constexpr std::string_view kPaused = "paused: not in front";
constexpr std::size_t kLongestBar = 40;
constexpr std::size_t kShortestBar = 5;
// The countdown goes in tenths of a second: this near, a step is the one of a whole second.
constexpr double kHalfStep = 0.05;

std::string timed(double time, std::string_view what) {
  char text[32];
  std::snprintf(text, sizeof text, "%8.3f s  ", time);
  std::string line = text + std::string(what);
  // One line, and nothing in it that a terminal would obey: events have the names users give them.
  std::ranges::replace_if(
      line, [](unsigned char character) { return std::iscntrl(character) != 0; }, '?');
  return line;
}

std::string seconds(double seconds, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f s left", decimals, seconds);
  return text;
}

}  // namespace

void LineConsole::happened(double time, std::string_view what) {
  *out_ << timed(time, what) << std::endl;
}

void LineConsole::timeLeft(double time, const TimeLeft& timeLeft) {
  if (timeLeft.countdown != countdown_) {
    countdown_ = timeLeft.countdown;
    happened(time, countdown_ == Countdown::Paused ? kPaused : "goes on: in front again");
  }
  const double second = std::round(timeLeft.left);
  if (second >= 1 && second < latestSecond_ && std::abs(timeLeft.left - second) <= kHalfStep) {
    latestSecond_ = second;
    happened(time, seconds(second, 0));
  }
}

std::string countdownLine(const TimeLeft& timeLeft, std::string_view note, std::size_t columns) {
  const double left = std::max(timeLeft.left, 0.0);
  std::string line = seconds(left, 1);
  if (line.size() < 12) {
    line.insert(0, 12 - line.size(), ' ');
  }
  std::string end;
  if (!note.empty()) {
    end.append("  ").append(note);
  }
  const std::size_t taken = line.size() + end.size() + std::string_view("  []").size();
  if (taken + kShortestBar <= columns) {
    const std::size_t length = std::min(columns - taken, kLongestBar);
    // Endless time leaves the bar empty.
    const double gone = timeLeft.total > 0 && std::isfinite(left) ? 1 - left / timeLeft.total : 0;
    const auto filled = static_cast<std::size_t>(
        std::lround(std::clamp(gone, 0.0, 1.0) * static_cast<double>(length)));
    line.append("  [").append(filled, '#').append(length - filled, '-').append("]");
  }
  line += end;
  line.resize(std::min(line.size(), columns));
  return line;
}

void LiveConsole::happened(double time, std::string_view what) {
  happenings_.append(happenings_.empty() ? "" : kSeparator).append(what);
  std::string line = timed(time, happenings_);
  // Where the line gets too long, the oldest make room.
  for (auto end = happenings_.find(kSeparator);
       line.size() >= columns_() && end != std::string::npos; end = happenings_.find(kSeparator)) {
    happenings_.erase(0, end + kSeparator.size());
    line = timed(time, happenings_);
  }
  write(line);
}

void LiveConsole::remark(double time, std::string_view what) {
  makeWay();
  *out_ << timed(time, what) << std::endl;
  written_ = 0;
}

void LiveConsole::timeLeft(double /*time*/, const TimeLeft& timeLeft) {
  happenings_.clear();
  write(countdownLine(timeLeft, timeLeft.countdown == Countdown::Paused ? kPaused : hint_,
                      columns_() - 1));
}

void LiveConsole::makeWay() {
  if (written_ > 0) {
    write("");
    *out_ << '\r' << std::flush;
  }
}

void LiveConsole::finish() {
  if (written_ > 0) {
    written_ = 0;
    *out_ << std::endl;
  }
}

void LiveConsole::write(std::string_view line) {
  // A line that reached the last column would go on below instead of being written over.
  const std::string_view shown = line.substr(0, columns_() - 1);
  const std::size_t rest = written_ > shown.size() ? written_ - shown.size() : 0;
  written_ = shown.size();
  *out_ << '\r' << shown << std::string(rest, ' ') << std::flush;
}

}  // namespace vel::host
