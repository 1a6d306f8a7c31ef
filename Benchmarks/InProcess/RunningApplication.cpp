#include "Benchmarks/InProcess/RunningApplication.h"

#include <string_view>
#include <utility>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/Shutdown.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::bench {

RunningApplication::RunningApplication(std::unique_ptr<Clock> clock,
                                       std::unique_ptr<WindowSystem> windowSystem) {
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

RunningApplication::~RunningApplication() {
  shutDown();
  sDefaultConfiguration = nullptr;
  MetricsCenter::setSink(nullptr);
  setNSLogSink(nullptr);
  NSRunLoop::mainRunLoop().useRealTime();
}

}  // namespace vel::bench
