// The key window, the main window and their notifications.
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class KeyWindowTest : public EventRecordingTest {};

TEST_F(KeyWindowTest, OpeningAWindowDoesNotMakeItKey) {
  openWindow("A");
  EXPECT_EQ(keyWindowName(), "none");
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, MakeKeyWindowMakesAWindowKey) {
  const auto window = openKeyWindow("A");
  EXPECT_EQ(keyWindowName(), "A");
  EXPECT_TRUE(window->isKeyWindow());
  EXPECT_EQ(recorder.takeEvents(), Events{"A becomes key"});
}

TEST_F(KeyWindowTest, TheOldKeyWindowResignsKeyBeforeTheNewWindowBecomesKey) {
  const auto windowA = openKeyWindow("A");
  openKeyWindow("B");
  EXPECT_EQ(recorder.takeEvents(), (Events{"A becomes key", "A resigns key", "B becomes key"}));
  EXPECT_FALSE(windowA->isKeyWindow());
}

TEST_F(KeyWindowTest, NoWindowIsKeyWhileTheOldKeyWindowResignsKey) {
  const auto windowA = openKeyWindow("A");
  std::string keyWindowInHandler;
  recorder.onNext("A resigns key", [&] {
    keyWindowInHandler = keyWindowName() + (windowA->isKeyWindow() ? ", still key" : "");
  });
  openKeyWindow("B");
  EXPECT_EQ(keyWindowInHandler, "none");
}

TEST_F(KeyWindowTest, AWindowIsAlreadyKeyWhenDidBecomeKeyIsPosted) {
  std::string keyWindowInHandler;
  recorder.onNext("A becomes key", [&] { keyWindowInHandler = keyWindowName(); });
  openKeyWindow("A");
  EXPECT_EQ(keyWindowInHandler, "A");
}

TEST_F(KeyWindowTest, MakeKeyWindowOfTheKeyWindowDoesNothing) {
  const auto window = openKeyWindow("A");
  recorder.takeEvents();
  window->makeKeyWindow();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, AWindowThatIsNotOnScreenCannotBecomeKey) {
  openKeyWindow("A");
  const auto neverOpenedWindow = makeClosedWindow("B");
  const auto closedWindow = openWindow("C");
  closedWindow->close();
  const auto miniaturizedWindow = openWindow("D");
  miniaturizedWindow->miniaturize();
  recorder.takeEvents();
  for (const auto& window : {neverOpenedWindow, closedWindow, miniaturizedWindow}) {
    window->makeKeyWindow();
  }
  EXPECT_EQ(keyWindowName(), "A");
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, MakingAWindowKeyDoesNotChangeTheStackingOrder) {
  const auto backWindow = openWindow("A");
  openWindow("B");
  backWindow->makeKeyWindow();
  EXPECT_EQ(windowOrder(), (Events{"B", "A"}));
}

TEST_F(KeyWindowTest, MakeKeyAndOrderFrontMakesTheWindowKeyAndOrdersItFront) {
  const auto backWindow = openWindow("A");
  openWindow("B");
  backWindow->makeKeyAndOrderFront();
  EXPECT_EQ(windowOrder(), (Events{"A", "B"}));
  EXPECT_EQ(keyWindowName(), "A");
}

TEST_F(KeyWindowTest, AHandlerOfDidResignKeyMayMakeAThirdWindowKey) {
  openKeyWindow("A");
  const auto windowC = openWindow("C");
  const auto windowB = openWindow("B");
  recorder.takeEvents();
  recorder.onNext("A resigns key", [&] { windowC->makeKeyWindow(); });
  windowB->makeKeyWindow();
  EXPECT_EQ(recorder.takeEvents(), (Events{"A resigns key", "C becomes key"}));
  EXPECT_EQ(keyWindowName(), "C");
}

TEST_F(KeyWindowTest, AHandlerOfDidResignKeyMayMakeTheOldKeyWindowKeyAgain) {
  const auto windowA = openKeyWindow("A");
  const auto windowB = openWindow("B");
  recorder.takeEvents();
  recorder.onNext("A resigns key", [&] { windowA->makeKeyWindow(); });
  windowB->makeKeyWindow();
  EXPECT_EQ(recorder.takeEvents(), (Events{"A resigns key", "A becomes key"}));
  EXPECT_EQ(keyWindowName(), "A");
}

TEST_F(KeyWindowTest, AHandlerOfDidBecomeKeyMayMakeAnotherWindowKey) {
  const auto firstWindow = openWindow("A");
  const auto secondWindow = openWindow("B");
  recorder.onNext("A becomes key", [&] { secondWindow->makeKeyWindow(); });
  firstWindow->makeKeyWindow();
  EXPECT_EQ(recorder.takeEvents(), (Events{"A becomes key", "A resigns key", "B becomes key"}));
  EXPECT_EQ(keyWindowName(), "B");
}

TEST_F(KeyWindowTest, NoWindowBecomesKeyIfAHandlerOfDidResignKeyClosesTheNextKeyWindow) {
  openKeyWindow("A");
  const auto windowB = openWindow("B");
  recorder.takeEvents();
  recorder.onNext("A resigns key", [&] { windowB->close(); });
  windowB->makeKeyWindow();
  EXPECT_EQ(recorder.takeEvents(), Events{"A resigns key"});
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(KeyWindowTest, AHandlerOfDidBecomeKeyMayCloseTheNewKeyWindow) {
  openKeyWindow("A");
  const auto windowB = openWindow("B");
  recorder.takeEvents();
  recorder.onNext("B becomes key", [&] { windowB->close(); });
  windowB->makeKeyWindow();
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"A resigns key", "B becomes key", "B resigns key", "A becomes key"}));
}

TEST_F(KeyWindowTest, NoWindowIsKeyWhenTheFocusLeavesTheApplication) {
  openKeyWindow("A");
  openWindow("B");
  recorder.takeEvents();
  std::string keyWindowInHandler;
  recorder.onNext("A resigns key", [&] { keyWindowInHandler = keyWindowName(); });
  platform.windowSystem().userMovesFocusAway();
  EXPECT_EQ(keyWindowInHandler, "none");
  EXPECT_EQ(keyWindowName(), "none");
  EXPECT_EQ(recorder.takeEvents(), Events{"A resigns key"});
}

TEST_F(KeyWindowTest, LosingTheFocusWithoutAKeyWindowPostsNothing) {
  openWindow("A");
  platform.windowSystem().userMovesFocusAway();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, ThePlatformObserverIsCalledJustBeforeEachKeyNotification) {
  struct Observer final : PlatformObserver {
    explicit Observer(EventRecorder& eventRecorder) : recorder(eventRecorder) {}
    void keyStatusChanged(NSWindow& window, KeyStatusChange change) override {
      recorder.record("observer: " + std::string(window.className()) +
                      (change == KeyStatusChange::BecomesKey ? " becomes key" : " resigns key"));
    }
    EventRecorder& recorder;
  } observer(recorder);
  openKeyWindow("A");
  const auto nextWindow = openWindow("B");
  recorder.takeEvents();
  setPlatformObserver(&observer);
  nextWindow->makeKeyWindow();
  EXPECT_EQ(recorder.takeEvents(), (Events{"observer: A resigns key", "A resigns key",
                                           "observer: B becomes key", "B becomes key"}));
}

class MainWindowTest : public EventRecordingTest {
 protected:
  // Opens a key window with a content view controller that can present other controllers.
  static Strong<NSWindow> openKeyWindowWithController(std::string_view name) {
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
  openWindow("C");
  EXPECT_EQ(mainWindowName(), "B");
}

TEST_F(MainWindowTest, StaysMainWhenItResignsKey) {
  openKeyWindow("A");
  platform.windowSystem().userMovesFocusAway();
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, IsAlreadyMainWhenDidBecomeKeyIsPosted) {
  std::string mainWindowInHandler;
  recorder.onNext("A becomes key", [&] { mainWindowInHandler = mainWindowName(); });
  openKeyWindow("A");
  EXPECT_EQ(mainWindowInHandler, "A");
}

TEST_F(MainWindowTest, IsNeverASheet) {
  const auto window = openKeyWindowWithController("A");
  window->contentViewController()->presentViewControllerAsSheet(makeController("sheet"));
  EXPECT_EQ(NSApp->keyWindow(), window->sheets().at(0));
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, IsNeverTheWindowOfAModalPresentation) {
  const auto window = openKeyWindowWithController("A");
  const auto modalController = makeController("modal");
  window->contentViewController()->presentViewControllerAsModalWindow(modalController);
  EXPECT_EQ(NSApp->keyWindow(), modalController->view()->window());
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, IsNullWhileTheClosedMainWindowResignsKey) {
  openWindow("B");
  const auto window = openKeyWindow("A");
  std::string mainWindowInHandler;
  recorder.onNext("A resigns key", [&] { mainWindowInHandler = mainWindowName(); });
  window->close();
  EXPECT_EQ(mainWindowInHandler, "none");
}

TEST_F(MainWindowTest, IsTheNextKeyWindowEvenIfAHandlerReopensTheClosedWindow) {
  openWindow("B");
  const auto window = openKeyWindow("A");
  recorder.onNext("B becomes key", [&] { window->orderFront(); });
  window->close();
  EXPECT_TRUE(window->isOnScreen());
  EXPECT_EQ(mainWindowName(), "B");
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
  const auto otherWindow = openWindow("B");
  openKeyWindow("A");
  otherWindow->close();
  EXPECT_EQ(mainWindowName(), "A");
}

TEST_F(MainWindowTest, TheDialogOwnerIsTheMainWindowOrElseTheFrontWindow) {
  EXPECT_EQ(nameOf(NSApp->dialogOwner()), "none");
  const auto backWindow = openWindow("A");
  openWindow("B");
  EXPECT_EQ(nameOf(NSApp->dialogOwner()), "B");
  backWindow->makeKeyWindow();
  EXPECT_EQ(nameOf(NSApp->dialogOwner()), "A");
}

}  // namespace
}  // namespace vel::test
