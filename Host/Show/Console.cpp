#include "Host/Show/Console.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "LaunchScreen/Helpers/LaunchScreenConstants.h"

namespace vel::host {

namespace {

constexpr std::string_view kSeparator = ", ";
constexpr std::string_view kPausedText = "paused: not in front";
constexpr std::size_t kMaximumBarLength = 40;
constexpr std::size_t kMinimumBarLength = 5;
// The countdown ticks every `expirationTimeStep` seconds. So each whole second has a tick that
// is at most half a step away.
const double kHalfStep = expirationTimeStep / 2;
// `countdownLine` pads the text of the time left to this width, so that the bar does not move.
constexpr std::size_t kTimeLeftWidth = std::string_view("999.9 s left").size();

std::string formatLine(double time, std::string_view text) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "%8.3f s  ", time);
  std::string line = prefix + std::string(text);
  // `text` may contain an event name from the user. The line must not contain line feeds or escape
  // sequences.
  std::ranges::replace_if(
      line, [](unsigned char character) { return std::iscntrl(character) != 0; }, '?');
  return line;
}

std::string timeLeftText(double seconds, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f s left", decimals, seconds);
  return text;
}

}  // namespace

void LineConsole::report(double time, std::string_view text) {
  *out_ << formatLine(time, text) << std::endl;
}

void LineConsole::showTimeLeft(double time, const TimeLeft& timeLeft) {
  if (timeLeft.state != countdownState_) {
    countdownState_ = timeLeft.state;
    report(time,
           countdownState_ == CountdownState::Paused ? kPausedText : "resumed: in front again");
  }
  const double wholeSecond = std::round(timeLeft.remainingSeconds);
  if (wholeSecond >= 1 && wholeSecond < lastPrintedSecond_ &&
      std::abs(timeLeft.remainingSeconds - wholeSecond) <= kHalfStep) {
    lastPrintedSecond_ = wholeSecond;
    report(time, timeLeftText(wholeSecond, 0));
  }
}

std::string countdownLine(const TimeLeft& timeLeft, std::string_view trailingText,
                          std::size_t columns) {
  const double seconds = std::max(timeLeft.remainingSeconds, 0.0);
  std::string line = timeLeftText(seconds, 1);
  if (line.size() < kTimeLeftWidth) {
    line.insert(0, kTimeLeftWidth - line.size(), ' ');
  }
  std::string suffix;
  if (!trailingText.empty()) {
    suffix.append("  ").append(trailingText);
  }
  const std::size_t textWidth = line.size() + suffix.size() + std::string_view("  []").size();
  if (textWidth + kMinimumBarLength <= columns) {
    const std::size_t length = std::min(columns - textWidth, kMaximumBarLength);
    // If the time left is infinite, the bar is empty.
    const double elapsedFraction = timeLeft.totalSeconds > 0 && std::isfinite(seconds)
                                       ? 1 - seconds / timeLeft.totalSeconds
                                       : 0;
    const auto filledLength = static_cast<std::size_t>(
        std::lround(std::clamp(elapsedFraction, 0.0, 1.0) * static_cast<double>(length)));
    line.append("  [").append(filledLength, '#').append(length - filledLength, '-').append("]");
  }
  line += suffix;
  line.resize(std::min(line.size(), columns));
  return line;
}

void LiveConsole::report(double time, std::string_view text) {
  reports_.append(reports_.empty() ? "" : kSeparator).append(text);
  std::string line = formatLine(time, reports_);
  // While the line is too long, remove the oldest report.
  for (auto end = reports_.find(kSeparator);
       line.size() >= columnCount_() && end != std::string::npos; end = reports_.find(kSeparator)) {
    reports_.erase(0, end + kSeparator.size());
    line = formatLine(time, reports_);
  }
  write(line);
}

void LiveConsole::reportOnOwnLine(double time, std::string_view text) {
  clearLine();
  *out_ << formatLine(time, text) << std::endl;
  lineWidth_ = 0;
}

void LiveConsole::showTimeLeft(double /*time*/, const TimeLeft& timeLeft) {
  reports_.clear();
  write(countdownLine(timeLeft, timeLeft.state == CountdownState::Paused ? kPausedText : hint_,
                      columnCount_() - 1));
}

void LiveConsole::clearLine() {
  if (lineWidth_ > 0) {
    write("");
    *out_ << '\r' << std::flush;
  }
}

void LiveConsole::finish() {
  if (lineWidth_ > 0) {
    lineWidth_ = 0;
    *out_ << std::endl;
  }
}

void LiveConsole::write(std::string_view line) {
  // Text in the last column may move the cursor to the next row. The next call of `write` would
  // then not overwrite this line.
  const std::string_view visibleLine = line.substr(0, columnCount_() - 1);
  const std::size_t columnsToErase =
      lineWidth_ > visibleLine.size() ? lineWidth_ - visibleLine.size() : 0;
  lineWidth_ = visibleLine.size();
  *out_ << '\r' << visibleLine << std::string(columnsToErase, ' ') << std::flush;
}

}  // namespace vel::host
