#include "Tests/WindowSystem/Reports.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <sstream>

namespace vel::test {

namespace {

// The maximum time between two evaluations of the condition in `eventually` and `deliverUntil`.
constexpr Nanoseconds kPollInterval = kNanosecondsPerSecond / 100;

}  // namespace

std::string nameOf(WindowHandle window) {
  std::ostringstream text;
  text << "0x" << std::hex << static_cast<std::uint64_t>(window);
  return text.str();
}

void ReportListener::focusMoved(WindowHandle window) { lines.push_back("focus " + nameOf(window)); }
void ReportListener::applicationActivated(WindowHandle window) {
  lines.push_back("activated " + nameOf(window));
}
void ReportListener::applicationDeactivated() { lines.emplace_back("deactivated"); }
void ReportListener::closeRequested(WindowHandle window) {
  lines.push_back("close requested " + nameOf(window));
}
void ReportListener::windowDestroyed(WindowHandle window) {
  lines.push_back("destroyed " + nameOf(window));
}
void ReportListener::frameChanged(WindowHandle window, CGRect newFrame) {
  lastFrame = newFrame;
  sizes.push_back(newFrame.size);
  lines.push_back("frame " + nameOf(window));
}
void ReportListener::miniaturizedChanged(WindowHandle window, bool miniaturized) {
  lines.push_back((miniaturized ? "miniaturized " : "deminiaturized ") + nameOf(window));
}
void ReportListener::styleMaskChanged(WindowHandle window, NSWindowStyleMask styleMask) {
  lines.push_back("style " + nameOf(window) + " " + std::to_string(styleMask));
}
void ReportListener::orderChanged(const std::vector<WindowHandle>& windows) {
  orders.push_back(windows);
  lines.emplace_back("order");
  for (const WindowHandle window : windows) {
    lines.back() += " " + nameOf(window);
  }
}
void ReportListener::remainingControlsDetected(WindowHandle window, NSWindowStyleMask controls) {
  lines.push_back("remaining controls " + nameOf(window) + " " + std::to_string(controls));
}
void ReportListener::displayLost(std::string_view /*reason*/) {
  lines.emplace_back("display lost");
}

bool ReportListener::contains(std::string_view line) const {
  return std::ranges::find(lines, line) != lines.end();
}

int ReportListener::count(std::string_view beginning) const {
  return static_cast<int>(std::ranges::count_if(
      lines, [beginning](const std::string& line) { return line.starts_with(beginning); }));
}

Nanoseconds steadyNow() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void waitForInput(int descriptor, Nanoseconds deadline) {
  pollfd input{descriptor, POLLIN, 0};
  const Nanoseconds remaining = std::max<Nanoseconds>(deadline - steadyNow(), 0);
  poll(&input, 1, static_cast<int>((remaining + 999'999) / 1'000'000));
}

bool eventually(const std::function<bool()>& condition) {
  const Nanoseconds deadline = steadyNow() + kTimeout;
  while (!condition()) {
    if (steadyNow() >= deadline) {
      return false;
    }
    waitForInput(-1, steadyNow() + kPollInterval);  // without a descriptor, this only sleeps
  }
  return true;
}

bool deliverUntil(WindowSystem& system, const std::function<bool()>& condition) {
  const Nanoseconds deadline = steadyNow() + kTimeout;
  while (true) {
    system.deliverEvents();
    if (condition()) {
      return true;
    }
    const Nanoseconds now = steadyNow();
    if (now >= deadline) {
      return false;
    }
    waitForInput(system.waitHandle().descriptor(),
                 std::min(system.nextDeadline(), now + kPollInterval));
  }
}

void deliverAll(WindowSystem& system) {
  while (system.deliverEvents()) {
  }
  // The adoption fails. But first, `adoptWindow` waits until the window system has processed all
  // earlier requests.
  std::string error;
  system.adoptWindow(X11WindowId{1}, error);
  while (system.deliverEvents()) {
  }
}

}  // namespace vel::test
