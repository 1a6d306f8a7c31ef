#include <memory>

#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/ReleasePool.h"
#include "Tests/AppKit/Stage.h"
#include "Tests/Foundation/Ticker.h"

namespace vel::test {
namespace {

std::function<void()> workOfStep;

const ShutdownStep runsWork([] {
  if (workOfStep) {
    workOfStep();
  }
});

class ShutdownTest : public StageTest {
 protected:
  ShutdownTest() = default;
  ~ShutdownTest() override { workOfStep = nullptr; }
};

TEST_F(ShutdownTest, RunsTheStepsAfterTheWindowsHaveClosed) {
  actorIn(open("A"), "controller");
  stage.take();
  workOfStep = [this] { stage.tell(NSApp == nullptr ? "step" : "step before the end"); };
  shutDown();
  EXPECT_EQ(stage.take(), (Story{"controller will disappear", "controller did disappear", "step"}));
}

TEST_F(ShutdownTest, RunsTheStepsWithoutAnApplication) {
  NSApplication::stop();
  workOfStep = [this] { stage.tell("step"); };
  NSApplication::stop();
  EXPECT_EQ(stage.take(), Story{});
  shutDown();
  EXPECT_EQ(stage.take(), Story{"step"});
}

TEST_F(ShutdownTest, RemovesEveryObserver) {
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const auto listener = make<Listener>(stage);
  listener->listen();
  ASSERT_NE(center.registrationCount(listener.get()), 0u);
  NSApplication::stop();
  EXPECT_EQ(center.registrationCount(listener.get()), 0u);
  center.postNotificationNameObject(NSWindowDidBecomeKeyNotification, nullptr);
  EXPECT_TRUE(stage.take().empty());
}

TEST_F(ShutdownTest, RemovesTimersAndWorkThatClosingWindowsAndStepsHaveAdded) {
  const auto ticker = make<Ticker>();
  actorIn(open("A"), "controller");
  stage.at("controller did disappear", [&] { schedule(0.1, ticker); });
  workOfStep = [this] {
    dispatch_async(dispatch_get_main_queue(), [this] { stage.tell("work"); });
  };
  shutDown();
  stage.take();
  EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
  EXPECT_EQ(dispatch_get_main_queue().pendingCount(), 0u);
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
  EXPECT_TRUE(stage.take().empty());
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
