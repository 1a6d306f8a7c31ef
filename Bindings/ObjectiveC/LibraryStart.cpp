#include "Bindings/ObjectiveC/LibraryStart.h"

#include <exception>
#include <utility>

#include "HostInterfaces/MetricsCenter.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/Foundation/NSThread.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace vel_objc {

bool startLibrary(std::function<void(std::string_view)> recordEvent, std::string& error) {
  try {
    vel::NSThread::becomeMainThread();
    auto windowSystem = vel::makeWindowSystem("cocoa", "", error);
    if (windowSystem == nullptr) {
      return false;
    }
    vel::NSRunLoop::mainRunLoop().useRealTime();
    vel::NSApplication::start(std::move(windowSystem));
    vel::runPassesInHostLoop(vel::NSApp->windowSystem(),
                             [] { vel::NSRunLoop::mainRunLoop().pump(); });
    vel::MetricsCenter::setSink(std::move(recordEvent));
    return true;
  } catch (const std::exception& exception) {
    vel::NSApplication::stop();
    error = exception.what();
    return false;
  }
}

}  // namespace vel_objc
