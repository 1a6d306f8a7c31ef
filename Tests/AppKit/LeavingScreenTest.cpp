// Windows that leave the screen: closed, miniaturised, destroyed by their owner, or lost because
// the connection to the window system ends.
#include <algorithm>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class LeavingScreenTest : public EventRecordingTest {
 protected:
  // Opens four windows. C is key, B was key before C, and A and D were never key.
  LeavingScreenTest() {
    openWindow("A");
    openKeyWindow("B");
    openKeyWindow("C");
    openWindow("D");
    recorder.takeEvents();
  }

  // The window on screen with this class name; null if there is no such window.
  static Strong<NSWindow> windowNamed(std::string_view name) {
    for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
      if (window->className() == name) {
        return window;
      }
    }
    return nullptr;
  }
};

TEST_F(LeavingScreenTest, ThePreviousKeyWindowBecomesKeyWhenTheKeyWindowCloses) {
  windowNamed("C")->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"C resigns key", "B becomes key"}));
}

TEST_F(LeavingScreenTest, AMiniaturisedWindowDoesNotBecomeKeyWhenTheKeyWindowCloses) {
  windowNamed("A")->makeKeyWindow();
  windowNamed("C")->makeKeyWindow();
  windowNamed("A")->miniaturize();
  recorder.takeEvents();
  windowNamed("C")->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"C resigns key", "B becomes key"}));
}

TEST_F(LeavingScreenTest, TheFrontWindowBecomesKeyIfNoRemainingWindowWasEverKey) {
  windowNamed("B")->close();
  recorder.takeEvents();
  windowNamed("C")->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"C resigns key", "D becomes key"}));
}

TEST_F(LeavingScreenTest, NoWindowIsKeyAfterAllAreClosed) {
  for (const char* name : {"A", "B", "D", "C"}) {
    windowNamed(name)->close();
  }
  EXPECT_EQ(keyWindowName(), "none");
  EXPECT_EQ(recorder.takeEvents(), Events{"C resigns key"});
}

TEST_F(LeavingScreenTest, ANewlyOpenedFrontWindowBecomesKeyIfNoRemainingWindowWasEverKey) {
  windowNamed("B")->close();
  openWindow("E");
  windowNamed("C")->close();
  EXPECT_EQ(keyWindowName(), "E");
}

TEST_F(LeavingScreenTest, AHandlerMayMakeAWindowKeyWhileTheKeyWindowCloses) {
  recorder.onNext("C resigns key", [] { windowNamed("A")->makeKeyWindow(); });
  windowNamed("C")->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"C resigns key", "A becomes key"}));
}

TEST_F(LeavingScreenTest, AHandlerMayCloseTheWindowThatWouldBecomeKey) {
  recorder.onNext("C resigns key", [] { windowNamed("B")->close(); });
  windowNamed("C")->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"C resigns key", "D becomes key"}));
}

TEST_F(LeavingScreenTest, AHandlerMayCloseAllWindows) {
  recorder.onNext("C resigns key", [] {
    for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
      window->close();
    }
  });
  windowNamed("C")->close();
  EXPECT_EQ(recorder.takeEvents(), Events{"C resigns key"});
  EXPECT_TRUE(windowOrder().empty());
}

TEST_F(LeavingScreenTest, AClosedWindowIsOffScreenWhenItResignsKey) {
  Events orderInHandler;
  recorder.onNext("C resigns key", [&] { orderInHandler = windowOrder(); });
  windowNamed("C")->close();
  EXPECT_EQ(orderInHandler, (Events{"D", "B", "A"}));
}

TEST_F(LeavingScreenTest, ClosingAWindowThatIsNotKeyDoesNotChangeTheKeyWindow) {
  windowNamed("D")->close();
  EXPECT_EQ(keyWindowName(), "C");
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LeavingScreenTest, TheViewDisappearsBeforeTheClosedWindowResignsKey) {
  addController(windowNamed("C"), "view");
  recorder.takeEvents();
  windowNamed("C")->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear",
                                           "C resigns key", "B becomes key"}));
}

TEST_F(LeavingScreenTest, ClosingAWindowClosesItsNewestSheetFirstAndTheWindowLast) {
  const auto window = windowNamed("C");
  const auto hostController = addController(window, "host");
  const auto firstController = makeController("first");
  const auto secondController = makeController("second");
  hostController->presentViewControllerAsSheet(firstController);
  hostController->presentViewControllerAsSheet(secondController);
  recorder.takeEvents();
  window->close();
  // Both sheets have the name "NSWindow".
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"second will disappear", "second did disappear", "NSWindow resigns key",
                    "NSWindow becomes key", "first will disappear", "first did disappear",
                    "NSWindow resigns key", "C becomes key", "host will disappear",
                    "host did disappear", "C resigns key", "B becomes key"}));
  EXPECT_TRUE(window->sheets().empty());
}

TEST_F(LeavingScreenTest, ALifeCycleMethodMayCloseTheWindowThatIsClosing) {
  const auto window = windowNamed("C");
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  recorder.onNext("view will disappear", [&] { window->close(); });
  window->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear",
                                           "C resigns key", "B becomes key"}));
}

TEST_F(LeavingScreenTest, ALifeCycleMethodMayCloseTheWindowThatIsOpening) {
  const auto window = makeClosedWindow("E");
  const auto controller = addController(window, "view");
  recorder.onNext("view will appear", [&] { window->close(); });
  window->makeKeyAndOrderFront();
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"view will appear", "view will disappear", "view did disappear"}));
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(keyWindowName(), "C");
}

TEST_F(LeavingScreenTest, ALifeCycleMethodMayReleaseTheLastReferenceToItsWindow) {
  Strong<NSWindow> window = openWindow("E");
  addController(window, "view");
  const Weak<NSWindow> weakWindow = window;
  recorder.takeEvents();
  recorder.onNext("view will disappear", [&] { window.reset(); });
  window->close();
  EXPECT_TRUE(weakWindow.expired());
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear"}));
}

TEST_F(LeavingScreenTest, AMiniaturisedWindowIsOpenButOffScreenAndNotKey) {
  const auto window = windowNamed("C");
  window->miniaturize();
  EXPECT_EQ(windowOrder(), (Events{"D", "B", "A"}));
  EXPECT_EQ(recorder.takeEvents(), (Events{"C resigns key", "B becomes key", "C is miniaturised"}));
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(window->isMiniaturized());
  EXPECT_FALSE(window->isOnScreen());
}

TEST_F(LeavingScreenTest, MiniaturisingAWindowThatIsNotKeyPostsNoKeyNotification) {
  windowNamed("D")->miniaturize();
  EXPECT_EQ(recorder.takeEvents(), Events{"D is miniaturised"});
}

TEST_F(LeavingScreenTest, ADeminiaturisedWindowIsInFrontAndNotKey) {
  const auto window = windowNamed("B");
  window->miniaturize();
  recorder.takeEvents();
  window->deminiaturize();
  EXPECT_EQ(windowOrder(), (Events{"B", "D", "C", "A"}));
  EXPECT_EQ(recorder.takeEvents(), Events{"B is deminiaturised"});
  EXPECT_EQ(keyWindowName(), "C");
  EXPECT_FALSE(window->isMiniaturized());
}

TEST_F(LeavingScreenTest, MiniaturisingAndDeminiaturisingCallNoLifeCycleMethods) {
  const auto window = windowNamed("C");
  const auto controller = addController(window, "view");
  recorder.takeEvents();
  window->miniaturize();
  window->deminiaturize();
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"C resigns key", "B becomes key", "C is miniaturised", "C is deminiaturised"}));
  EXPECT_TRUE(controller->isShown());
}

TEST_F(LeavingScreenTest, MiniaturisingAClosedOrMiniaturisedWindowDoesNothing) {
  const auto closedWindow = makeClosedWindow("E");
  closedWindow->miniaturize();
  const auto window = windowNamed("D");
  window->miniaturize();
  window->miniaturize();
  EXPECT_EQ(recorder.takeEvents(), Events{"D is miniaturised"});
}

TEST_F(LeavingScreenTest, DeminiaturisingAWindowThatIsNotMiniaturisedDoesNothing) {
  windowNamed("D")->deminiaturize();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LeavingScreenTest, AMiniaturisedWindowCanBeClosedAndOpenedAgain) {
  const auto window = windowNamed("C");
  addController(window, "view");
  window->miniaturize();
  recorder.takeEvents();
  window->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear"}));
  EXPECT_FALSE(window->isMiniaturized());
  window->orderFront();
  EXPECT_TRUE(window->isOnScreen());
}

TEST_F(LeavingScreenTest, AWindowIsClosedWhenItsOwnerDestroysIt) {
  const auto window = windowNamed("C");
  addController(window, "view");
  recorder.takeEvents();
  platform.windowSystem().ownerDestroysWindow(window->handle());
  EXPECT_EQ(recorder.takeEvents(), (Events{"view will disappear", "view did disappear",
                                           "C resigns key", "B becomes key"}));
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(window->handle(), WindowHandle::None);
}

TEST_F(LeavingScreenTest, AWindowCanBeOpenedAgainAfterItsOwnerHasDestroyedIt) {
  const auto window = windowNamed("C");
  platform.windowSystem().ownerDestroysWindow(window->handle());
  window->makeKeyAndOrderFront();
  EXPECT_EQ(keyWindowName(), "C");
  EXPECT_NE(platform.windowSystem().window(window->handle()), nullptr);
}

TEST_F(LeavingScreenTest, AClosedWindowLosesOnlyItsHandleWhenItsOwnerDestroysIt) {
  const auto window = windowNamed("C");
  window->close();
  recorder.takeEvents();
  platform.windowSystem().ownerDestroysWindow(window->handle());
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_EQ(window->handle(), WindowHandle::None);
}

TEST_F(LeavingScreenTest, AWindowMayBeDestroyedInsideAHandler) {
  recorder.onNext("C resigns key", [this] {
    platform.windowSystem().ownerDestroysWindow(windowNamed("B")->handle());
  });
  platform.windowSystem().ownerDestroysWindow(windowNamed("C")->handle());
  EXPECT_EQ(recorder.takeEvents(), (Events{"C resigns key", "D becomes key"}));
}

TEST_F(LeavingScreenTest, ALostConnectionClosesAllWindows) {
  addController(windowNamed("C"), "view");
  recorder.takeEvents();
  std::string reason;
  NSApp->setDisplayLostHandler([&](std::string_view text) {
    reason = text;
    EXPECT_TRUE(windowOrder().empty());
  });
  platform.windowSystem().serverClosesConnection("the server exited");
  EXPECT_EQ(reason, "the server exited");
  EXPECT_EQ(keyWindowName(), "none");
  EXPECT_EQ(mainWindowName(), "none");
  const Events events = recorder.takeEvents();
  EXPECT_NE(std::ranges::find(events, "view did disappear"), events.end());
  EXPECT_NE(std::ranges::find(events, "C resigns key"), events.end());
}

TEST_F(LeavingScreenTest, ALostConnectionEndsModalSessionsAndSheets) {
  const auto hostController = addController(windowNamed("C"), "host");
  hostController->presentViewControllerAsModalWindow(makeController("modal"));
  hostController->presentViewControllerAsSheet(makeController("sheet"));
  platform.windowSystem().serverClosesConnection("the server exited");
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_TRUE(hostController->presentedViewControllers().empty());
}

TEST_F(LeavingScreenTest, TheMainQueueStillRunsAfterTheConnectionIsLost) {
  platform.windowSystem().serverClosesConnection("the server exited");
  bool hasRun = false;
  dispatch_async(dispatch_get_main_queue(), [&hasRun] { hasRun = true; });
  platform.run(1);
  EXPECT_TRUE(hasRun);
}

}  // namespace
}  // namespace vel::test
