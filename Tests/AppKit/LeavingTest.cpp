// Windows leave the screen: closed, miniaturised, vanished, or with the display.
#include <algorithm>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class LeavingTest : public RecordedTest {
 protected:
  LeavingTest() {
    open("A");
    openKey("B");
    openKey("C");
    open("D");
    recorder.take();
  }

  // The window on screen of that name.
  static Strong<NSWindow> named(std::string_view name) {
    for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
      if (window->className() == name) {
        return window;
      }
    }
    return nullptr;
  }
};

TEST_F(LeavingTest, KeyPassesOnToTheMostRecentlyKeyWindowOnScreen) {
  named("C")->close();
  EXPECT_EQ(recorder.take(), (Events{"C resigns", "B becomes key"}));
}

TEST_F(LeavingTest, KeyPassesOverWindowsThatAreNotOnScreen) {
  named("A")->makeKeyWindow();
  named("C")->makeKeyWindow();
  named("A")->miniaturize();
  recorder.take();
  named("C")->close();
  EXPECT_EQ(recorder.take(), (Events{"C resigns", "B becomes key"}));
}

TEST_F(LeavingTest, KeyPassesOnToTheFrontmostWindowWhereNoneWasKeyBefore) {
  named("B")->close();
  recorder.take();
  named("C")->close();
  EXPECT_EQ(recorder.take(), (Events{"C resigns", "D becomes key"}));
}

TEST_F(LeavingTest, KeyPassesOnToNoneWhereNoWindowIsLeft) {
  for (const char* name : {"A", "B", "D", "C"}) {
    named(name)->close();
  }
  EXPECT_EQ(key(), "none");
  EXPECT_EQ(recorder.take(), Events{"C resigns"});
}

TEST_F(LeavingTest, KeyPassesOnAlsoToAWindowThatWasOpenedSince) {
  named("B")->close();
  open("E");
  named("C")->close();
  EXPECT_EQ(key(), "E");
}

TEST_F(LeavingTest, AHandlersWishStandsWhenKeyPassesOn) {
  recorder.onNext("C resigns", [] { named("A")->makeKeyWindow(); });
  named("C")->close();
  EXPECT_EQ(recorder.take(), (Events{"C resigns", "A becomes key"}));
}

TEST_F(LeavingTest, AHandlerMayCloseTheOneThatWouldBeNext) {
  recorder.onNext("C resigns", [] { named("B")->close(); });
  named("C")->close();
  EXPECT_EQ(recorder.take(), (Events{"C resigns", "D becomes key"}));
}

TEST_F(LeavingTest, AHandlerMayCloseEveryWindow) {
  recorder.onNext("C resigns", [] {
    for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
      window->close();
    }
  });
  named("C")->close();
  EXPECT_EQ(recorder.take(), Events{"C resigns"});
  EXPECT_TRUE(order().empty());
}

TEST_F(LeavingTest, WhenTheOldKeyWindowResignsItIsOffTheScreen) {
  Events during;
  recorder.onNext("C resigns", [&] { during = order(); });
  named("C")->close();
  EXPECT_EQ(during, (Events{"D", "B", "A"}));
}

TEST_F(LeavingTest, KeyStaysWhereItIsWhenAnotherWindowLeaves) {
  named("D")->close();
  EXPECT_EQ(key(), "C");
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(LeavingTest, ControllersDisappearBeforeKeyPassesOn) {
  recordingControllerIn(named("C"), "view");
  recorder.take();
  named("C")->close();
  EXPECT_EQ(recorder.take(),
            (Events{"view will disappear", "view did disappear", "C resigns", "B becomes key"}));
}

TEST_F(LeavingTest, SheetsAreClosedFirstTheNewestFirst) {
  const auto window = named("C");
  const auto host = recordingControllerIn(window, "host");
  const auto first = recordingController("first");
  const auto second = recordingController("second");
  host->presentViewControllerAsSheet(first);
  host->presentViewControllerAsSheet(second);
  recorder.take();
  window->close();
  EXPECT_EQ(recorder.take(),
            (Events{"second will disappear", "second did disappear", "NSWindow resigns",
                    "NSWindow becomes key", "first will disappear", "first did disappear",
                    "NSWindow resigns", "C becomes key", "host will disappear",
                    "host did disappear", "C resigns", "B becomes key"}));
  EXPECT_TRUE(window->sheets().empty());
}

TEST_F(LeavingTest, AStepMayCloseTheWindowThatIsClosing) {
  const auto window = named("C");
  const auto controller = recordingControllerIn(window, "view");
  recorder.take();
  recorder.onNext("view will disappear", [&] { window->close(); });
  window->close();
  EXPECT_EQ(recorder.take(),
            (Events{"view will disappear", "view did disappear", "C resigns", "B becomes key"}));
}

TEST_F(LeavingTest, AStepMayCloseTheWindowThatIsOpening) {
  const auto window = closedWindow("E");
  const auto controller = recordingControllerIn(window, "view");
  recorder.onNext("view will appear", [&] { window->close(); });
  window->makeKeyAndOrderFront();
  EXPECT_EQ(recorder.take(),
            (Events{"view will appear", "view will disappear", "view did disappear"}));
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(key(), "C");
}

TEST_F(LeavingTest, AStepMayDropTheLastReferenceToItsWindow) {
  Strong<NSWindow> window = open("E");
  recordingControllerIn(window, "view");
  const Weak<NSWindow> seen = window;
  recorder.take();
  recorder.onNext("view will disappear", [&] { window.reset(); });
  window->close();
  EXPECT_TRUE(seen.expired());
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear"}));
}

TEST_F(LeavingTest, MiniaturisedLeavesTheOrderAndGivesUpKeyAndIsTold) {
  const auto window = named("C");
  window->miniaturize();
  EXPECT_EQ(order(), (Events{"D", "B", "A"}));
  EXPECT_EQ(recorder.take(), (Events{"C resigns", "B becomes key", "C is miniaturised"}));
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(window->isMiniaturized());
  EXPECT_FALSE(window->isOnScreen());
}

TEST_F(LeavingTest, MiniaturisedWithoutBeingKeyIsOnlyTold) {
  named("D")->miniaturize();
  EXPECT_EQ(recorder.take(), Events{"D is miniaturised"});
}

TEST_F(LeavingTest, DeminiaturisedIsBackInFrontAndNotKey) {
  const auto window = named("B");
  window->miniaturize();
  recorder.take();
  window->deminiaturize();
  EXPECT_EQ(order(), (Events{"B", "D", "C", "A"}));
  EXPECT_EQ(recorder.take(), Events{"B is back"});
  EXPECT_EQ(key(), "C");
  EXPECT_FALSE(window->isMiniaturized());
}

TEST_F(LeavingTest, MiniaturisingRunsNoLifeCycleSteps) {
  const auto window = named("C");
  const auto controller = recordingControllerIn(window, "view");
  window->miniaturize();
  recorder.take();
  window->deminiaturize();
  EXPECT_EQ(recorder.take(), Events{"C is back"});
  EXPECT_TRUE(controller->isShown());
}

TEST_F(LeavingTest, OnlyAWindowOnScreenIsMiniaturisedAndOnlyAMiniaturisedOneComesBack) {
  const auto closed = closedWindow("E");
  closed->miniaturize();
  named("D")->deminiaturize();
  const auto twice = named("D");
  twice->miniaturize();
  twice->miniaturize();
  EXPECT_EQ(recorder.take(), Events{"D is miniaturised"});
}

TEST_F(LeavingTest, AMiniaturisedWindowCanBeClosed) {
  const auto window = named("C");
  recordingControllerIn(window, "view");
  window->miniaturize();
  recorder.take();
  window->close();
  EXPECT_EQ(recorder.take(), (Events{"view will disappear", "view did disappear"}));
  EXPECT_FALSE(window->isMiniaturized());
  window->orderFront();
  EXPECT_TRUE(window->isOnScreen());
}

TEST_F(LeavingTest, AWindowThatVanishesCountsAsClosed) {
  const auto window = named("C");
  recordingControllerIn(window, "view");
  recorder.take();
  platform.user().windowVanishes(window->handle());
  EXPECT_EQ(recorder.take(),
            (Events{"view will disappear", "view did disappear", "C resigns", "B becomes key"}));
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(window->handle(), WindowHandle::None);
}

TEST_F(LeavingTest, AWindowThatVanishedCanBeOpenedAgain) {
  const auto window = named("C");
  platform.user().windowVanishes(window->handle());
  window->makeKeyAndOrderFront();
  EXPECT_EQ(key(), "C");
  EXPECT_NE(platform.user().window(window->handle()), nullptr);
}

TEST_F(LeavingTest, AClosedWindowMayVanishToo) {
  const auto window = named("C");
  window->close();
  recorder.take();
  platform.user().windowVanishes(window->handle());
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_EQ(window->handle(), WindowHandle::None);
}

TEST_F(LeavingTest, AWindowMayVanishInsideAHandler) {
  recorder.onNext("C resigns", [this] { platform.user().windowVanishes(named("B")->handle()); });
  platform.user().windowVanishes(named("C")->handle());
  EXPECT_EQ(recorder.take(), (Events{"C resigns", "D becomes key"}));
}

TEST_F(LeavingTest, ALostDisplayClosesEveryWindow) {
  recordingControllerIn(named("C"), "view");
  recorder.take();
  std::string reason;
  NSApp->setDisplayLostHandler([&](std::string_view text) {
    reason = text;
    EXPECT_TRUE(order().empty());
  });
  platform.user().connectionBreaks("the server has gone");
  EXPECT_EQ(reason, "the server has gone");
  EXPECT_EQ(key(), "none");
  EXPECT_EQ(main(), "none");
  const Events story = recorder.take();
  EXPECT_NE(std::ranges::find(story, "view did disappear"), story.end());
  EXPECT_NE(std::ranges::find(story, "C resigns"), story.end());
}

TEST_F(LeavingTest, ALostDisplayEndsModalRunsAndSheets) {
  const auto host = recordingControllerIn(named("C"), "host");
  host->presentViewControllerAsModalWindow(recordingController("modal"));
  host->presentViewControllerAsSheet(recordingController("sheet"));
  platform.user().connectionBreaks("gone");
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_TRUE(host->presentedViewControllers().empty());
}

TEST_F(LeavingTest, AfterALostDisplayTheProcessGoesOn) {
  platform.user().connectionBreaks("gone");
  bool fired = false;
  dispatch_async(dispatch_get_main_queue(), [&fired] { fired = true; });
  platform.run(1);
  EXPECT_TRUE(fired);
}

}  // namespace
}  // namespace vel::test
