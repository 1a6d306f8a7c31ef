// The user switches to another application (deactivation) and back (activation).
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class ActivationTest : public EventRecordingTest {
 protected:
  void deactivate() { platform.windowSystem().userDeactivatesApplication(); }
  void activate() { platform.windowSystem().userActivatesApplication(); }
};

TEST_F(ActivationTest, ANewApplicationIsActive) { EXPECT_TRUE(NSApp->isActive()); }

TEST_F(ActivationTest, WillResignActiveIsPostedBeforeTheKeyWindowResignsKey) {
  openKeyWindow("A");
  recorder.takeEvents();
  std::string keyWindowInHandler;
  recorder.onNext("application resigns active", [&] { keyWindowInHandler = keyWindowName(); });
  deactivate();
  EXPECT_EQ(recorder.takeEvents(), (Events{"application resigns active", "A resigns key"}));
  EXPECT_EQ(keyWindowInHandler, "A");
  EXPECT_EQ(keyWindowName(), "none");
  EXPECT_FALSE(NSApp->isActive());
}

TEST_F(ActivationTest, DeactivationWithoutAKeyWindowPostsNoKeyNotification) {
  openWindow("A");
  deactivate();
  EXPECT_EQ(recorder.takeEvents(), Events{"application resigns active"});
}

TEST_F(ActivationTest, ThePreviousKeyWindowBecomesKeyBeforeDidBecomeActiveIsPosted) {
  openKeyWindow("A");
  openWindow("B");
  deactivate();
  recorder.takeEvents();
  activate();
  EXPECT_EQ(recorder.takeEvents(), (Events{"A becomes key", "application becomes active"}));
  EXPECT_TRUE(NSApp->isActive());
}

TEST_F(ActivationTest, ActivationWithoutAPreviousKeyWindowMakesNoWindowKey) {
  openWindow("A");
  deactivate();
  recorder.takeEvents();
  activate();
  EXPECT_EQ(recorder.takeEvents(), Events{"application becomes active"});
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(ActivationTest, APreviousKeyWindowThatIsClosedDoesNotBecomeKey) {
  openWindow("B");
  const auto previousWindow = openKeyWindow("A");
  deactivate();
  previousWindow->close();
  recorder.takeEvents();
  activate();
  EXPECT_EQ(recorder.takeEvents(), Events{"application becomes active"});
}

TEST_F(ActivationTest, APreviousKeyWindowThatIsDestroyedDoesNotBecomeKey) {
  Strong<NSWindow> previousWindow = openKeyWindow("A");
  deactivate();
  previousWindow->close();
  previousWindow.reset();
  activate();
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(ActivationTest, ThePreviousKeyWindowBecomesKeyEvenIfAnotherWindowIsKey) {
  openKeyWindow("A");
  const auto windowB = openWindow("B");
  deactivate();
  windowB->makeKeyWindow();
  recorder.takeEvents();
  activate();
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"B resigns key", "A becomes key", "application becomes active"}));
}

TEST_F(ActivationTest, ASecondDeactivationOrActivationPostsNothing) {
  openKeyWindow("A");
  recorder.takeEvents();
  activate();  // The application is already active.
  EXPECT_TRUE(recorder.events.empty());
  deactivate();
  deactivate();
  EXPECT_EQ(recorder.takeEvents(), (Events{"application resigns active", "A resigns key"}));
  activate();
  activate();
  EXPECT_EQ(recorder.takeEvents(), (Events{"A becomes key", "application becomes active"}));
}

TEST_F(ActivationTest, ActivationRestoresTheWindowThatWasKeyAtTheLastDeactivation) {
  openKeyWindow("A");
  openKeyWindow("B");
  deactivate();
  activate();
  EXPECT_EQ(keyWindowName(), "B");
  platform.windowSystem().userMovesFocusAway();  // Now no window is key.
  deactivate();
  activate();
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(ActivationTest, AHandlerMayMakeAnotherWindowKeyDuringDeactivation) {
  openKeyWindow("A");
  const auto windowB = openWindow("B");
  recorder.onNext("A resigns key", [&] { windowB->makeKeyWindow(); });
  deactivate();
  EXPECT_EQ(keyWindowName(), "B");
}

}  // namespace
}  // namespace vel::test
