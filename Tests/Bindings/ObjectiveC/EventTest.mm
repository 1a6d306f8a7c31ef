// Where the binding records the event.
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

// Has the operation that the test adds to the class MetricsCenter.
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

// One test, because a class cannot be removed from the process.
TEST(ObjectiveCEvent, GoesToTheClassMetricsCenterAsSoonAsTheProcessHasIt) {
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
