// The library as a host uses it: over the window of another program, or over a window that this
// program opens.
#include <memory>
#include <string>

#include "Benchmarks/OnScreen/Programs/timestamps.h"
#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/PlatformObserver.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace {

using namespace vel;

constexpr double kFirstSeconds = int{FIRST_MILLISECONDS} / 1000.0;
constexpr double kPauseSeconds = int{PAUSE_MILLISECONDS} / 1000.0;

// Records the ticks of the library's timer and the start of the cover's removal.
class TimeRecorder final : public PlatformObserver {
 public:
  // Called after the timer's target. The last tick removes the cover, so the call of the target has
  // already recorded `hide_start`.
  void timerFired(NSTimer& /*timer*/, const Strong<NSObject>& /*target*/) override {
    record_tick_at(hide_start != 0 ? hide_start : read_clock());
  }
  void lifeCycleMethodCalled(NSViewController& /*controller*/, LifeCycleMethod method) override {
    if (method == LifeCycleMethod::WillDisappear && hide_start == 0) {
      hide_start = read_clock();
    }
  }
};

[[noreturn]] void fail(const std::string& error) {
  fprintf(stderr, "%s\n", error.c_str());
  exit(1);
}

void openDisplay() {
  std::string error;
  auto windowSystem = makeWindowSystem("x11", {}, error);
  if (windowSystem == nullptr) {
    fail(error);
  }
  NSApplication::start(std::move(windowSystem));
}

Strong<NSWindow> openWindow(CGRect frame) {
  auto window = NSWindow::initAs<NSWindow>(frame, NSWindowStyleMaskBorderless);
  window->orderFront();
  window->makeKeyWindow();
  return window;
}

// The window to cover: an adopted window or a new window.
Strong<NSWindow> findOrOpenWindow(const Arguments& arguments) {
  if (arguments.window == 0) {
    return openWindow(CGRectMake(arguments.x, arguments.y, arguments.width, arguments.height));
  }
  std::string error;
  const Strong<NSWindow> window = NSApp->adoptWindow(X11WindowId{arguments.window}, error);
  if (window == nullptr) {
    fail(error);
  }
  return window;
}

Strong<LaunchScreenManager> present(const Strong<NSWindow>& window, double seconds) {
  window->setContentViewController(make<NSViewController>());
  const auto manager = LaunchScreenManager::init();
  const auto view = manager->contentViewForContentData(
      manager->contentDataForContentRequest(DictionaryRequest::requestWithEntries(
          {{"event", NSString::stringWithUTF8String("launch_end")},
           {"max_duration_time", NSNumber::numberWithDouble(seconds)}})));
  as<CVPresentationFullScreen>(view->presentation())
      ->presentForWindowWithPresentationMode(window, 0);
  return manager;
}

void runLoop(double seconds) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  loop.runUntilDate(loop.now() + nanosecondsFromSeconds(seconds));
}

// Shows a launch screen over a window of this program, and closes the window.
void showFirstWindow() {
  const auto window = openWindow(CGRectMake(FIRST_X, FIRST_Y, FIRST_WIDTH, FIRST_HEIGHT));
  const auto manager = present(window, kFirstSeconds);
  // The event is recorded half a second after the end of the launch screen.
  runLoop(kFirstSeconds + 0.6);
  manager->deactivate();
  window->close();
  runLoop(kPauseSeconds);
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = parse_arguments(argc, argv);
  MetricsCenter::setSink([](std::string_view) {});
  Strong<NSWindow> window;
  if (arguments.mode != MODE_COLD) {
    openDisplay();
    showFirstWindow();
  }
  if (arguments.mode == MODE_WARM) {
    window = findOrOpenWindow(arguments);
  }
  TimeRecorder recorder;
  setPlatformObserver(&recorder);
  show_start = read_clock();
  if (arguments.mode == MODE_COLD) {
    openDisplay();
  }
  if (window == nullptr) {
    window = findOrOpenWindow(arguments);
  }
  const auto manager = present(window, arguments.ticks / 10.0);
  show_end = read_clock();

  NSRunLoop::mainRunLoop().runUntil([] { return hide_start != 0; });
  runLoop(0.2);
  NSApplication::stop();
  print_timestamps();
  return 0;
}
