// The Objective-C interface adopts native windows of the process: `windowFor` creates a window of
// the library for a native window.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include "Bindings/ObjectiveC/LaunchScreenContent.h"
#include "Bindings/ObjectiveC/NativeApplication.h"
#include "HostInterfaces/MetricsCenter.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/Foundation/NSLog.h"
#include "Tests/Support/Cocoa/AppKitDisplay.h"

// A native window with an optional content view controller. The NSWindow of the free AppKit of
// GNUstep does not have the operation `contentViewController`.
@interface ControllerWindow : NSWindow {
 @public
  NSViewController* controller;  // not retained
}
@end
@implementation ControllerWindow
- (NSViewController*)contentViewController {
  return controller;
}
@end

// The library recognises a consent dialog by the class name of its content view controller:
// GDPRViewController.
@interface GDPRViewController : NSViewController
@end
@implementation GDPRViewController
@end

namespace {

class NativeApplicationTest : public testing::Test {
 protected:
  NativeApplicationTest() {
    vel::test::AppKitDisplay::shared();
    EXPECT_TRUE(vel_objc::startApplication(error)) << error;
    window = [[ControllerWindow alloc] initWithContentRect:NSMakeRect(200, 200, 400, 300)
                                                 styleMask:15
                                                   backing:NSBackingStoreBuffered
                                                     defer:NO];
    [window setReleasedWhenClosed:NO];
    [window makeKeyAndOrderFront:nil];
  }
  ~NativeApplicationTest() override {
    vel::NSApplication::stop();
    vel::MetricsCenter::setSink(nullptr);
    [window close];
    [window release];
    [pool release];
  }

  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  ControllerWindow* window = nil;
  std::string error;
};

TEST_F(NativeApplicationTest, AdoptsEachWindowOnlyOnce) {
  const auto libraryWindow = vel_objc::windowFor(window, error);
  ASSERT_NE(libraryWindow, nullptr) << error;
  EXPECT_EQ(libraryWindow->className(), "ControllerWindow");
  EXPECT_EQ(vel_objc::windowFor(window, error), libraryWindow);
  EXPECT_TRUE(vel_objc::startApplication(error));
  EXPECT_EQ(vel_objc::windowFor(window, error), libraryWindow);
}

TEST_F(NativeApplicationTest, AdoptsAWindowAgainAfterItHasClosed) {
  const auto libraryWindow = vel_objc::windowFor(window, error);
  ASSERT_NE(libraryWindow, nullptr) << error;
  [window close];
  vel::NSApp->windowSystem().deliverEvents();
  EXPECT_FALSE(libraryWindow->isVisible());
  [window makeKeyAndOrderFront:nil];
  const auto reopenedWindow = vel_objc::windowFor(window, error);
  EXPECT_NE(reopenedWindow, nullptr) << error;
  EXPECT_NE(reopenedWindow, libraryWindow);
}

TEST_F(NativeApplicationTest, AdoptsAReopenedWindowAgainEvenBeforeEventsAreDelivered) {
  const auto libraryWindow = vel_objc::windowFor(window, error);
  ASSERT_NE(libraryWindow, nullptr) << error;
  [window close];
  [window makeKeyAndOrderFront:nil];
  const auto reopenedWindow = vel_objc::windowFor(window, error);
  ASSERT_NE(reopenedWindow, nullptr) << error;
  EXPECT_NE(reopenedWindow, libraryWindow);
  vel::NSApp->windowSystem().deliverEvents();
  EXPECT_TRUE(reopenedWindow->isVisible());
}

#ifndef __has_feature
#define __has_feature(feature) 0
#endif
// The sanitizer for undefined behaviour needs file descriptors to check the types of objects.
#if !__has_feature(undefined_behavior_sanitizer)
TEST_F(NativeApplicationTest, StartApplicationFailsWithoutFileDescriptorsAndCanBeCalledAgain) {
  vel::NSApplication::stop();
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit noDescriptors{.rlim_cur = 0, .rlim_max = limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &noDescriptors);
  const bool hasStarted = vel_objc::startApplication(error);
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_FALSE(hasStarted);
  EXPECT_NE(error, "");
  EXPECT_TRUE(vel_objc::startApplication(error)) << error;
}
#endif

TEST_F(NativeApplicationTest, RefusesAPointerThatIsNotAWindowOfTheProcess) {
  // The type void* gives `other` the alignment that an NSWindow* requires.
  void* other = nullptr;
  EXPECT_EQ(vel_objc::windowFor(reinterpret_cast<NSWindow*>(&other), error), nullptr);
  EXPECT_NE(error, "");
}

TEST_F(NativeApplicationTest, RefusesEveryWindowAfterAShutdown) {
  vel::NSApplication::stop();
  EXPECT_EQ(vel_objc::windowFor(window, error), nullptr);
  EXPECT_EQ(error, "the library has been shut down");
}

TEST_F(NativeApplicationTest, TheLogHasTheReasonWhyAWindowCannotBeCovered) {
  vel::NSApplication::stop();
  std::vector<std::string> log;
  vel::setNSLogSink([&log](std::string_view line) { log.emplace_back(line); });
  [[[[LaunchScreenContent alloc] init] autorelease] presentForWindow:window withPresentationMode:0];
  vel::setNSLogSink(nullptr);
  EXPECT_THAT(log, testing::ElementsAre(
                       "LaunchScreenContent (-[LaunchScreenContent "
                       "presentForWindow:withPresentationMode:]): the library has been shut down"));
}

// Each call of `windowFor` also updates the content view controller of the library's window.
TEST_F(NativeApplicationTest, TheContentViewControllerHasTheClassNameOfTheNativeController) {
  const auto libraryWindow = vel_objc::windowFor(window, error);
  ASSERT_NE(libraryWindow, nullptr) << error;
  EXPECT_EQ(libraryWindow->contentViewController(), nullptr);

  window->controller = [[[GDPRViewController alloc] initWithNibName:nil bundle:nil] autorelease];
  vel_objc::windowFor(window, error);
  const auto controller = libraryWindow->contentViewController();
  ASSERT_NE(controller, nullptr);
  EXPECT_EQ(controller->className(), "GDPRViewController");
  vel_objc::windowFor(window, error);
  EXPECT_EQ(libraryWindow->contentViewController(), controller);

  window->controller = nil;
  vel_objc::windowFor(window, error);
  EXPECT_EQ(libraryWindow->contentViewController(), nullptr);
}

}  // namespace
