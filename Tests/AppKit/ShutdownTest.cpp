// `shutDown` ends the application and then runs the shutdown steps. A shutdown step is a function
// that a `ShutdownStep` registers.
#include <memory>

#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/ReleasePool.h"
#include "Tests/AppKit/EventRecorder.h"
#include "Tests/Foundation/Ticker.h"

namespace vel::test {
namespace {

std::function<void()> actionOfStep;

const ShutdownStep step([] {
  if (actionOfStep) {
    actionOfStep();
  }
});

class ShutdownTest : public EventRecordingTest {
 protected:
  ShutdownTest() = default;
  ~ShutdownTest() override { actionOfStep = nullptr; }
};

TEST_F(ShutdownTest, StepsRunAfterTheApplicationHasEnded) {
  addController(openWindow("A"), "controller");
  recorder.takeEvents();
  actionOfStep = [this] {
    recorder.record(NSApp == nullptr ? "step" : "step while the application exists");
  };
  shutDown();
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"controller will disappear", "controller did disappear", "step"}));
}

TEST_F(ShutdownTest, OnlyShutDownRunsTheStepsIfNoApplicationExists) {
  NSApplication::stop();
  actionOfStep = [this] { recorder.record("step"); };
  NSApplication::stop();
  EXPECT_EQ(recorder.takeEvents(), Events{});
  shutDown();
  EXPECT_EQ(recorder.takeEvents(), Events{"step"});
}

TEST_F(ShutdownTest, StopRemovesAllNotificationObservers) {
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const auto listener = make<NotificationRecorder>(recorder);
  listener->observe();
  ASSERT_NE(center.registrationCount(listener.get()), 0u);
  NSApplication::stop();
  EXPECT_EQ(center.registrationCount(listener.get()), 0u);
  center.postNotificationNameObject(NSWindowDidBecomeKeyNotification, nullptr);
  EXPECT_TRUE(recorder.takeEvents().empty());
}

TEST_F(ShutdownTest, TimersAndWorkAddedDuringShutDownAreDiscarded) {
  const auto ticker = make<Ticker>();
  std::size_t timerCount = 0;
  std::size_t workCount = 0;
  addController(openWindow("A"), "controller");
  recorder.onNext("controller did disappear", [&] {
    schedule(0.1, ticker);
    timerCount = NSRunLoop::mainRunLoop().timerCount();
  });
  actionOfStep = [&] {
    dispatch_async(dispatch_get_main_queue(), [this] { recorder.record("work"); });
    workCount = dispatch_get_main_queue().pendingWorkCount();
  };
  shutDown();
  ASSERT_EQ(timerCount, 1u);
  ASSERT_EQ(workCount, 1u);
  recorder.takeEvents();
  EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
  EXPECT_TRUE(recorder.takeEvents().empty());
}

TEST_F(ShutdownTest, ShutDownReleasesTheObjectsInTheReleasePool) {
  Strong<Ticker> ticker = make<Ticker>();
  const Weak<Ticker> weakTicker = releaseLater(ticker);
  ticker.reset();
  ASSERT_FALSE(weakTicker.expired());
  shutDown();
  EXPECT_TRUE(weakTicker.expired());
}

TEST_F(ShutdownTest, ShutDownRestoresTheDefaultRunLoopMode) {
  NSApp->beginModalSession(openWindow("A"));
  NSApp->setRunLoopMode(NSEventTrackingRunLoopMode);
  ASSERT_EQ(NSRunLoop::mainRunLoop().mode(), NSEventTrackingRunLoopMode);
  shutDown();
  EXPECT_EQ(NSRunLoop::mainRunLoop().mode(), NSDefaultRunLoopMode);
}

TEST_F(ShutdownTest, ReleasingAStoppedApplicationDoesNotChangeTheRunLoopMode) {
  Strong<NSApplication> stoppedApplication = NSApp;
  NSApplication::stop();
  NSApplication::start(std::make_unique<HeadlessWindowSystem>());
  NSApp->setRunLoopMode(NSEventTrackingRunLoopMode);
  stoppedApplication.reset();
  EXPECT_EQ(NSRunLoop::mainRunLoop().mode(), NSEventTrackingRunLoopMode);
}

}  // namespace
}  // namespace vel::test
