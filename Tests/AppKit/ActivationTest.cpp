// Deactivation and activation: the user goes to another application and comes back.
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class ActivationTest : public RecordedTest {
 protected:
  void deactivate() { platform.windowSystem().userDeactivatesApplication(); }
  void activate() { platform.windowSystem().userActivatesApplication(); }
};

TEST_F(ActivationTest, ANewApplicationIsActive) { EXPECT_TRUE(NSApp->isActive()); }

TEST_F(ActivationTest, DeactivationIsPostedBeforeTheKeyWindowResignsKey) {
  openKeyWindow("A");
  recorder.take();
  std::string keyInHandler;
  recorder.onNext("application resigns active", [&] { keyInHandler = keyWindowName(); });
  deactivate();
  EXPECT_EQ(recorder.take(), (Events{"application resigns active", "A resigns key"}));
  EXPECT_EQ(keyInHandler, "A");
  EXPECT_EQ(keyWindowName(), "none");
  EXPECT_FALSE(NSApp->isActive());
}

TEST_F(ActivationTest, DeactivationWithoutAKeyWindowPostsOneNotification) {
  open("A");
  deactivate();
  EXPECT_EQ(recorder.take(), Events{"application resigns active"});
}

TEST_F(ActivationTest, ThePreviousKeyWindowBecomesKeyBeforeActivationIsPosted) {
  openKeyWindow("A");
  open("B");
  deactivate();
  recorder.take();
  activate();
  EXPECT_EQ(recorder.take(), (Events{"A becomes key", "application becomes active"}));
  EXPECT_TRUE(NSApp->isActive());
}

TEST_F(ActivationTest, ActivationWithoutAPreviousKeyWindowMakesNoWindowKey) {
  open("A");
  deactivate();
  recorder.take();
  activate();
  EXPECT_EQ(recorder.take(), Events{"application becomes active"});
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(ActivationTest, APreviousKeyWindowThatIsClosedDoesNotBecomeKey) {
  open("B");
  const auto previous = openKeyWindow("A");
  deactivate();
  previous->close();
  recorder.take();
  activate();
  EXPECT_EQ(recorder.take(), Events{"application becomes active"});
}

TEST_F(ActivationTest, APreviousKeyWindowThatIsDestroyedDoesNotBecomeKey) {
  Strong<NSWindow> previous = openKeyWindow("A");
  deactivate();
  previous->close();
  previous.reset();
  activate();
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(ActivationTest, ThePreviousKeyWindowReplacesAWindowMadeKeyWhileInactive) {
  openKeyWindow("A");
  const auto windowB = open("B");
  deactivate();
  windowB->makeKeyWindow();
  recorder.take();
  activate();
  EXPECT_EQ(recorder.take(),
            (Events{"B resigns key", "A becomes key", "application becomes active"}));
}

TEST_F(ActivationTest, ASecondDeactivationOrActivationPostsNothing) {
  openKeyWindow("A");
  activate();
  EXPECT_EQ(recorder.take(), Events{"A becomes key"});
  deactivate();
  deactivate();
  EXPECT_EQ(recorder.take(), (Events{"application resigns active", "A resigns key"}));
  activate();
  activate();
  EXPECT_EQ(recorder.take(), (Events{"A becomes key", "application becomes active"}));
}

TEST_F(ActivationTest, ActivationRestoresTheKeyWindowOfTheLastDeactivation) {
  openKeyWindow("A");
  openKeyWindow("B");
  deactivate();
  activate();
  EXPECT_EQ(keyWindowName(), "B");
  platform.windowSystem().userMovesFocusAway();
  deactivate();
  activate();
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(ActivationTest, AWindowThatAHandlerMakesKeyDuringDeactivationStaysKey) {
  openKeyWindow("A");
  const auto windowB = open("B");
  recorder.onNext("A resigns key", [&] { windowB->makeKeyWindow(); });
  deactivate();
  EXPECT_EQ(keyWindowName(), "B");
}

}  // namespace
}  // namespace vel::test
