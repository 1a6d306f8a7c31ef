#import "Bindings/ObjectiveC/LaunchScreenConstants.h"

NSString* const kLaunchScreenEngine = @"launch_screen";
const LaunchScreenContentRequestKeys LaunchScreenContentRequest = {@"mode", @"skip", @"forced",
                                                                   @"max_duration_time", @"event"};
const double expirationTimeStep = 0.1;
const double activityIndicatorSide = 32.0;
NSString* const LSUnityPlayerWindowClassName = @"PlayerWindow";
NSString* const LSGDPRControllerClassName = @"GDPRViewController";
