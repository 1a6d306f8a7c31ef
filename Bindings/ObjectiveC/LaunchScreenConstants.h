// Constants that the library and its hosts share, for hosts in Objective-C.
#pragma once

#import <Foundation/Foundation.h>

/// The keys of the parameters of a content request, and the values of "mode".
typedef struct LaunchScreenContentRequestKeys {
  /// Key of the mode, which says when the host may close the launch screen.
  NSString* mode;
  /// The mode in which the host may close the launch screen at any time.
  NSString* skip;
  /// The mode in which the host may not close the launch screen early.
  NSString* forced;
  /// Key of the maximum time for which the launch screen is shown, in seconds.
  NSString* maxDurationTime;
  /// Key of the name of the analytics event.
  NSString* event;
} LaunchScreenContentRequestKeys;

#ifdef __cplusplus
extern "C" {
#endif

/// The name of the engine that LaunchScreenManager serves.
extern NSString* const kLaunchScreenEngine;
extern const LaunchScreenContentRequestKeys LaunchScreenContentRequest;
/// The interval of the countdown in seconds.
extern const double expirationTimeStep;
/// The height and the minimum width of the activity indicator, in points.
extern const double activityIndicatorSide;
/// The class name of the main window of the host.
extern NSString* const LSUnityPlayerWindowClassName;
/// The class name of the content view controller of a consent dialog that the host may show.
extern NSString* const LSGDPRControllerClassName;

/// The version of the library, as a number, and as a string that contains the library's name.
extern const double VelLaunchScreenVersionNumber;
extern const char VelLaunchScreenVersionString[];

#ifdef __cplusplus
}
#endif
