// Tests that AppKit's run loop runs a pass of the library when a descriptor is readable.
#include "Platform/WindowSystem/Cocoa/HostLoop.h"

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "Platform/WindowSystem/Cocoa/NativeException.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

class HostLoopTest : public testing::Test {
 protected:
  HostLoopTest() {
    EXPECT_EQ(pipe(descriptors.data()), 0);
    EXPECT_EQ(write(descriptors[1], "x", 1), 1);  // descriptors[0] stays readable
  }
  ~HostLoopTest() override {
    close(descriptors[0]);
    close(descriptors[1]);
    [pool release];
  }

  /// Runs AppKit's run loop until at least `count` passes have begun. Returns false after
  /// `kTimeout`.
  bool runUntilPass(int count, NSString* mode = ::NSDefaultRunLoopMode) {
    const Nanoseconds limit = steadyNow() + kTimeout;
    while (passes < count && steadyNow() < limit) {
      cocoa::tryToRun([mode] {
        [[::NSRunLoop currentRunLoop] runMode:mode
                                   beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.1]];
      });
    }
    return passes >= count;
  }

  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  std::array<int, 2> descriptors{};
  int passes = 0;
};

TEST_F(HostLoopTest, PassesContinueAfterAnExceptionInAPass) {
  const cocoa::HostLoop loop(descriptors[0], [this] {
    if (++passes == 1) {
      [NSException raise:NSGenericException format:@"the first pass raises"];
    }
  });
  EXPECT_TRUE(runUntilPass(2));
}

TEST_F(HostLoopTest, AModalLoopInsideAPassRunsPasses) {
  bool hasNestedPass = false;
  const cocoa::HostLoop loop(descriptors[0], [&] {
    if (++passes == 1) {
      hasNestedPass = runUntilPass(2, ::NSModalPanelRunLoopMode);
    }
  });
  EXPECT_TRUE(runUntilPass(1));
  EXPECT_TRUE(hasNestedPass);
}

TEST_F(HostLoopTest, NoPassRunsDuringEventTracking) {
  const cocoa::HostLoop loop(descriptors[0], [this] { ++passes; });
  for (int i = 0; i < 5; ++i) {
    [[::NSRunLoop currentRunLoop] runMode: ::NSEventTrackingRunLoopMode
                               beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.02]];
  }
  EXPECT_EQ(passes, 0);
  EXPECT_TRUE(runUntilPass(1));
}

}  // namespace
}  // namespace vel::test
