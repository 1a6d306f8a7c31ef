// The vocabulary that the library and its hosts share.
#pragma once

#include <string_view>

#include "Platform/Foundation/Export.h"

namespace vel {

/// The keys of a content request's parameters, and the values of "mode".
struct LaunchScreenContentRequestKeys {
  std::string_view mode;    ///< key: how the launch screen may be closed
  std::string_view skip;    ///< the mode in which the host may close it at any time
  std::string_view forced;  ///< the other mode; never compared: all but "skip" means it
  std::string_view
      maxDurationTime;     ///< key: the longest time the launch screen stays up, in seconds
  std::string_view event;  ///< key: the name of the analytics event
};

/// The engine that the launch screen's resolver serves.
VEL_EXPORT extern const std::string_view kLaunchScreenEngine;
VEL_EXPORT extern const LaunchScreenContentRequestKeys LaunchScreenContentRequest;
/// Seconds: the interval of the countdown, what a tick takes off the time left, and the time at or
/// below which it counts as used up.
VEL_EXPORT extern const double expirationTimeStep;
/// Points: the activity indicator's height, and its least width.
VEL_EXPORT extern const double activityIndicatorSide;
/// The class name of the host's main (player) window.
VEL_EXPORT extern const std::string_view LSUnityPlayerWindowClassName;
/// The class name of a consent view controller that the host may show in a window of its own.
VEL_EXPORT extern const std::string_view LSGDPRControllerClassName;

}  // namespace vel

extern "C" {
/// The library's version, and a text that identifies it.
VEL_EXPORT extern const double VelLaunchScreenVersionNumber;
VEL_EXPORT extern const char VelLaunchScreenVersionString[];
}
