// Constants that the library and its hosts share.
#pragma once

#include <string_view>

#include "Platform/Foundation/Export.h"

namespace vel {

/// The keys of the parameters of a content request, and the values of "mode".
struct LaunchScreenContentRequestKeys {
  /// Key of the mode, which says when the host may close the launch screen.
  std::string_view mode;
  /// The mode in which the host may close the launch screen at any time.
  std::string_view skip;
  /// The mode in which the host may not close the launch screen early. The library does not check
  /// for this value, because every value other than `skip` has this meaning.
  std::string_view forced;
  /// Key of the maximum time for which the launch screen is shown, in seconds.
  std::string_view maxDurationTime;
  /// Key of the name of the analytics event.
  std::string_view event;
};

/// The name of the engine that LaunchScreenManager serves.
VEL_EXPORT extern const std::string_view kLaunchScreenEngine;
VEL_EXPORT extern const LaunchScreenContentRequestKeys LaunchScreenContentRequest;
/// The interval of the countdown in seconds. Each tick subtracts this value from the time left. The
/// time is used up when the time left is at or below this value.
VEL_EXPORT extern const double expirationTimeStep;
/// The height and the minimum width of the activity indicator, in points.
VEL_EXPORT extern const double activityIndicatorSide;
/// The class name of the main window of the host.
VEL_EXPORT extern const std::string_view LSUnityPlayerWindowClassName;
/// The class name of the content view controller of a consent dialog that the host may show.
VEL_EXPORT extern const std::string_view LSGDPRControllerClassName;

}  // namespace vel

extern "C" {
/// The version of the library, as a number, and as a string that contains the library's name.
VEL_EXPORT extern const double VelLaunchScreenVersionNumber;
VEL_EXPORT extern const char VelLaunchScreenVersionString[];
}
