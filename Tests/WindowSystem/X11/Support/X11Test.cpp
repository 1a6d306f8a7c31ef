#include "Tests/WindowSystem/X11/Support/X11Test.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <sstream>
#include <stdexcept>

#include "Platform/Foundation/NSLog.h"

namespace vel::test {

namespace {

// Far longer than anything takes on a machine that is busy otherwise.
constexpr Nanoseconds kPatience = 15 * kNanosecondsPerSecond;
// What other programs do between themselves is looked at again and again.
constexpr Nanoseconds kAnotherLook = kNanosecondsPerSecond / 100;

std::string hexadecimal(WindowHandle window) {
  std::ostringstream text;
  text << "0x" << std::hex << static_cast<std::uint64_t>(window);
  return text.str();
}

// Until there is input or the moment has come.
void waitForInput(int descriptor, Nanoseconds until) {
  pollfd input{descriptor, POLLIN, 0};
  const Nanoseconds left = std::max<Nanoseconds>(until - x11::steadyNow(), 0);
  poll(&input, 1, static_cast<int>((left + 999'999) / 1'000'000));
}

}  // namespace

bool eventually(const std::function<bool()>& condition) {
  const Nanoseconds limit = x11::steadyNow() + kPatience;
  while (!condition()) {
    if (x11::steadyNow() >= limit) {
      return false;
    }
    waitForInput(-1, x11::steadyNow() + kAnotherLook);
  }
  return true;
}

// ReportListener

void ReportListener::focusMoved(WindowHandle window) {
  lines.push_back("focus " + hexadecimal(window));
}
void ReportListener::applicationActivated(WindowHandle window) {
  lines.push_back("activated " + hexadecimal(window));
}
void ReportListener::applicationDeactivated() { lines.emplace_back("deactivated"); }
void ReportListener::closeAsked(WindowHandle window) {
  lines.push_back("close asked " + hexadecimal(window));
}
void ReportListener::windowGone(WindowHandle window) {
  lines.push_back("gone " + hexadecimal(window));
}
void ReportListener::frameChanged(WindowHandle window, CGRect changed) {
  frame = changed;
  lines.push_back("frame " + hexadecimal(window));
}
void ReportListener::miniaturizedChanged(WindowHandle window, bool miniaturized) {
  lines.push_back((miniaturized ? "miniaturized " : "deminiaturized ") + hexadecimal(window));
}
void ReportListener::controlsKept(WindowHandle window, NSWindowStyleMask controls) {
  lines.push_back("controls kept " + hexadecimal(window) + " " + std::to_string(controls));
}
void ReportListener::displayLost(std::string_view /*reason*/) { lines.emplace_back("lost"); }

bool ReportListener::heard(std::string_view line) const {
  return std::ranges::find(lines, line) != lines.end();
}

int ReportListener::count(std::string_view beginning) const {
  return static_cast<int>(std::ranges::count_if(
      lines, [beginning](const std::string& line) { return line.starts_with(beginning); }));
}

// X11Test

X11Test::X11Test(Manager started) : user(server.display()) {
  setNSLogSink([this](std::string_view line) { log.emplace_back(line); });
  startManager(started);
}

X11Test::~X11Test() {
  system_ = nullptr;
  setNSLogSink(nullptr);
}

X11WindowSystem& X11Test::system() {
  if (system_ == nullptr) {
    std::string error;
    system_ = X11WindowSystem::open(server.display(), error);
    if (system_ == nullptr) {
      throw std::runtime_error(error);
    }
    system_->setDelegate(&reports);
  }
  return *system_;
}

void X11Test::startManager(Manager started) {
  if (started == Manager::None) {
    return;
  }
  const auto program = started == Manager::Metacity
                           ? std::vector<std::string>{"metacity", "--sm-disable"}
                           : std::vector<std::string>{"openbox", "--sm-disable"};
  manager = server.start(program);
  // It manages once it manages a window. One that is asked for too early may stay forgotten.
  const Nanoseconds limit = x11::steadyNow() + kPatience;
  const xcb_window_t probe = user.makeWindow({0, 0, 10, 10}, 0);
  user.selectEvents(probe, XCB_EVENT_MASK_PROPERTY_CHANGE);
  while (user.numbers(probe, "WM_STATE").empty()) {
    if (x11::steadyNow() >= limit) {
      throw std::runtime_error(program.front() + " does not start");
    }
    user.unmap(probe);
    if (!user.numbers(user.root(), "_NET_SUPPORTING_WM_CHECK").empty()) {
      user.map(probe);
    }
    waitForInput(xcb_get_file_descriptor(user.get()),
                 x11::steadyNow() + kNanosecondsPerSecond / 20);
    user.events();
  }
  user.destroy(probe);
}

bool X11Test::waitFor(const std::function<bool()>& condition) {
  const Nanoseconds limit = x11::steadyNow() + kPatience;
  while (true) {
    system().deliverEvents();
    if (condition()) {
      return true;
    }
    const Nanoseconds now = x11::steadyNow();
    if (now >= limit) {
      return false;
    }
    waitForInput(system().descriptor(), std::min(system().nextDeadline(), now + kAnotherLook));
  }
}

void X11Test::deliver() {
  user.settle();
  while (system().deliverEvents()) {
  }
  // A question that cannot be answered well, but only after all that was asked before it.
  std::string error;
  system().adoptWindow(1, error);
  while (system().deliverEvents()) {
  }
}

void X11Test::deliverFor(double seconds) {
  const Nanoseconds limit = x11::steadyNow() + nanosecondsFromSeconds(seconds);
  while (x11::steadyNow() < limit) {
    system().deliverEvents();
    waitForInput(system().descriptor(), std::min(system().nextDeadline(), limit));
  }
}

WindowHandle X11Test::open(const WindowDescription& description) {
  const WindowHandle window = system().createWindow(description);
  system().orderFront(window);
  EXPECT_TRUE(waitFor([&] { return user.isViewable(idOf(window)); }));
  return window;
}

AdoptedWindow X11Test::adopt(xcb_window_t window) {
  std::string error;
  const auto adopted = system().adoptWindow(window, error);
  if (!adopted) {
    throw std::runtime_error(error);
  }
  return *adopted;
}

Scene X11Test::white(CGSize size) {
  return {{.kind = SceneItem::Kind::Fill, .frame = {{}, size}, .color = {1, 1, 1, 1}}};
}

Scene X11Test::whiteWithIndicator(CGSize size) {
  Scene scene = white(size);
  scene.push_back({.kind = SceneItem::Kind::Spinner,
                   .frame = CGRectMake(size.width / 2 - 16, size.height / 2 - 16, 32, 32),
                   .color = {},
                   .animates = true});
  return scene;
}

std::string X11Test::line(std::string_view what, WindowHandle window) {
  return std::string(what) + " " + hexadecimal(window);
}

}  // namespace vel::test
