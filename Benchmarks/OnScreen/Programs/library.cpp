// The library as a host uses it: over the window of another program, or over one of its own. The
// countdown is told off by the library's own timer.
#include <memory>
#include <string>

#include "Benchmarks/OnScreen/Programs/stamps.h"
#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/PlatformObserver.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace {

using namespace vel;

class Stamps final : public PlatformObserver {
 public:
  // Told after what the timer calls: the last one takes everything down, and had come before that.
  void timerFired(NSTimer& /*timer*/, const Strong<NSObject>& /*target*/) override {
    stamp_tick_at(stamp_down != 0 ? stamp_down : stamp_now());
  }
  void lifeCycleStepBegan(NSViewController& /*controller*/, LifeCycleStep step) override {
    if (step == LifeCycleStep::WillDisappear && stamp_down == 0) {
      stamp_down = stamp_now();
    }
  }
};

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = arguments_of(argc, argv);
#ifdef SHARED_CONNECTION  // the display is opened before anything is shown
  constexpr bool kOpensFirst = true;
#else
  constexpr bool kOpensFirst = false;
#endif
  std::string error;
  Stamps stamps;
  setPlatformObserver(&stamps);
  MetricsCenter::setSink([](std::string_view) {});

  const auto open = [&] {
    auto windowSystem = makeWindowSystem("x11", {}, error);
    if (windowSystem == nullptr) {
      fprintf(stderr, "%s\n", error.c_str());
      exit(1);
    }
    NSApplication::start(std::move(windowSystem));
    if (arguments.window != 0) {
      return NSApp->adoptWindow(arguments.window, error);
    }
    auto window = NSWindow::initAs<NSWindow>(
        CGRectMake(arguments.x, arguments.y, arguments.width, arguments.height),
        NSWindowStyleMaskBorderless);
    window->orderFront();
    window->makeKeyWindow();
    return window;
  };

  Strong<NSWindow> window;
  if (kOpensFirst) {
    window = open();
  }
  stamp_called = stamp_now();
  if (!kOpensFirst) {
    window = open();
  }
  if (window == nullptr) {
    fprintf(stderr, "%s\n", error.c_str());
    return 1;
  }
  window->setContentViewController(make<NSViewController>());
  const auto manager = LaunchScreenManager::init();
  const auto view = manager->contentViewForContentData(
      manager->contentDataForContentRequest(DictionaryRequest::requestWithEntries(
          {{"event", NSString::stringWithUTF8String("launch_end")},
           {"max_duration_time", NSNumber::numberWithDouble(arguments.tenths / 10.0)}})));
  as<CVPresentationFullScreen>(view->presentation())
      ->presentForWindowWithPresentationMode(window, 0);
  stamp_returned = stamp_now();

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  loop.runUntil([] { return stamp_down != 0; });
  loop.runUntilDate(loop.now() + kNanosecondsPerSecond / 5);
  NSApplication::stop();
  stamps_print();
  return 0;
}
