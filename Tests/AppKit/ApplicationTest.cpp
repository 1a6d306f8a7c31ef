// The application: its beginning and end, and what a window system may report to it.
#include <poll.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/AppKit/EventRecorder.h"
#include "Tests/Foundation/Ticker.h"

namespace vel::test {
namespace {

/// A display that answers and reports what the test wants.
class ScriptedDisplay final : public WindowSystem {
 public:
  void setDelegate(WindowSystemDelegate* to) override { delegate = to; }
  [[nodiscard]] WaitHandle waitHandle() const override { return {}; }
  bool deliverEvents() override {
    deadline_ = kNever;
    return false;
  }
  [[nodiscard]] Nanoseconds nextDeadline() const override { return deadline_; }
  WindowHandle createWindow(const WindowDescription& /*description*/) override {
    asked();
    return nextHandle;
  }
  std::optional<AdoptedWindow> adoptWindow(std::uint64_t /*nativeId*/,
                                           std::string& error) override {
    asked();
    error = adopted ? "" : "no such window";
    return adopted;
  }
  void releaseWindow(WindowHandle /*window*/) override {
    asked();
    ++released;
  }
  void orderFront(WindowHandle /*window*/) override { asked(); }
  void orderOut(WindowHandle /*window*/) override { asked(); }
  void requestFocus(WindowHandle /*window*/) override { asked(); }
  void requestMiniaturized(WindowHandle /*window*/, bool /*miniaturized*/) override { asked(); }
  void setFrame(WindowHandle /*window*/, CGRect /*frame*/) override { asked(); }
  void setTitle(WindowHandle /*window*/, std::string_view /*title*/) override { asked(); }
  void setStyleMask(WindowHandle /*window*/, NSWindowStyleMask /*styleMask*/) override { asked(); }
  void setMovableByBackground(WindowHandle /*window*/, bool /*movable*/) override { asked(); }
  void setScene(WindowHandle /*window*/, const Scene& /*scene*/) override { asked(); }
  void setModalWindow(WindowHandle /*window*/) override { asked(); }
  std::optional<WindowPicture> picture(WindowHandle /*window*/) override { return std::nullopt; }

  WindowSystemDelegate* delegate = nullptr;
  WindowHandle nextHandle = WindowHandle{1};
  std::optional<AdoptedWindow> adopted;
  int released = 0;
  bool hasReports = false;  // after each operation

 private:
  void asked() { deadline_ = hasReports ? 0 : kNever; }

  Nanoseconds deadline_ = kNever;
};

class ApplicationTest : public RecordedTest {
 protected:
  // Replaces the headless display.
  ScriptedDisplay& startOnScriptedDisplay() {
    auto made = std::make_unique<ScriptedDisplay>();
    ScriptedDisplay& display = *made;
    NSApplication::start(std::move(made));
    observeAgain();
    return display;
  }
  static std::optional<AdoptedWindow> gameWindow() {
    return AdoptedWindow{.handle = WindowHandle{7},
                         .className = "PlayerWindow",
                         .title = "Game",
                         .frame = CGRectMake(10, 20, 800, 600),
                         .styleMask = kFullStyle};
  }
};

/// A host that polls the loop's descriptor in real time, and calls operations between passes.
class PollingHostTest : public ApplicationTest {
 protected:
  PollingHostTest() {
    loop.useRealTime();
    window->contentView()->setWantsLayer(true);
  }

  /// Brings the descriptor up to date, as a host does before it waits.
  void pumpUntilIdle() {
    while (isReadable(0)) {
      loop.pump();
    }
  }
  bool isReadable(int milliseconds) {
    pollfd polled{.fd = loop.descriptor(), .events = POLLIN, .revents = 0};
    return poll(&polled, 1, milliseconds) == 1;
  }
  /// Whether each operation, done while nothing else is due, makes the descriptor readable.
  void expectReadableAfterEach(bool readable) {
    for (std::size_t number = 0; number < operations.size(); ++number) {
      pumpUntilIdle();
      operations[number]();
      EXPECT_EQ(isReadable(readable ? kPatience : 0), readable) << "operation " << number;
    }
  }

  static constexpr int kPatience = 10'000;

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  ScriptedDisplay& display = startOnScriptedDisplay();
  Strong<NSWindow> window =
      NSWindow::initWithContentRectStyleMask(CGRectMake(10, 20, 800, 600), kFullStyle);
  std::string error;
  std::vector<std::function<void()>> operations{
      [this] { NSApp->adoptWindow(7, error); },
      [this] { window->orderFront(); },
      [this] { window->makeKeyWindow(); },
      [this] { window->setFrame(CGRectMake(1, 2, 300, 200)); },
      [this] { window->setTitle("Game"); },
      [this] { window->setStyleMask(NSWindowStyleMaskTitled); },
      [this] { window->setMovableByWindowBackground(true); },
      [this] {
        window->contentView()->layer()->setBackgroundColor(CGColor{1, 1, 1, 1});
      },
      [this] { window->miniaturize(); },
      [this] { NSApp->beginModalRun(window); },
      [this] { window->close(); },
      [this] { window = nullptr; }};
};

TEST_F(PollingHostTest, IsWokenWhereAnOperationHasBroughtReports) {
  display.hasReports = true;
  expectReadableAfterEach(true);
}

TEST_F(PollingHostTest, IsNotWokenWhereAnOperationHasBroughtNone) {
  expectReadableAfterEach(false);
}

TEST_F(ApplicationTest, StandsFromStartToStop) {
  EXPECT_NE(NSApp, nullptr);
  NSApplication::stop();
  EXPECT_EQ(NSApp, nullptr);
  NSApplication::stop();
}

TEST_F(ApplicationTest, StoppingClosesEveryWindowTheLatestFirst) {
  recordingControllerIn(open("A"), "first");
  recordingControllerIn(open("B"), "second");
  recorder.take();
  NSApplication::stop();
  EXPECT_EQ(recorder.take(), (Events{"second will disappear", "second did disappear",
                                     "first will disappear", "first did disappear"}));
}

TEST_F(ApplicationTest, StoppingDropsTimersAndWork) {
  const auto ticker = make<Ticker>();
  schedule(0.1, ticker);
  dispatch_async(dispatch_get_main_queue(), [this] { recorder.record("work"); });
  NSApplication::stop();
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(ApplicationTest, StartingAgainEndsTheFormerOne) {
  const auto window = open("A");
  const Weak<NSApplication> former = NSApp;
  startOnScriptedDisplay();
  EXPECT_TRUE(former.expired());
  EXPECT_FALSE(window->isVisible());
  EXPECT_TRUE(order().empty());
}

TEST_F(ApplicationTest, AWindowOfAFormerOneCanBeOpenedInTheNext) {
  const auto window = open("A");
  startOnScriptedDisplay().nextHandle = WindowHandle{5};
  window->orderFront();
  EXPECT_EQ(window->handle(), WindowHandle{5});
  EXPECT_EQ(order(), Events{"A"});
}

TEST_F(ApplicationTest, WithoutOneWindowsOnlyKeepTheirState) {
  const auto window = open("A");
  NSApplication::stop();
  window->makeKeyAndOrderFront();
  window->setFrame(CGRectMake(0, 0, 5, 5));
  window->setTitle("Title");
  window->setStyleMask(NSWindowStyleMaskTitled);
  window->miniaturize();
  window->close();
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(window->isKeyWindow());
  EXPECT_FALSE(window->isModalPanel());
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
}

TEST_F(ApplicationTest, AWindowThatDiesIsReleasedByTheDisplay) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  Strong<NSWindow> window = open("A");
  window->close();
  EXPECT_EQ(display.released, 0);
  window.reset();
  EXPECT_EQ(display.released, 1);
}

TEST_F(ApplicationTest, AWindowThatTheDisplayRefusesIsNeverTakenForTheFocusedOne) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  display.nextHandle = WindowHandle::None;
  const auto window = open("A");
  display.delegate->focusMoved(WindowHandle::None);
  EXPECT_EQ(key(), "none");
  display.delegate->windowDestroyed(WindowHandle::None);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(ApplicationTest, AWindowBecomesKeyWhenTheDisplaySaysSo) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  open("A")->makeKeyWindow();
  EXPECT_EQ(key(), "none");
  display.delegate->focusMoved(WindowHandle{1});
  EXPECT_EQ(key(), "A");
}

TEST_F(ApplicationTest, ReportsAboutUnknownWindowsDoNothing) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  constexpr WindowHandle kUnknown{99};
  display.delegate->closeRequested(kUnknown);
  display.delegate->windowDestroyed(kUnknown);
  display.delegate->frameChanged(kUnknown, CGRectZero);
  display.delegate->miniaturizedChanged(kUnknown, true);
  display.delegate->controlsKept(kUnknown, 2);
  display.delegate->focusMoved(kUnknown);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(ApplicationTest, AReportOfLateFocusForAClosedWindowDoesNothing) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  const auto window = open("A");
  window->close();
  display.delegate->focusMoved(WindowHandle{1});
  EXPECT_EQ(key(), "none");
}

TEST_F(ApplicationTest, ComingBackToAWindowOfHisChoiceLeavesTheFormerKeyWindowAside) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  const auto former = open("A");
  display.nextHandle = WindowHandle{2};
  const auto chosen = open("B");
  display.delegate->focusMoved(WindowHandle{1});
  display.delegate->applicationDeactivated();
  recorder.take();
  display.delegate->focusMoved(WindowHandle{2});
  display.delegate->applicationActivated(WindowHandle{2});
  EXPECT_EQ(recorder.take(), (Events{"B becomes key", "application is active"}));
}

TEST_F(ApplicationTest, AHandlerHearsWhichControlsAreKept) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  const auto window = open("A");
  display.delegate->controlsKept(WindowHandle{1}, NSWindowStyleMaskClosable);
  NSWindowStyleMask kept = 0;
  NSApp->setControlsKeptHandler([&](NSWindow& which, NSWindowStyleMask controls) {
    EXPECT_EQ(&which, window.get());
    kept = controls;
  });
  display.delegate->controlsKept(WindowHandle{1}, NSWindowStyleMaskClosable);
  EXPECT_EQ(kept, NSWindowStyleMaskClosable);
}

TEST_F(ApplicationTest, AnAdoptedWindowIsAsItWasFound) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  display.adopted = gameWindow();
  std::string error;
  const auto window = NSApp->adoptWindow(42, error);
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(error, "");
  EXPECT_EQ(window->className(), "PlayerWindow");
  EXPECT_EQ(window->title(), "Game");
  EXPECT_EQ(window->frame(), CGRectMake(10, 20, 800, 600));
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(window->handle(), WindowHandle{7});
  EXPECT_TRUE(window->isOnScreen());
  EXPECT_EQ(order(), Events{"PlayerWindow"});
  EXPECT_EQ(key(), "none");
}

TEST_F(ApplicationTest, AnAdoptedWindowThatHasTheFocusBecomesKey) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  display.adopted = gameWindow();
  display.adopted->hasFocus = true;
  std::string error;
  const auto window = NSApp->adoptWindow(42, error);
  EXPECT_EQ(recorder.take(), Events{"PlayerWindow becomes key"});
  EXPECT_EQ(NSApp->mainWindow(), window);
}

TEST_F(ApplicationTest, AnAdoptedWindowThatIsMiniaturisedIsOpenAndComesBack) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  display.adopted = gameWindow();
  display.adopted->onScreen = false;
  std::string error;
  const auto window = NSApp->adoptWindow(42, error);
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(window->isMiniaturized());
  EXPECT_TRUE(order().empty());
  display.delegate->miniaturizedChanged(WindowHandle{7}, false);
  EXPECT_EQ(order(), Events{"PlayerWindow"});
}

TEST_F(ApplicationTest, AdoptingFailsWithTheReason) {
  startOnScriptedDisplay();
  std::string error;
  EXPECT_EQ(NSApp->adoptWindow(42, error), nullptr);
  EXPECT_EQ(error, "no such window");
  EXPECT_TRUE(order().empty());
}

TEST_F(ApplicationTest, AnAdoptedWindowThatItsOwnerDestroysCountsAsClosed) {
  ScriptedDisplay& display = startOnScriptedDisplay();
  display.adopted = gameWindow();
  display.adopted->hasFocus = true;
  std::string error;
  const auto window = NSApp->adoptWindow(42, error);
  recordingControllerIn(window, "view");
  recorder.take();
  display.delegate->windowDestroyed(WindowHandle{7});
  EXPECT_EQ(recorder.take(),
            (Events{"view will disappear", "view did disappear", "PlayerWindow resigns"}));
}

}  // namespace
}  // namespace vel::test
