// Includes every header that a host in Objective-C uses.
#pragma once

#import "Bindings/ObjectiveC/ContentBroker.h"
#import "Bindings/ObjectiveC/LaunchScreenConfiguration.h"
#import "Bindings/ObjectiveC/LaunchScreenConstants.h"
#import "Bindings/ObjectiveC/LaunchScreenContent.h"
#import "Bindings/ObjectiveC/LaunchScreenManager.h"
