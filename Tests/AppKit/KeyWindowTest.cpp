// Which window is key, which is main, and what is told about it.
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class KeyWindowTest : public RecordedTest {};

TEST_F(KeyWindowTest, OpeningAWindowDoesNotMakeItKey) {
  open("A");
  EXPECT_EQ(key(), "none");
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, TheFirstWindowBecomesKey) {
  const auto window = openKey("A");
  EXPECT_EQ(key(), "A");
  EXPECT_TRUE(window->isKeyWindow());
  EXPECT_EQ(recorder.take(), Events{"A becomes key"});
}

TEST_F(KeyWindowTest, TheOldOneResignsBeforeTheNewOneBecomesKey) {
  const auto former = openKey("A");
  openKey("B");
  EXPECT_EQ(recorder.take(), (Events{"A becomes key", "A resigns", "B becomes key"}));
  EXPECT_FALSE(former->isKeyWindow());
}

TEST_F(KeyWindowTest, WhileTheOldOneResignsNoWindowIsKey) {
  const auto former = openKey("A");
  std::string during;
  recorder.onNext("A resigns",
                  [&] { during = key() + (former->isKeyWindow() ? ", still key" : ""); });
  openKey("B");
  EXPECT_EQ(during, "none");
}

TEST_F(KeyWindowTest, AWindowIsKeyWhenItIsToldSo) {
  std::string during;
  recorder.onNext("A becomes key", [&] { during = key(); });
  openKey("A");
  EXPECT_EQ(during, "A");
}

TEST_F(KeyWindowTest, MakingTheKeyWindowKeyDoesNothing) {
  const auto window = openKey("A");
  recorder.take();
  window->makeKeyWindow();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, MakingAWindowKeyThatIsNotOnScreenDoesNothing) {
  openKey("A");
  const auto never = closedWindow("B");
  const auto closed = open("C");
  closed->close();
  const auto miniaturized = open("D");
  miniaturized->miniaturize();
  recorder.take();
  for (const auto& window : {never, closed, miniaturized}) {
    window->makeKeyWindow();
  }
  EXPECT_EQ(key(), "A");
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, MakingAWindowKeyDoesNotChangeTheOrder) {
  const auto back = open("A");
  open("B");
  back->makeKeyWindow();
  EXPECT_EQ(order(), (Events{"B", "A"}));
}

TEST_F(KeyWindowTest, MakeKeyAndOrderFrontDoesBoth) {
  const auto back = open("A");
  open("B");
  back->makeKeyAndOrderFront();
  EXPECT_EQ(order(), (Events{"A", "B"}));
  EXPECT_EQ(key(), "A");
}

TEST_F(KeyWindowTest, AHandlersWishStands) {
  openKey("A");
  const auto wished = open("C");
  const auto asked = open("B");
  recorder.take();
  recorder.onNext("A resigns", [&] { wished->makeKeyWindow(); });
  asked->makeKeyWindow();
  EXPECT_EQ(recorder.take(), (Events{"A resigns", "C becomes key"}));
  EXPECT_EQ(key(), "C");
}

TEST_F(KeyWindowTest, AHandlerMayWishTheOldOneBack) {
  const auto old = openKey("A");
  const auto asked = open("B");
  recorder.take();
  recorder.onNext("A resigns", [&] { old->makeKeyWindow(); });
  asked->makeKeyWindow();
  EXPECT_EQ(recorder.take(), (Events{"A resigns", "A becomes key"}));
  EXPECT_EQ(key(), "A");
}

TEST_F(KeyWindowTest, AHandlerOfBecomingKeyMayMakeAnotherKey) {
  const auto first = open("A");
  const auto second = open("B");
  recorder.onNext("A becomes key", [&] { second->makeKeyWindow(); });
  first->makeKeyWindow();
  EXPECT_EQ(recorder.take(), (Events{"A becomes key", "A resigns", "B becomes key"}));
  EXPECT_EQ(key(), "B");
}

TEST_F(KeyWindowTest, AWindowThatAHandlerClosesDoesNotBecomeKey) {
  openKey("A");
  const auto asked = open("B");
  recorder.take();
  recorder.onNext("A resigns", [&] { asked->close(); });
  asked->makeKeyWindow();
  EXPECT_EQ(recorder.take(), Events{"A resigns"});
  EXPECT_EQ(key(), "none");
}

TEST_F(KeyWindowTest, AHandlerMayCloseTheWindowThatBecomesKey) {
  openKey("A");
  const auto asked = open("B");
  recorder.take();
  recorder.onNext("B becomes key", [&] { asked->close(); });
  asked->makeKeyWindow();
  EXPECT_EQ(recorder.take(), (Events{"A resigns", "B becomes key", "B resigns", "A becomes key"}));
}

TEST_F(KeyWindowTest, ResigningWithoutASuccessorLeavesNoKeyWindow) {
  openKey("A");
  open("B");
  recorder.take();
  std::string during;
  recorder.onNext("A resigns", [&] { during = key(); });
  platform.user().userMovesFocusAway();
  EXPECT_EQ(during, "none");
  EXPECT_EQ(key(), "none");
  EXPECT_EQ(recorder.take(), Events{"A resigns"});
}

TEST_F(KeyWindowTest, ResigningWithoutAKeyWindowTellsNothing) {
  open("A");
  platform.user().userMovesFocusAway();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(KeyWindowTest, AnObserverHearsJustBeforeTheNotification) {
  struct Observer final : PlatformObserver {
    explicit Observer(EventRecorder& theRecorder) : recorder(theRecorder) {}
    void keyChanges(NSWindow& window, KeyChange change) override {
      recorder.record(std::string(window.className()) +
                      (change == KeyChange::Becomes ? " about to become" : " about to resign"));
    }
    EventRecorder& recorder;
  } observer(recorder);
  openKey("A");
  const auto next = open("B");
  recorder.take();
  setPlatformObserver(&observer);
  next->makeKeyWindow();
  EXPECT_EQ(recorder.take(),
            (Events{"A about to resign", "A resigns", "B about to become", "B becomes key"}));
}

class MainWindowTest : public RecordedTest {
 protected:
  // A window that shows a plain controller, which can present others.
  static Strong<NSWindow> openKeyWithController(std::string_view name) {
    Strong<NSWindow> window = openKey(name);
    window->setContentViewController(make<NamedViewController>("Host"));
    return window;
  }
};

TEST_F(MainWindowTest, IsTheLastToHaveBecomeKey) {
  EXPECT_EQ(main(), "none");
  openKey("A");
  EXPECT_EQ(main(), "A");
  openKey("B");
  open("C");
  EXPECT_EQ(main(), "B");
}

TEST_F(MainWindowTest, StaysWhenItResignsKey) {
  openKey("A");
  platform.user().userMovesFocusAway();
  EXPECT_EQ(main(), "A");
}

TEST_F(MainWindowTest, IsMainAlreadyWhenItIsToldThatItBecameKey) {
  std::string during;
  recorder.onNext("A becomes key", [&] { during = main(); });
  openKey("A");
  EXPECT_EQ(during, "A");
}

TEST_F(MainWindowTest, IsNeverASheet) {
  const auto window = openKeyWithController("A");
  window->contentViewController()->presentViewControllerAsSheet(recordingController("sheet"));
  EXPECT_EQ(NSApp->keyWindow(), window->sheets().at(0));
  EXPECT_EQ(main(), "A");
}

TEST_F(MainWindowTest, IsNeverTheWindowOfAModalPresentation) {
  const auto window = openKeyWithController("A");
  const auto modal = recordingController("modal");
  window->contentViewController()->presentViewControllerAsModalWindow(modal);
  EXPECT_EQ(NSApp->keyWindow(), modal->view()->window());
  EXPECT_EQ(main(), "A");
}

TEST_F(MainWindowTest, IsNoneOnceItHasLeftTheScreen) {
  open("B");
  const auto window = openKey("A");
  std::string during;
  recorder.onNext("A resigns", [&] { during = main(); });
  recorder.onNext("B becomes key", [&] { window->orderFront(); });
  window->close();
  EXPECT_EQ(during, "none");
  EXPECT_EQ(main(), "B");  // not A, although that is on screen again
}

TEST_F(MainWindowTest, IsNoneOnceItIsMiniaturised) {
  const auto window = openKey("A");
  window->miniaturize();
  EXPECT_EQ(main(), "none");
  window->deminiaturize();
  EXPECT_EQ(main(), "none");
}

TEST_F(MainWindowTest, IsTheOneThatKeyPassesOnTo) {
  openKey("A");
  openKey("B")->close();
  EXPECT_EQ(main(), "A");
}

TEST_F(MainWindowTest, StaysWhenAnotherWindowLeaves) {
  const auto other = open("B");
  openKey("A");
  other->close();
  EXPECT_EQ(main(), "A");
}

TEST_F(MainWindowTest, TheFrontWindowIsTheMainOneElseTheKeyOneElseTheForemost) {
  EXPECT_EQ(nameOf(NSApp->frontWindow()), "none");
  const auto back = open("A");
  open("B");
  EXPECT_EQ(nameOf(NSApp->frontWindow()), "B");
  back->makeKeyWindow();
  EXPECT_EQ(nameOf(NSApp->frontWindow()), "A");
}

}  // namespace
}  // namespace vel::test
