// Windows leave the screen: closed, miniaturised, vanished, or with the display.
#include <algorithm>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/AppKit/Stage.h"

namespace vel::test {
namespace {

class LeavingTest : public StageTest {
 protected:
  LeavingTest() {
    open("A");
    openKey("B");
    openKey("C");
    open("D");
    stage.take();
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
  EXPECT_EQ(stage.take(), (Story{"C resigns", "B becomes key"}));
}

TEST_F(LeavingTest, KeyPassesOverWindowsThatAreNotOnScreen) {
  named("A")->makeKeyWindow();
  named("C")->makeKeyWindow();
  named("A")->miniaturize();
  stage.take();
  named("C")->close();
  EXPECT_EQ(stage.take(), (Story{"C resigns", "B becomes key"}));
}

TEST_F(LeavingTest, KeyPassesOnToTheFrontmostWindowWhereNoneWasKeyBefore) {
  named("B")->close();
  stage.take();
  named("C")->close();
  EXPECT_EQ(stage.take(), (Story{"C resigns", "D becomes key"}));
}

TEST_F(LeavingTest, KeyPassesOnToNoneWhereNoWindowIsLeft) {
  for (const char* name : {"A", "B", "D", "C"}) {
    named(name)->close();
  }
  EXPECT_EQ(key(), "none");
  EXPECT_EQ(stage.take(), Story{"C resigns"});
}

TEST_F(LeavingTest, KeyPassesOnAlsoToAWindowThatWasOpenedSince) {
  named("B")->close();
  open("E");
  named("C")->close();
  EXPECT_EQ(key(), "E");
}

TEST_F(LeavingTest, AHandlersWishStandsWhenKeyPassesOn) {
  stage.at("C resigns", [] { named("A")->makeKeyWindow(); });
  named("C")->close();
  EXPECT_EQ(stage.take(), (Story{"C resigns", "A becomes key"}));
}

TEST_F(LeavingTest, AHandlerMayCloseTheOneThatWouldBeNext) {
  stage.at("C resigns", [] { named("B")->close(); });
  named("C")->close();
  EXPECT_EQ(stage.take(), (Story{"C resigns", "D becomes key"}));
}

TEST_F(LeavingTest, AHandlerMayCloseEveryWindow) {
  stage.at("C resigns", [] {
    for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
      window->close();
    }
  });
  named("C")->close();
  EXPECT_EQ(stage.take(), Story{"C resigns"});
  EXPECT_TRUE(order().empty());
}

TEST_F(LeavingTest, WhenTheOldKeyWindowResignsItIsOffTheScreen) {
  Story during;
  stage.at("C resigns", [&] { during = order(); });
  named("C")->close();
  EXPECT_EQ(during, (Story{"D", "B", "A"}));
}

TEST_F(LeavingTest, KeyStaysWhereItIsWhenAnotherWindowLeaves) {
  named("D")->close();
  EXPECT_EQ(key(), "C");
  EXPECT_TRUE(stage.story.empty());
}

TEST_F(LeavingTest, ControllersDisappearBeforeKeyPassesOn) {
  actorIn(named("C"), "view");
  stage.take();
  named("C")->close();
  EXPECT_EQ(stage.take(),
            (Story{"view will disappear", "view did disappear", "C resigns", "B becomes key"}));
}

TEST_F(LeavingTest, SheetsAreClosedFirstTheNewestFirst) {
  const auto window = named("C");
  const auto host = actorIn(window, "host");
  const auto first = actor("first");
  const auto second = actor("second");
  host->presentViewControllerAsSheet(first);
  host->presentViewControllerAsSheet(second);
  stage.take();
  window->close();
  EXPECT_EQ(stage.take(),
            (Story{"second will disappear", "second did disappear", "NSWindow resigns",
                   "NSWindow becomes key", "first will disappear", "first did disappear",
                   "NSWindow resigns", "C becomes key", "host will disappear", "host did disappear",
                   "C resigns", "B becomes key"}));
  EXPECT_TRUE(window->sheets().empty());
}

TEST_F(LeavingTest, AStepMayCloseTheWindowThatIsClosing) {
  const auto window = named("C");
  const auto actor = actorIn(window, "view");
  stage.take();
  stage.at("view will disappear", [&] { window->close(); });
  window->close();
  EXPECT_EQ(stage.take(),
            (Story{"view will disappear", "view did disappear", "C resigns", "B becomes key"}));
}

TEST_F(LeavingTest, AStepMayCloseTheWindowThatIsOpening) {
  const auto window = closedWindow("E");
  const auto actor = actorIn(window, "view");
  stage.at("view will appear", [&] { window->close(); });
  window->makeKeyAndOrderFront();
  EXPECT_EQ(stage.take(), (Story{"view will appear", "view will disappear", "view did disappear"}));
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(key(), "C");
}

TEST_F(LeavingTest, AStepMayDropTheLastReferenceToItsWindow) {
  Strong<NSWindow> window = open("E");
  actorIn(window, "view");
  const Weak<NSWindow> seen = window;
  stage.take();
  stage.at("view will disappear", [&] { window.reset(); });
  window->close();
  EXPECT_TRUE(seen.expired());
  EXPECT_EQ(stage.take(), (Story{"view will disappear", "view did disappear"}));
}

TEST_F(LeavingTest, MiniaturisedLeavesTheOrderAndGivesUpKeyAndIsTold) {
  const auto window = named("C");
  window->miniaturize();
  EXPECT_EQ(order(), (Story{"D", "B", "A"}));
  EXPECT_EQ(stage.take(), (Story{"C resigns", "B becomes key", "C is miniaturised"}));
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(window->isMiniaturized());
  EXPECT_FALSE(window->isOnScreen());
}

TEST_F(LeavingTest, MiniaturisedWithoutBeingKeyIsOnlyTold) {
  named("D")->miniaturize();
  EXPECT_EQ(stage.take(), Story{"D is miniaturised"});
}

TEST_F(LeavingTest, DeminiaturisedIsBackInFrontAndNotKey) {
  const auto window = named("B");
  window->miniaturize();
  stage.take();
  window->deminiaturize();
  EXPECT_EQ(order(), (Story{"B", "D", "C", "A"}));
  EXPECT_EQ(stage.take(), Story{"B is back"});
  EXPECT_EQ(key(), "C");
  EXPECT_FALSE(window->isMiniaturized());
}

TEST_F(LeavingTest, MiniaturisingRunsNoLifeCycleSteps) {
  const auto window = named("C");
  const auto actor = actorIn(window, "view");
  window->miniaturize();
  stage.take();
  window->deminiaturize();
  EXPECT_EQ(stage.take(), Story{"C is back"});
  EXPECT_TRUE(actor->isShown());
}

TEST_F(LeavingTest, OnlyAWindowOnScreenIsMiniaturisedAndOnlyAMiniaturisedOneComesBack) {
  const auto closed = closedWindow("E");
  closed->miniaturize();
  named("D")->deminiaturize();
  const auto twice = named("D");
  twice->miniaturize();
  twice->miniaturize();
  EXPECT_EQ(stage.take(), Story{"D is miniaturised"});
}

TEST_F(LeavingTest, AMiniaturisedWindowCanBeClosed) {
  const auto window = named("C");
  actorIn(window, "view");
  window->miniaturize();
  stage.take();
  window->close();
  EXPECT_EQ(stage.take(), (Story{"view will disappear", "view did disappear"}));
  EXPECT_FALSE(window->isMiniaturized());
  window->orderFront();
  EXPECT_TRUE(window->isOnScreen());
}

TEST_F(LeavingTest, AWindowThatVanishesCountsAsClosed) {
  const auto window = named("C");
  actorIn(window, "view");
  stage.take();
  platform.user().windowVanishes(window->handle());
  EXPECT_EQ(stage.take(),
            (Story{"view will disappear", "view did disappear", "C resigns", "B becomes key"}));
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
  stage.take();
  platform.user().windowVanishes(window->handle());
  EXPECT_TRUE(stage.story.empty());
  EXPECT_EQ(window->handle(), WindowHandle::None);
}

TEST_F(LeavingTest, AWindowMayVanishInsideAHandler) {
  stage.at("C resigns", [this] { platform.user().windowVanishes(named("B")->handle()); });
  platform.user().windowVanishes(named("C")->handle());
  EXPECT_EQ(stage.take(), (Story{"C resigns", "D becomes key"}));
}

TEST_F(LeavingTest, ALostDisplayClosesEveryWindow) {
  actorIn(named("C"), "view");
  stage.take();
  std::string reason;
  NSApp->setDisplayLostHandler([&](std::string_view text) {
    reason = text;
    EXPECT_TRUE(order().empty());
  });
  platform.user().connectionBreaks("the server has gone");
  EXPECT_EQ(reason, "the server has gone");
  EXPECT_EQ(key(), "none");
  EXPECT_EQ(main(), "none");
  const Story story = stage.take();
  EXPECT_NE(std::ranges::find(story, "view did disappear"), story.end());
  EXPECT_NE(std::ranges::find(story, "C resigns"), story.end());
}

TEST_F(LeavingTest, ALostDisplayEndsModalRunsAndSheets) {
  const auto host = actorIn(named("C"), "host");
  host->presentViewControllerAsModalWindow(actor("modal"));
  host->presentViewControllerAsSheet(actor("sheet"));
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
