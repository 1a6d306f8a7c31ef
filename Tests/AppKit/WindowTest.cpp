// `isVisible` of a window is true while the window is open. `isOnScreen` is true while the window
// is open and not miniaturised.
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class WindowTest : public EventRecordingTest {
 protected:
  // The state of the window in the window system.
  const HeadlessWindowSystem::Window& stateOf(const Strong<NSWindow>& window) {
    return *platform.windowSystem().window(window->handle());
  }
};

TEST_F(WindowTest, ANewWindowIsClosed) {
  const auto window = makeClosedWindow("A");
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(window->isOnScreen());
  EXPECT_EQ(window->handle(), WindowHandle::None);
  EXPECT_TRUE(windowOrder().empty());
}

TEST_F(WindowTest, ANewWindowHasAContentViewButNoContentViewController) {
  const auto window = makeClosedWindow("A");
  ASSERT_NE(window->contentView(), nullptr);
  EXPECT_EQ(window->contentView()->frame(), CGRectMake(0, 0, 1000, 600));
  EXPECT_EQ(window->contentView()->window(), window);
  EXPECT_EQ(window->contentViewController(), nullptr);
}

TEST_F(WindowTest, OrderFrontOpensAWindowAndPutsItOnScreen) {
  const auto window = openWindow("A");
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(window->isOnScreen());
  EXPECT_TRUE(stateOf(window).isOnScreen);
}

TEST_F(WindowTest, AnOpenedWindowIsInFront) {
  openWindow("A");
  openWindow("B");
  openWindow("C");
  EXPECT_EQ(windowOrder(), (Events{"C", "B", "A"}));
}

TEST_F(WindowTest, OrderFrontMovesAnOpenWindowToTheFront) {
  const auto window = openWindow("A");
  openWindow("B");
  window->orderFront();
  EXPECT_EQ(windowOrder(), (Events{"A", "B"}));
}

TEST_F(WindowTest, OrderFrontDoesNotMakeAWindowKey) {
  const auto window = openWindow("A");
  window->orderFront();
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(WindowTest, TheUserCanReorderWindows) {
  const auto windowA = openWindow("A");
  const auto windowB = openWindow("B");
  const auto windowC = openWindow("C");
  platform.windowSystem().userRestacksWindows(
      {windowA->handle(), windowC->handle(), windowB->handle()});
  EXPECT_EQ(windowOrder(), (Events{"A", "C", "B"}));
}

TEST_F(WindowTest, AReportedStackingOrderMovesOnlyTheOpenWindowsThatItLists) {
  const auto windowA = openWindow("A");
  const auto windowB = openWindow("B");
  openWindow("C");
  const auto closedWindow = openWindow("D");
  closedWindow->close();
  // The handle 4711 belongs to no window.
  platform.windowSystem().userRestacksWindows(
      {windowA->handle(), closedWindow->handle(), WindowHandle{4711}, windowB->handle()});
  EXPECT_EQ(windowOrder(), (Events{"C", "A", "B"}));
}

TEST_F(WindowTest, CloseRemovesTheWindowFromTheScreenAndFromTheOrder) {
  const auto window = openWindow("A");
  window->close();
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(window->isOnScreen());
  EXPECT_FALSE(stateOf(window).isOnScreen);
  EXPECT_TRUE(windowOrder().empty());
}

TEST_F(WindowTest, OrderOutClosesAWindow) {
  const auto window = openKeyWindow("A");
  window->orderOut();
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(WindowTest, ClosingAClosedWindowDoesNothing) {
  const auto window = openKeyWindow("A");
  window->close();
  recorder.takeEvents();
  window->close();
  makeClosedWindow("B")->close();
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(WindowTest, AClosedWindowCanBeOpenedAgain) {
  const auto window = openWindow("A");
  window->close();
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(stateOf(window).isOnScreen);
  EXPECT_EQ(keyWindowName(), "A");
  EXPECT_EQ(platform.windowSystem().windowCount(), 1u);
}

TEST_F(WindowTest, TheApplicationHoldsAStrongReferenceToAnOpenWindow) {
  Strong<NSWindow> window = openWindow("A");
  const Weak<NSWindow> weakWindow = window;
  window.reset();
  ASSERT_FALSE(weakWindow.expired());
  weakWindow.lock()->close();
  EXPECT_TRUE(weakWindow.expired());
  EXPECT_EQ(platform.windowSystem().windowCount(), 0u);
}

TEST_F(WindowTest, OpeningAWindowForTheFirstTimeCreatesItInTheWindowSystem) {
  const auto window = makeClosedWindow("A");
  window->setTitle("Title");
  window->setStyleMask(NSWindowStyleMaskTitled);
  window->setMovableByWindowBackground(true);
  EXPECT_EQ(platform.windowSystem().windowCount(), 0u);
  window->orderFront();
  const WindowDescription& description = stateOf(window).description;
  EXPECT_EQ(description.className, "A");
  EXPECT_EQ(description.title, "Title");
  EXPECT_EQ(description.frame, CGRectMake(0, 0, 1000, 600));
  EXPECT_EQ(description.styleMask, NSWindowStyleMaskTitled);
  EXPECT_EQ(description.kind, WindowKind::Plain);
  EXPECT_TRUE(description.isMovableByBackground);
}

TEST_F(WindowTest, TheWindowSystemReceivesChangesOfAnOpenWindow) {
  const auto window = openWindow("A");
  window->setTitle("Other");
  window->setFrame(CGRectMake(5, 6, 70, 80));
  window->setStyleMask(NSWindowStyleMaskBorderless);
  window->setMovableByWindowBackground(true);
  const WindowDescription& description = stateOf(window).description;
  EXPECT_EQ(description.title, "Other");
  EXPECT_EQ(description.frame, CGRectMake(5, 6, 70, 80));
  EXPECT_EQ(description.styleMask, NSWindowStyleMaskBorderless);
  EXPECT_TRUE(description.isMovableByBackground);
}

TEST_F(WindowTest, TheOwnerOfAWindowCanChangeItsStyleMask) {
  const auto window = openWindow("A");
  platform.windowSystem().ownerSetsStyleMask(window->handle(), NSWindowStyleMaskTitled);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
}

TEST_F(WindowTest, ANewFrameResizesTheContentView) {
  const auto window = openWindow("A");
  window->setFrame(CGRectMake(5, 6, 70, 80));
  EXPECT_EQ(window->contentView()->frame(), CGRectMake(0, 0, 70, 80));
}

TEST_F(WindowTest, ResizingByTheUserChangesTheFrameAndTheContentView) {
  const auto window = openWindow("A");
  platform.windowSystem().userResizesWindow(window->handle(), CGRectMake(1, 2, 300, 200));
  EXPECT_EQ(window->frame(), CGRectMake(1, 2, 300, 200));
  EXPECT_EQ(window->contentView()->frame(), CGRectMake(0, 0, 300, 200));
}

TEST_F(WindowTest, SettingTheSameStyleMaskAgainNotifiesThePlatformObserver) {
  struct Observer final : PlatformObserver {
    void styleMaskWasSet(NSWindow& /*window*/, std::uint64_t styleMask) override {
      masks.push_back(styleMask);
    }
    std::vector<std::uint64_t> masks;
  } observer;
  const auto window = openWindow("A");
  setPlatformObserver(&observer);
  window->setStyleMask(7);
  window->setStyleMask(7);
  EXPECT_EQ(observer.masks, (std::vector<std::uint64_t>{7, 7}));
}

TEST_F(WindowTest, ThePlatformObserverIsNotifiedWhenAWindowOpensAndCloses) {
  struct Observer final : PlatformObserver {
    explicit Observer(EventRecorder& eventRecorder) : recorder(eventRecorder) {}
    void windowOpened(NSWindow& /*window*/) override { recorder.record("opened"); }
    void windowClosed(NSWindow& /*window*/) override { recorder.record("closed"); }
    EventRecorder& recorder;
  } observer(recorder);
  setPlatformObserver(&observer);
  const auto window = openWindow("A");
  window->orderFront();
  window->close();
  EXPECT_EQ(recorder.takeEvents(), (Events{"opened", "closed"}));
}

TEST_F(WindowTest, TheCloseControlClosesAWindow) {
  const auto window = openWindow("A");
  platform.windowSystem().userClosesWindow(window->handle());
  EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, TheUserCannotCloseAWindowThatHasNoCloseControl) {
  const auto window = openWindow("A");
  window->setStyleMask(window->styleMask() & ~NSWindowStyleMaskClosable);
  platform.windowSystem().userClosesWindow(window->handle());
  window->performClose();
  EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowTest, PerformCloseClosesAWindowWithACloseControl) {
  const auto window = openWindow("A");
  window->performClose();
  EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, ACloseRequestCallsTheHandlerAndLeavesTheWindowOpen) {
  const auto window = openWindow("A");
  Events windowsToClose;
  NSApp->setCloseRequestedHandler(
      [&](NSWindow& windowToClose) { windowsToClose.emplace_back(windowToClose.className()); });
  platform.windowSystem().userClosesWindow(window->handle());
  EXPECT_EQ(windowsToClose, Events{"A"});
  EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowTest, TheCloseRequestedHandlerMayRemoveItself) {
  const auto window = openWindow("A");
  auto callCount = std::make_shared<int>(0);
  NSApp->setCloseRequestedHandler([callCount](NSWindow&) {
    NSApp->setCloseRequestedHandler(nullptr);
    ++*callCount;  // the capture must still exist
  });
  platform.windowSystem().userClosesWindow(window->handle());
  EXPECT_EQ(*callCount, 1);
  platform.windowSystem().userClosesWindow(window->handle());
  EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, AddChildWindowSetsTheParent) {
  const auto parent = openWindow("A");
  const auto child = openWindow("B");
  EXPECT_EQ(child->parentWindow(), nullptr);
  parent->addChildWindow(child);
  EXPECT_EQ(child->parentWindow(), parent);
  EXPECT_EQ(child->sheetParent(), nullptr);
}

TEST_F(WindowTest, AddChildWindowDoesNotOpenTheChild) {
  const auto child = makeClosedWindow("B");
  openWindow("A")->addChildWindow(child);
  EXPECT_FALSE(child->isVisible());
}

TEST_F(WindowTest, AddChildWindowReplacesThePreviousParent) {
  const auto previousParent = openWindow("A");
  const auto parent = openWindow("B");
  const auto child = openWindow("C");
  previousParent->addChildWindow(child);
  parent->addChildWindow(child);
  parent->addChildWindow(child);
  EXPECT_EQ(child->parentWindow(), parent);
}

TEST_F(WindowTest, AWindowCannotHaveNullOrItselfAsAChild) {
  const auto window = openWindow("A");
  window->addChildWindow(nullptr);
  window->addChildWindow(window);
  EXPECT_EQ(window->parentWindow(), nullptr);
}

TEST_F(WindowTest, ThousandsOfWindowsCanOpenAndClose) {
  std::vector<Strong<NSWindow>> windows;
  for (int number = 0; number < 2'000; ++number) {
    windows.push_back(openWindow("A"));
    if (number % 100 == 0) {
      windows.back()->makeKeyWindow();
    }
  }
  EXPECT_EQ(windowOrder().size(), 2'000u);
  for (const Strong<NSWindow>& window : windows) {
    window->close();
  }
  windows.clear();
  EXPECT_EQ(platform.windowSystem().windowCount(), 0u);
}

}  // namespace
}  // namespace vel::test
