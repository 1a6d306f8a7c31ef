// Windows: open and on screen, their order, and what the window system is told of them.
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class WindowTest : public RecordedTest {
 protected:
  // The window as the window system has it.
  const HeadlessWindowSystem::Window& shown(const Strong<NSWindow>& window) {
    return *platform.user().window(window->handle());
  }
};

TEST_F(WindowTest, IsClosedWhenItIsMade) {
  const auto window = closedWindow("A");
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(window->isOnScreen());
  EXPECT_EQ(window->handle(), WindowHandle::None);
  EXPECT_TRUE(order().empty());
}

TEST_F(WindowTest, HasAPlainContentViewOfItsSize) {
  const auto window = closedWindow("A");
  ASSERT_NE(window->contentView(), nullptr);
  EXPECT_EQ(window->contentView()->frame(), CGRectMake(0, 0, 1000, 600));
  EXPECT_EQ(window->contentView()->window(), window);
  EXPECT_EQ(window->contentViewController(), nullptr);
}

TEST_F(WindowTest, IsOpenAndOnScreenOnceOrderedIn) {
  const auto window = open("A");
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(window->isOnScreen());
  EXPECT_TRUE(shown(window).onScreen);
}

TEST_F(WindowTest, OrderedInIsInFront) {
  open("A");
  open("B");
  open("C");
  EXPECT_EQ(order(), (Events{"C", "B", "A"}));
}

TEST_F(WindowTest, OrderedInAgainComesToTheFront) {
  const auto window = open("A");
  open("B");
  window->orderFront();
  EXPECT_EQ(order(), (Events{"A", "B"}));
}

TEST_F(WindowTest, OrderingNeverMakesKey) {
  const auto window = open("A");
  window->orderFront();
  EXPECT_EQ(key(), "none");
}

TEST_F(WindowTest, TheOrderThatTheUserGivesIsFollowed) {
  const auto a = open("A");
  const auto b = open("B");
  const auto c = open("C");
  platform.user().userOrdersWindows({a->handle(), c->handle(), b->handle()});
  EXPECT_EQ(order(), (Events{"A", "C", "B"}));
}

TEST_F(WindowTest, TheUsersOrderLeavesOtherWindowsWhereTheyAre) {
  const auto a = open("A");
  const auto b = open("B");
  open("C");
  const auto hidden = open("D");
  hidden->close();
  platform.user().userOrdersWindows(
      {a->handle(), hidden->handle(), WindowHandle{4711}, b->handle()});
  EXPECT_EQ(order(), (Events{"C", "A", "B"}));
}

TEST_F(WindowTest, IsNeitherOpenNorOnScreenOnceClosed) {
  const auto window = open("A");
  window->close();
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(window->isOnScreen());
  EXPECT_FALSE(shown(window).onScreen);
  EXPECT_TRUE(order().empty());
}

TEST_F(WindowTest, OrderedOutIsClosed) {
  const auto window = openKey("A");
  window->orderOut();
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(key(), "none");
}

TEST_F(WindowTest, ClosingAClosedWindowDoesNothing) {
  const auto window = openKey("A");
  window->close();
  recorder.take();
  window->close();
  closedWindow("B")->close();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(WindowTest, ClosedCanBeOrderedInAgain) {
  const auto window = open("A");
  window->close();
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(shown(window).onScreen);
  EXPECT_EQ(key(), "A");
  EXPECT_EQ(platform.user().windowCount(), 1u);
}

TEST_F(WindowTest, LivesWhileItIsOpenThoughNobodyElseKeepsIt) {
  Strong<NSWindow> window = open("A");
  const Weak<NSWindow> seen = window;
  window.reset();
  ASSERT_FALSE(seen.expired());
  seen.lock()->close();
  EXPECT_TRUE(seen.expired());
  EXPECT_EQ(platform.user().windowCount(), 0u);
}

TEST_F(WindowTest, TheWindowSystemLearnsOfItWhenItIsFirstOrderedIn) {
  const auto window = closedWindow("A");
  window->setTitle("Title");
  window->setStyleMask(NSWindowStyleMaskTitled);
  window->setMovableByWindowBackground(true);
  EXPECT_EQ(platform.user().windowCount(), 0u);
  window->orderFront();
  const WindowDescription& description = shown(window).description;
  EXPECT_EQ(description.className, "A");
  EXPECT_EQ(description.title, "Title");
  EXPECT_EQ(description.frame, CGRectMake(0, 0, 1000, 600));
  EXPECT_EQ(description.styleMask, NSWindowStyleMaskTitled);
  EXPECT_EQ(description.kind, WindowKind::Plain);
  EXPECT_TRUE(description.movableByBackground);
}

TEST_F(WindowTest, TheWindowSystemIsToldOfChanges) {
  const auto window = open("A");
  window->setTitle("Other");
  window->setFrame(CGRectMake(5, 6, 70, 80));
  window->setStyleMask(NSWindowStyleMaskBorderless);
  window->setMovableByWindowBackground(true);
  const WindowDescription& description = shown(window).description;
  EXPECT_EQ(description.title, "Other");
  EXPECT_EQ(description.frame, CGRectMake(5, 6, 70, 80));
  EXPECT_EQ(description.styleMask, NSWindowStyleMaskBorderless);
  EXPECT_TRUE(description.movableByBackground);
}

TEST_F(WindowTest, AStyleMaskThatTheWindowsOwnerGivesItIsFollowed) {
  const auto window = open("A");
  platform.user().ownerSetsStyleMask(window->handle(), NSWindowStyleMaskTitled);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
}

TEST_F(WindowTest, ANewFrameResizesTheContentView) {
  const auto window = open("A");
  window->setFrame(CGRectMake(5, 6, 70, 80));
  EXPECT_EQ(window->contentView()->frame(), CGRectMake(0, 0, 70, 80));
}

TEST_F(WindowTest, TheUsersResizingIsFollowed) {
  const auto window = open("A");
  platform.user().userResizesWindow(window->handle(), CGRectMake(1, 2, 300, 200));
  EXPECT_EQ(window->frame(), CGRectMake(1, 2, 300, 200));
  EXPECT_EQ(window->contentView()->frame(), CGRectMake(0, 0, 300, 200));
}

TEST_F(WindowTest, AnObserverHearsOfEachStyleThatIsSet) {
  struct Observer final : PlatformObserver {
    void styleMaskSet(NSWindow& /*window*/, std::uint64_t styleMask) override {
      masks.push_back(styleMask);
    }
    std::vector<std::uint64_t> masks;
  } observer;
  const auto window = open("A");
  setPlatformObserver(&observer);
  window->setStyleMask(7);
  window->setStyleMask(7);
  EXPECT_EQ(observer.masks, (std::vector<std::uint64_t>{7, 7}));
}

TEST_F(WindowTest, AnObserverHearsOfOpeningAndClosing) {
  struct Observer final : PlatformObserver {
    explicit Observer(EventRecorder& theRecorder) : recorder(theRecorder) {}
    void windowOpened(NSWindow& /*window*/) override { recorder.record("opened"); }
    void windowClosed(NSWindow& /*window*/) override { recorder.record("closed"); }
    EventRecorder& recorder;
  } observer(recorder);
  setPlatformObserver(&observer);
  const auto window = open("A");
  window->orderFront();
  window->close();
  EXPECT_EQ(recorder.take(), (Events{"opened", "closed"}));
}

TEST_F(WindowTest, TheUserClosesItByItsCloseControl) {
  const auto window = open("A");
  platform.user().userClosesWindow(window->handle());
  EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, WithoutACloseControlTheUserCannotCloseIt) {
  const auto window = open("A");
  window->setStyleMask(window->styleMask() & ~NSWindowStyleMaskClosable);
  platform.user().userClosesWindow(window->handle());
  window->performClose();
  EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowTest, PerformCloseClosesWhereThereIsACloseControl) {
  const auto window = open("A");
  window->performClose();
  EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, AHandlerMayTakeTheUsersWishToCloseUponItself) {
  const auto window = open("A");
  Events asked;
  NSApp->setCloseRequestedHandler([&](NSWindow& which) { asked.emplace_back(which.className()); });
  platform.user().userClosesWindow(window->handle());
  EXPECT_EQ(asked, Events{"A"});
  EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowTest, TheHandlerMayReplaceItself) {
  const auto window = open("A");
  auto kept = std::make_shared<int>(0);
  NSApp->setCloseRequestedHandler([kept](NSWindow&) {
    NSApp->setCloseRequestedHandler(nullptr);
    ++*kept;  // still there
  });
  platform.user().userClosesWindow(window->handle());
  EXPECT_EQ(*kept, 1);
  platform.user().userClosesWindow(window->handle());
  EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, AParentIsWhatAddChildWindowSet) {
  const auto parent = open("A");
  const auto child = open("B");
  EXPECT_EQ(child->parentWindow(), nullptr);
  parent->addChildWindow(child);
  EXPECT_EQ(child->parentWindow(), parent);
  EXPECT_EQ(child->sheetParent(), nullptr);
}

TEST_F(WindowTest, AddingAChildDoesNotOpenIt) {
  const auto child = closedWindow("B");
  open("A")->addChildWindow(child);
  EXPECT_FALSE(child->isVisible());
}

TEST_F(WindowTest, AChildAddedElsewhereHasANewParent) {
  const auto former = open("A");
  const auto parent = open("B");
  const auto child = open("C");
  former->addChildWindow(child);
  parent->addChildWindow(child);
  parent->addChildWindow(child);
  EXPECT_EQ(child->parentWindow(), parent);
}

TEST_F(WindowTest, NoChildIsAddedOfNoneOrItself) {
  const auto window = open("A");
  window->addChildWindow(nullptr);
  window->addChildWindow(window);
  EXPECT_EQ(window->parentWindow(), nullptr);
}

TEST_F(WindowTest, ThousandsOfWindowsOpenAndClose) {
  std::vector<Strong<NSWindow>> windows;
  for (int number = 0; number < 2'000; ++number) {
    windows.push_back(open("A"));
    if (number % 100 == 0) {
      windows.back()->makeKeyWindow();
    }
  }
  EXPECT_EQ(order().size(), 2'000u);
  for (const Strong<NSWindow>& window : windows) {
    window->close();
  }
  windows.clear();
  EXPECT_EQ(platform.user().windowCount(), 0u);
}

}  // namespace
}  // namespace vel::test
