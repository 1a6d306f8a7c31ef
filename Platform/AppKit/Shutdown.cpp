#include "Platform/AppKit/Shutdown.h"

#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/ReleasePool.h"

namespace vel {

namespace {

constinit const ShutdownStep* firstShutdownStep = nullptr;

void removeScheduledWork() {
  NSRunLoop::mainRunLoop().invalidateTimers();
  dispatch_get_main_queue().removeAll();
}

}  // namespace

ShutdownStep::ShutdownStep(void (*run)()) noexcept
    : run_(run), next_(std::exchange(firstShutdownStep, this)) {}

void shutDown() {
  // The steps below run callbacks, and a callback may run the run loop. The earlier timers and
  // blocks must not run then.
  removeScheduledWork();
  send(NSApp, &NSApplication::disconnect);
  for (const ShutdownStep* step = firstShutdownStep; step != nullptr; step = step->next_) {
    step->run_();
  }
  NSNotificationCenter::defaultCenter().removeAllObservers();
  // Callbacks in the steps above may have scheduled more work.
  removeScheduledWork();
  ReleasePool::currentPool().drainTo(0);
}

}  // namespace vel
