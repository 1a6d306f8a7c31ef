#include "Platform/WindowSystem/Cocoa/HostLoop.h"

#import <AppKit/AppKit.h>
#include <fcntl.h>

#include <cerrno>
#include <system_error>
#include <utility>

// Watches a descriptor in the native run loop. The `HostLoop` clears `hostLoop` before it releases
// the observer.
@interface VelInputObserver : NSObject {
 @public
  vel::cocoa::HostLoop* hostLoop;
  NSFileHandle* fileHandle;
}
- (void)watch;
- (void)dataBecameAvailable:(NSNotification*)notification;
@end

@implementation VelInputObserver

- (void)watch {
  [fileHandle
      waitForDataInBackgroundAndNotifyForModes:[NSArray arrayWithObjects:NSDefaultRunLoopMode,
                                                                         NSModalPanelRunLoopMode,
                                                                         nil]];
}

// AppKit sends one notification for each call of `watch`, so this method calls `watch` again. It
// does so before the pass, because a callback in the pass may raise an exception or run a modal
// loop. The pass may destroy the `HostLoop`, which releases this object.
- (void)dataBecameAvailable:(NSNotification*)notification {
  [[self retain] autorelease];
  if (hostLoop != nullptr) {
    [self watch];
    hostLoop->descriptorBecameReadable();
  }
}

@end

namespace vel::cocoa {

namespace {

int duplicate(int descriptor) {
  const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
  if (copy < 0) {
    throw std::system_error(errno, std::generic_category(), "fcntl");
  }
  return copy;
}

}  // namespace

HostLoop::HostLoop(int descriptor, std::function<void()> runPass)
    : runPass_(std::make_shared<const std::function<void()>>(std::move(runPass))) {
  const int watchedDescriptor = duplicate(descriptor);
  observer_ = [[VelInputObserver alloc] init];
  observer_->hostLoop = this;
  observer_->fileHandle = [[NSFileHandle alloc] initWithFileDescriptor:watchedDescriptor
                                                        closeOnDealloc:YES];
  [[NSNotificationCenter defaultCenter] addObserver:observer_
                                           selector:@selector(dataBecameAvailable:)
                                               name:NSFileHandleDataAvailableNotification
                                             object:observer_->fileHandle];
  [observer_ watch];
}

HostLoop::~HostLoop() {
  [[NSNotificationCenter defaultCenter] removeObserver:observer_];
  observer_->hostLoop = nullptr;
  // Only `closeFile` ends the watch in each mode. It closes the descriptor too, so the file handle
  // has a duplicate of the run loop's descriptor.
  [observer_->fileHandle closeFile];
  [observer_->fileHandle release];
  [observer_ release];
}

void HostLoop::descriptorBecameReadable() {
  const auto runPass = runPass_;
  (*runPass)();
}

}  // namespace vel::cocoa
