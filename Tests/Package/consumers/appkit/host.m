// A host in Objective-C. It prints the name of the engine that LaunchScreenManager serves, and
// whether the host can create a LaunchScreenManager.
#import <VelLaunchScreen/ObjectiveC.h>
#include <stdio.h>

int main(void) {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  LaunchScreenManager* manager = [[LaunchScreenManager alloc] init];
  printf("engine %s, %s\n", [kLaunchScreenEngine UTF8String],
         manager != nil ? "has a manager" : "has no manager");
  [manager release];
  [pool release];
  return 0;
}
