#include <memory>

#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/ReleasePool.h"
#include "Tests/AppKit/EventRecorder.h"
#include "Tests/Foundation/Ticker.h"

namespace vel::test {
namespace {

std::function<void()> workOfStep;

const ShutdownStep runsWork([] {
  if (workOfStep) {
    workOfStep();
  }
});

class ShutdownTest : public RecordedTest {
 protected:
  ShutdownTest() = default;
  ~ShutdownTest() override { workOfStep = nullptr; }
};

TEST_F(ShutdownTest, RunsTheStepsAfterTheWindowsHaveClosed) {
  recordingControllerIn(open("A"), "controller");
  recorder.take();
  workOfStep = [this] { recorder.record(NSApp == nullptr ? "step" : "step before the end"); };
  shutDown();
  EXPECT_EQ(recorder.take(),
            (Events{"controller will disappear", "controller did disappear", "step"}));
}

TEST_F(ShutdownTest, RunsTheStepsWithoutAnApplication) {
  NSApplication::stop();
  workOfStep = [this] { recorder.record("step"); };
  NSApplication::stop();
  EXPECT_EQ(recorder.take(), Events{});
  shutDown();
  EXPECT_EQ(recorder.take(), Events{"step"});
}

TEST_F(ShutdownTest, RemovesEveryObserver) {
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const auto listener = make<NotificationRecorder>(recorder);
  listener->observe();
  ASSERT_NE(center.registrationCount(listener.get()), 0u);
  NSApplication::stop();
  EXPECT_EQ(center.registrationCount(listener.get()), 0u);
  center.postNotificationNameObject(NSWindowDidBecomeKeyNotification, nullptr);
  EXPECT_TRUE(recorder.take().empty());
}

TEST_F(ShutdownTest, RemovesTimersAndWorkThatClosingWindowsAndStepsHaveAdded) {
  const auto ticker = make<Ticker>();
  recordingControllerIn(open("A"), "controller");
  recorder.onNext("controller did disappear", [&] { schedule(0.1, ticker); });
  workOfStep = [this] {
    dispatch_async(dispatch_get_main_queue(), [this] { recorder.record("work"); });
  };
  shutDown();
  recorder.take();
  EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
  EXPECT_EQ(dispatch_get_main_queue().pendingCount(), 0u);
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
  EXPECT_TRUE(recorder.take().empty());
}

TEST_F(ShutdownTest, DrainsTheReleasePool) {
  Strong<Ticker> object = make<Ticker>();
  const Weak<Ticker> weak = releaseLater(object);
  object.reset();
  ASSERT_FALSE(weak.expired());
  shutDown();
  EXPECT_TRUE(weak.expired());
}

TEST_F(ShutdownTest, RestoresTheDefaultModeOfTheRunLoop) {
  NSApp->beginModalRun(open("A"));
  NSApp->setRunLoopMode(NSEventTrackingRunLoopMode);
  ASSERT_EQ(NSRunLoop::mainRunLoop().mode(), NSEventTrackingRunLoopMode);
  shutDown();
  EXPECT_EQ(NSRunLoop::mainRunLoop().mode(), NSDefaultRunLoopMode);
}

TEST_F(ShutdownTest, AnEndedApplicationThatAHostKeepsDoesNotDisturbTheNextOne) {
  Strong<NSApplication> ended = NSApp;
  NSApplication::stop();
  NSApplication::start(std::make_unique<HeadlessWindowSystem>());
  NSApp->setRunLoopMode(NSEventTrackingRunLoopMode);
  ended.reset();
  EXPECT_EQ(NSRunLoop::mainRunLoop().mode(), NSEventTrackingRunLoopMode);
}

}  // namespace
}  // namespace vel::test
