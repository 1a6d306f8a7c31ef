// The first LaunchScreenManager of a process starts the library.
#include <gmock/gmock.h>

#include <thread>

#include "Platform/Foundation/NSLog.h"
#include "Tests/Bindings/ObjectiveC/NativeObjects.h"

namespace {

TEST(ObjectiveCStart, TheFirstManagerMustBeCreatedOnTheMainThread) {
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  EXPECT_TRUE([NSThread isMainThread]);
  std::vector<std::string> log;
  vel::setNSLogSink([&log](std::string_view line) { log.emplace_back(line); });
  std::thread([] {
    NSAutoreleasePool* const threadPool = [[NSAutoreleasePool alloc] init];
    EXPECT_TRUE([[LaunchScreenManager alloc] init] == nil);
    [threadPool release];
  }).join();
  vel::setNSLogSink(nullptr);
  EXPECT_THAT(log,
              testing::ElementsAre("LaunchScreenManager (-[LaunchScreenManager init]): the first "
                                   "manager must be created on the main thread"));
  [pool release];
}

}  // namespace
