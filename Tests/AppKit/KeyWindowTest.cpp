// The key window, the main window and their notifications.
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class KeyWindowTest : public RecordedTest {};

TEST_F(KeyWindowTest, OpeningAWindowDoesNotMakeItKey) {
  open("A");
  EXPECT_EQ(keyWindowName(), "none");
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, TheFirstWindowBecomesKey) {
  const auto window = openKeyWindow("A");
  EXPECT_EQ(keyWindowName(), "A");
  EXPECT_TRUE(window->isKeyWindow());
  EXPECT_EQ(recorder.take(), Events{"A becomes key"});
}

TEST_F(KeyWindowTest, TheOldKeyWindowResignsKeyBeforeTheNewOneBecomesKey) {
  const auto windowA = openKeyWindow("A");
  openKeyWindow("B");
  EXPECT_EQ(recorder.take(), (Events{"A becomes key", "A resigns key", "B becomes key"}));
  EXPECT_FALSE(windowA->isKeyWindow());
}

TEST_F(KeyWindowTest, NoWindowIsKeyWhileTheOldKeyWindowResignsKey) {
  const auto windowA = openKeyWindow("A");
  std::string keyInHandler;
  recorder.onNext("A resigns key", [&] {
    keyInHandler = keyWindowName() + (windowA->isKeyWindow() ? ", still key" : "");
  });
  openKeyWindow("B");
  EXPECT_EQ(keyInHandler, "none");
}

TEST_F(KeyWindowTest, AWindowIsKeyWhenBecomingKeyIsPosted) {
  std::string keyInHandler;
  recorder.onNext("A becomes key", [&] { keyInHandler = keyWindowName(); });
  openKeyWindow("A");
  EXPECT_EQ(keyInHandler, "A");
}

TEST_F(KeyWindowTest, MakingTheKeyWindowKeyDoesNothing) {
  const auto window = openKeyWindow("A");
  recorder.take();
  window->makeKeyWindow();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, AWindowThatIsNotOnScreenCannotBecomeKey) {
  openKeyWindow("A");
  const auto neverOpened = makeClosedWindow("B");
  const auto closed = open("C");
  closed->close();
  const auto miniaturized = open("D");
  miniaturized->miniaturize();
  recorder.take();
  for (const auto& window : {neverOpened, closed, miniaturized}) {
    window->makeKeyWindow();
  }
  EXPECT_EQ(keyWindowName(), "A");
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, MakingAWindowKeyDoesNotChangeTheOrder) {
  const auto back = open("A");
  open("B");
  back->makeKeyWindow();
  EXPECT_EQ(windowOrder(), (Events{"B", "A"}));
}

TEST_F(KeyWindowTest, MakeKeyAndOrderFrontMakesTheWindowKeyAndOrdersItFront) {
  const auto back = open("A");
  open("B");
  back->makeKeyAndOrderFront();
  EXPECT_EQ(windowOrder(), (Events{"A", "B"}));
  EXPECT_EQ(keyWindowName(), "A");
}

TEST_F(KeyWindowTest, AWindowThatAHandlerMakesKeyReplacesTheRequestedOne) {
  openKeyWindow("A");
  const auto windowC = open("C");
  const auto windowB = open("B");
  recorder.take();
  recorder.onNext("A resigns key", [&] { windowC->makeKeyWindow(); });
  windowB->makeKeyWindow();
  EXPECT_EQ(recorder.take(), (Events{"A resigns key", "C becomes key"}));
  EXPECT_EQ(keyWindowName(), "C");
}

TEST_F(KeyWindowTest, AHandlerMayMakeTheOldKeyWindowKeyAgain) {
  const auto windowA = openKeyWindow("A");
  const auto windowB = open("B");
  recorder.take();
  recorder.onNext("A resigns key", [&] { windowA->makeKeyWindow(); });
  windowB->makeKeyWindow();
  EXPECT_EQ(recorder.take(), (Events{"A resigns key", "A becomes key"}));
  EXPECT_EQ(keyWindowName(), "A");
}

TEST_F(KeyWindowTest, AHandlerOfBecomingKeyMayMakeAnotherWindowKey) {
  const auto first = open("A");
  const auto second = open("B");
  recorder.onNext("A becomes key", [&] { second->makeKeyWindow(); });
  first->makeKeyWindow();
  EXPECT_EQ(recorder.take(), (Events{"A becomes key", "A resigns key", "B becomes key"}));
  EXPECT_EQ(keyWindowName(), "B");
}

TEST_F(KeyWindowTest, AWindowThatAHandlerClosesDoesNotBecomeKey) {
  openKeyWindow("A");
  const auto windowB = open("B");
  recorder.take();
  recorder.onNext("A resigns key", [&] { windowB->close(); });
  windowB->makeKeyWindow();
  EXPECT_EQ(recorder.take(), Events{"A resigns key"});
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(KeyWindowTest, AHandlerMayCloseTheWindowThatBecomesKey) {
  openKeyWindow("A");
  const auto windowB = open("B");
  recorder.take();
  recorder.onNext("B becomes key", [&] { windowB->close(); });
  windowB->makeKeyWindow();
  EXPECT_EQ(recorder.take(),
            (Events{"A resigns key", "B becomes key", "B resigns key", "A becomes key"}));
}

TEST_F(KeyWindowTest, NoWindowIsKeyWhenTheFocusLeavesTheApplication) {
  openKeyWindow("A");
  open("B");
  recorder.take();
  std::string keyInHandler;
  recorder.onNext("A resigns key", [&] { keyInHandler = keyWindowName(); });
  platform.windowSystem().userMovesFocusAway();
  EXPECT_EQ(keyInHandler, "none");
  EXPECT_EQ(keyWindowName(), "none");
  EXPECT_EQ(recorder.take(), Events{"A resigns key"});
}

TEST_F(KeyWindowTest, WithoutAKeyWindowLosingTheFocusPostsNothing) {
  open("A");
  platform.windowSystem().userMovesFocusAway();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, ThePlatformObserverIsCalledJustBeforeEachNotification) {
  struct Observer final : PlatformObserver {
    explicit Observer(EventRecorder& eventRecorder) : recorder(eventRecorder) {}
    void keyStatusChanged(NSWindow& window, KeyStatusChange change) override {
      recorder.record("observer: " + std::string(window.className()) +
                      (change == KeyStatusChange::BecomesKey ? " becomes key" : " resigns key"));
    }
    EventRecorder& recorder;
  } observer(recorder);
  openKeyWindow("A");
  const auto next = open("B");
  recorder.take();
  setPlatformObserver(&observer);
  next->makeKeyWindow();
  EXPECT_EQ(recorder.take(), (Events{"observer: A resigns key", "A resigns key",
                                     "observer: B becomes key", "B becomes key"}));
}

class MainWindowTest : public RecordedTest {
 protected:
  // Opens a key window with a content view controller that can present other controllers.
  static Strong<NSWindow> openKeyWithController(std::string_view name) {
    Strong<NSWindow> window = openKeyWindow(name);
    window->setContentViewController(make<NamedViewController>("Host"));
    return window;
  }
};

TEST_F(MainWindowTest, IsTheWindowThatBecameKeyLast) {
  EXPECT_EQ(mainWindowName(), "none");
  openKeyWindow("A");
  EXPECT_EQ(mainWindowName(), "A");
  openKeyWindow("B");
  open("C");
  EXPECT_EQ(mainWindowName(), "B");
}

TEST_F(MainWindowTest, StaysMainWhenItResignsKey) {
  openKeyWindow("A");
  platform.windowSystem().userMovesFocusAway();
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, IsMainWhenBecomingKeyIsPosted) {
  std::string mainInHandler;
  recorder.onNext("A becomes key", [&] { mainInHandler = mainWindowName(); });
  openKeyWindow("A");
  EXPECT_EQ(mainInHandler, "A");
}

TEST_F(MainWindowTest, IsNeverASheet) {
  const auto window = openKeyWithController("A");
  window->contentViewController()->presentViewControllerAsSheet(makeController("sheet"));
  EXPECT_EQ(NSApp->keyWindow(), window->sheets().at(0));
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, IsNeverTheWindowOfAModalPresentation) {
  const auto window = openKeyWithController("A");
  const auto modal = makeController("modal");
  window->contentViewController()->presentViewControllerAsModalWindow(modal);
  EXPECT_EQ(NSApp->keyWindow(), modal->view()->window());
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, IsNullAfterTheMainWindowLeavesTheScreen) {
  open("B");
  const auto window = openKeyWindow("A");
  std::string mainInHandler;
  recorder.onNext("A resigns key", [&] { mainInHandler = mainWindowName(); });
  recorder.onNext("B becomes key", [&] { window->orderFront(); });
  window->close();
  EXPECT_EQ(mainInHandler, "none");
  EXPECT_EQ(mainWindowName(), "B");  // Window A is on screen again, but it is not main.
}

TEST_F(MainWindowTest, IsNullAfterTheMainWindowIsMiniaturised) {
  const auto window = openKeyWindow("A");
  window->miniaturize();
  EXPECT_EQ(mainWindowName(), "none");
  window->deminiaturize();
  EXPECT_EQ(mainWindowName(), "none");
}

TEST_F(MainWindowTest, IsTheNextKeyWindowAfterTheMainWindowCloses) {
  openKeyWindow("A");
  openKeyWindow("B")->close();
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, StaysMainWhenAnotherWindowCloses) {
  const auto other = open("B");
  openKeyWindow("A");
  other->close();
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, TheFrontWindowIsTheMainWindowOrElseTheForemost) {
  EXPECT_EQ(nameOf(NSApp->dialogOwner()), "none");
  const auto back = open("A");
  open("B");
  EXPECT_EQ(nameOf(NSApp->dialogOwner()), "B");
  back->makeKeyWindow();
  EXPECT_EQ(nameOf(NSApp->dialogOwner()), "A");
}

}  // namespace
}  // namespace vel::test
