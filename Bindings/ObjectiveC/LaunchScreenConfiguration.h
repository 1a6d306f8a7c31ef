#pragma once

#import <Foundation/Foundation.h>

struct VelConfigurationReference;

/// The settings of the launch screen, copied from the latest content request. The whole process
/// shares one default configuration. Only one thread at a time may use it.
///
/// This class has no `viewController`: the library cannot use an NSViewController of AppKit in
/// place of its own controller. The library also has no global variable `sDefaultConfiguration` for
/// Objective-C: a variable could not follow the default configuration, which the library creates at
/// the first request. Use `defaultConfiguration` and `setDefaultConfiguration:`.
@interface LaunchScreenConfiguration : NSObject {
 @private
  struct VelConfigurationReference* reference_;
}

/// The default configuration. Never nil: the first call creates it.
+ (LaunchScreenConfiguration*)defaultConfiguration;
+ (LaunchScreenConfiguration*)getDefaultConfiguration;
/// Replaces the default configuration. Logs and ignores nil.
+ (void)setDefaultConfiguration:(LaunchScreenConfiguration*)configuration;

/// YES if the host may close the launch screen at any time. No event is recorded in this mode.
- (BOOL)skipMode;
- (void)setSkipMode:(BOOL)skipMode;

/// The name of the analytics event that is recorded when the launch screen has ended, or nil.
- (NSString*)nextEventName;
- (void)setNextEventName:(NSString*)name;

/// The maximum time for which the launch screen is shown, in seconds.
- (double)expirationTimeInterval;
- (void)setExpirationTimeInterval:(double)seconds;

@end
