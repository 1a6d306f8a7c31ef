// How the library calls the view delegate of the host.
#include <gtest/gtest.h>

#include "Bindings/ObjectiveC/LaunchScreenContentLibrary.h"
#include "Tests/Bindings/ObjectiveC/NativeObjects.h"

namespace {

class ObjectiveCViewDelegate : public testing::Test {
 protected:
  ~ObjectiveCViewDelegate() override {
    [content release];
    [pool release];
  }

  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  vel::Strong<vel::LaunchScreenContent> libraryContent = vel::LaunchScreenContent::init();
  LaunchScreenContent* content =
      [[LaunchScreenContent alloc] initWithLibraryContent:libraryContent];
};

TEST_F(ObjectiveCViewDelegate, GetsAllThreeCallsAndTheContent) {
  NativeViewDelegate* const delegate = [[[NativeViewDelegate alloc] init] autorelease];
  [content setDelegate:delegate];
  EXPECT_TRUE([content delegate] == delegate);
  libraryContent->launchScreenControllerWillPresent(nullptr);
  EXPECT_TRUE(delegate->view == content);
  EXPECT_TRUE(libraryContent->canLaunchScreenControllerDismiss(nullptr));
  libraryContent->launchScreenControllerDidDismiss(nullptr);
  NSArray* const expected =
      [NSArray arrayWithObjects:@"will appear", @"can disappear", @"did disappear", nil];
  EXPECT_TRUE([delegate->calls isEqual:expected]);
}

TEST_F(ObjectiveCViewDelegate, CanRefuseTheDismissal) {
  NativeViewDelegate* const delegate = [[[NativeViewDelegate alloc] init] autorelease];
  delegate->mayDisappear = NO;
  [content setDelegate:delegate];
  EXPECT_FALSE(libraryContent->canLaunchScreenControllerDismiss(nullptr));
}

TEST_F(ObjectiveCViewDelegate, NeedNotImplementAnyOperation) {
  [content setDelegate:[[[SilentViewDelegate alloc] init] autorelease]];
  libraryContent->launchScreenControllerWillPresent(nullptr);
  EXPECT_TRUE(libraryContent->canLaunchScreenControllerDismiss(nullptr));
  libraryContent->launchScreenControllerDidDismiss(nullptr);
}

TEST_F(ObjectiveCViewDelegate, GetsNoCallAfterItsRemoval) {
  NativeViewDelegate* const delegate = [[[NativeViewDelegate alloc] init] autorelease];
  [content setDelegate:delegate];
  [content setDelegate:nil];
  libraryContent->launchScreenControllerWillPresent(nullptr);
  EXPECT_EQ([delegate->calls count], 0U);
}

TEST_F(ObjectiveCViewDelegate, GetsNoCallAfterTheHostReleasesTheContent) {
  NativeViewDelegate* const delegate = [[[NativeViewDelegate alloc] init] autorelease];
  [content setDelegate:delegate];
  [content release];
  content = nil;
  libraryContent->launchScreenControllerWillPresent(nullptr);
  EXPECT_EQ([delegate->calls count], 0U);
}

}  // namespace
