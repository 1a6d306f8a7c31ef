#import "Bindings/ObjectiveC/LaunchScreenConfiguration.h"

#include "Bindings/ObjectiveC/NativeValues.h"
#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"

struct VelConfigurationReference {
  vel::Strong<vel::LaunchScreenConfiguration> configuration;
};

// The native object of the default configuration, retained. Nil until a host reads or sets the
// default configuration.
static LaunchScreenConfiguration* defaultObject = nil;

@interface LaunchScreenConfiguration (Library)
- (id)initWithConfiguration:(const vel::Strong<vel::LaunchScreenConfiguration>&)configuration;
+ (void)keepDefaultObject:(LaunchScreenConfiguration*)configuration;
@end

@implementation LaunchScreenConfiguration

- (id)init {
  return [self initWithConfiguration:vel::LaunchScreenConfiguration::init()];
}

- (id)initWithConfiguration:(const vel::Strong<vel::LaunchScreenConfiguration>&)configuration {
  self = [super init];
  if (self != nil) {
    reference_ = new VelConfigurationReference{configuration};
  }
  return self;
}

- (void)dealloc {
  delete reference_;
  [super dealloc];
}

+ (void)keepDefaultObject:(LaunchScreenConfiguration*)configuration {
  [configuration retain];
  [defaultObject release];
  defaultObject = configuration;
}

+ (LaunchScreenConfiguration*)defaultConfiguration {
  return [self getDefaultConfiguration];
}

// C++ code may have replaced the default configuration. Then the host needs another native object.
+ (LaunchScreenConfiguration*)getDefaultConfiguration {
  const auto configuration = vel::LaunchScreenConfiguration::getDefaultConfiguration();
  if (defaultObject == nil || defaultObject->reference_->configuration != configuration) {
    [self keepDefaultObject:[[[LaunchScreenConfiguration alloc] initWithConfiguration:configuration]
                                autorelease]];
  }
  return [[defaultObject retain] autorelease];
}

+ (void)setDefaultConfiguration:(LaunchScreenConfiguration*)configuration {
  vel::LaunchScreenConfiguration::setDefaultConfiguration(
      configuration != nil ? configuration->reference_->configuration : nullptr);
  if (configuration != nil) {
    [self keepDefaultObject:configuration];
  }
}

- (BOOL)skipMode {
  return reference_->configuration->skipMode() ? YES : NO;
}

- (void)setSkipMode:(BOOL)skipMode {
  reference_->configuration->setSkipMode(skipMode != NO);
}

- (NSString*)nextEventName {
  return vel_objc::nativeString(reference_->configuration->nextEventName());
}

- (void)setNextEventName:(NSString*)name {
  reference_->configuration->setNextEventName(vel_objc::libraryString(name));
}

- (double)expirationTimeInterval {
  return reference_->configuration->expirationTimeInterval();
}

- (void)setExpirationTimeInterval:(double)seconds {
  reference_->configuration->setExpirationTimeInterval(seconds);
}

@end
