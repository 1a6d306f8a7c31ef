#include "LaunchScreen/Helpers/LaunchScreenConstants.h"

namespace vel {

const std::string_view kLaunchScreenEngine = "launch_screen";

const LaunchScreenContentRequestKeys LaunchScreenContentRequest = {
    .mode = "mode",
    .skip = "skip",
    .forced = "forced",
    .maxDurationTime = "max_duration_time",
    .event = "event",
};

const double expirationTimeStep = 0.1;
const double activityIndicatorSide = 32.0;

const std::string_view LSUnityPlayerWindowClassName = "PlayerWindow";
const std::string_view LSGDPRControllerClassName = "GDPRViewController";

}  // namespace vel

const double VelLaunchScreenVersionNumber = 1.0;
const char VelLaunchScreenVersionString[] = "VelLaunchScreen 1.0";
