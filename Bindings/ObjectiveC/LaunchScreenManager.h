#pragma once

#import "Bindings/ObjectiveC/ContentBroker.h"

struct VelManagerReference;

/// The entry point of the library. The host creates a manager, activates it with its content broker
/// and requests content from it. The manager turns a request into a launch screen, counts down the
/// time while the user can see it, dismisses it and records one analytics event.
///
/// The event goes to the operation `logEvent:` of the class MetricsCenter if the process has such a
/// class, and to the log otherwise. The argument of `logEvent:` is a new NSString with the name of
/// the event, not the object in the parameters of the request.
///
/// The manager uses the broker only during `activate:` and does not retain it. It does not retain
/// its delegate either: see `setDelegate:` in ContentResolver.
///
/// The library works in the native run loop of the main thread, so a host that runs [NSApp run]
/// does not call the library in its frames. The host must not release the manager before the launch
/// screen has ended. Otherwise the delegates receive no further calls.
///
/// Only the main thread may use this class. Exception: any thread may call
/// `contentDataForContentRequest:` and `dismissLaunchScreen`.
@interface LaunchScreenManager : NSObject <ContentResolver> {
 @private
  struct VelManagerReference* reference_;
}

/// Starts the library at the first call in a process. The first call must be on the main thread.
/// Logs the reason and returns nil if the library cannot start, for example without a display.
- (id)init;

/// Asks the launch screen to dismiss itself. It dismisses itself only if all its delegates agree.
- (void)dismissLaunchScreen;

@end
