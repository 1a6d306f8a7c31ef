#include "Benchmarks/InProcess/Stage.h"

#include <string>
#include <utility>

#include "HostInterfaces/DictionaryRequest.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/Shutdown.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::bench {

namespace {

class NamedWindow final : public Class<NamedWindow, "NSWindow", NSWindow> {
 public:
  NamedWindow(std::string_view name, CGRect frame, NSWindowStyleMask styleMask)
      : Class(frame, styleMask), name_(name) {}
  [[nodiscard]] std::string_view className() const override { return name_; }

 private:
  std::string name_;
};

}  // namespace

Stage::Stage(std::unique_ptr<Clock> clock, std::unique_ptr<WindowSystem> windowSystem) {
  if (clock == nullptr) {
    NSRunLoop::mainRunLoop().useRealTime();
  } else {
    NSRunLoop::mainRunLoop().setClock(std::move(clock));
  }
  if (windowSystem == nullptr) {
    windowSystem = std::make_unique<HeadlessWindowSystem>();
  }
  NSApplication::start(std::move(windowSystem));
  setNSLogSink([](std::string_view) {});
  MetricsCenter::setSink([](std::string_view) {});
}

Stage::~Stage() {
  shutDown();
  sDefaultConfiguration = nullptr;
  MetricsCenter::setSink(nullptr);
  setNSLogSink(nullptr);
  NSRunLoop::mainRunLoop().useRealTime();
}

Strong<NSWindow> openWindow(std::string_view className) {
  Strong<NSWindow> window =
      NSWindow::initAs<NamedWindow>(className, CGRectMake(0, 0, 640, 480), NSWindowStyleMask{15});
  window->orderFront();
  return window;
}

Strong<ContentRequest> makeRequest(std::string_view event, double duration) {
  return DictionaryRequest::requestWithEntries(
      {{"event", NSString::stringWithUTF8String(event)},
       {"max_duration_time", NSNumber::numberWithDouble(duration)}});
}

Strong<ContentView> load(const Strong<LaunchScreenManager>& manager, double duration) {
  return manager->contentViewForContentData(
      manager->contentDataForContentRequest(makeRequest("launch_end", duration)));
}

}  // namespace vel::bench
