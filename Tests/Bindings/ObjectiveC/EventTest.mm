// The library passes each event to the class MetricsCenter, if the host has that class.
#include <gmock/gmock.h>
#include <objc/runtime.h>

#include "Bindings/ObjectiveC/NativeApplication.h"
#include "Bindings/ObjectiveC/NativeValues.h"
#include "Tests/Support/VirtualPlatform.h"

namespace {

std::vector<std::string>& recordedEvents() {
  static std::vector<std::string> events;
  return events;
}

}  // namespace

// At run time, the test creates the class MetricsCenter with the logEvent: of EventRecorder.
@interface EventRecorder : NSObject
+ (void)logEvent:(NSString*)name;
@end
@implementation EventRecorder
+ (void)logEvent:(NSString*)name {
  recordedEvents().push_back(vel_objc::textOf(name));
}
@end

namespace {

using testing::ElementsAre;

// A process cannot remove a class. One test therefore records an event without MetricsCenter, and
// then an event with MetricsCenter.
TEST(ObjectiveCEvent, GoesToMetricsCenterAsSoonAsTheClassExists) {
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  vel::test::VirtualPlatform platform;
  vel_objc::recordEvent("first");
  EXPECT_THAT(platform.log, ElementsAre("MetricsCenter (+[MetricsCenter logEvent:]): first"));

  Class const center = objc_allocateClassPair([NSObject class], "MetricsCenter", 0);
  class_addMethod(
      object_getClass(static_cast<id>(center)), @selector(logEvent:),
      method_getImplementation(class_getClassMethod([EventRecorder class], @selector(logEvent:))),
      "v@:@");
  objc_registerClassPair(center);
  vel_objc::recordEvent("second");
  EXPECT_THAT(recordedEvents(), ElementsAre("second"));
  EXPECT_THAT(platform.log, ElementsAre("MetricsCenter (+[MetricsCenter logEvent:]): first"));
  [pool release];
}

}  // namespace
