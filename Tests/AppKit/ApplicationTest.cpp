// The application: its start and stop, and its reaction to the window system's reports.
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

/// A window system whose results the test chooses. To report an event, the test calls `delegate`.
class ScriptedWindowSystem final : public WindowSystem {
 public:
  void setDelegate(WindowSystemDelegate* newDelegate) override { delegate = newDelegate; }
  [[nodiscard]] WaitHandle waitHandle() const override { return {}; }
  bool deliverEvents() override {
    deadline_ = kNever;
    return false;
  }
  [[nodiscard]] Nanoseconds nextDeadline() const override { return deadline_; }
  WindowHandle createWindow(const WindowDescription& /*description*/) override {
    updateDeadline();
    return nextHandle;
  }
  std::optional<AdoptedWindow> adoptWindow(const NativeWindow& /*native*/,
                                           std::string& error) override {
    updateDeadline();
    error = adoptionResult ? "" : "no such window";
    return adoptionResult;
  }
  void releaseWindow(WindowHandle /*window*/) override {
    updateDeadline();
    ++releaseCount;
  }
  void orderFront(WindowHandle /*window*/) override { updateDeadline(); }
  void orderOut(WindowHandle /*window*/) override { updateDeadline(); }
  void requestFocus(WindowHandle /*window*/) override { updateDeadline(); }
  void requestMiniaturized(WindowHandle /*window*/, bool /*miniaturized*/) override {
    updateDeadline();
  }
  void setFrame(WindowHandle /*window*/, CGRect /*frame*/) override { updateDeadline(); }
  void setTitle(WindowHandle /*window*/, std::string_view /*title*/) override { updateDeadline(); }
  void setStyleMask(WindowHandle /*window*/, NSWindowStyleMask /*styleMask*/) override {
    updateDeadline();
  }
  void setMovableByBackground(WindowHandle /*window*/, bool /*movable*/) override {
    updateDeadline();
  }
  void setScene(WindowHandle /*window*/, const Scene& /*scene*/) override { updateDeadline(); }
  void setModalWindow(WindowHandle /*window*/) override { updateDeadline(); }
  std::optional<WindowPicture> picture(WindowHandle /*window*/) override { return std::nullopt; }

  WindowSystemDelegate* delegate = nullptr;
  /// The result of `createWindow`.
  WindowHandle nextHandle = WindowHandle{1};
  /// The result of `adoptWindow`.
  std::optional<AdoptedWindow> adoptionResult;
  int releaseCount = 0;
  /// If true, `nextDeadline` returns 0 after each operation until the next `deliverEvents`, as if
  /// the operation had caused a report. 0 means now.
  bool operationsCauseReports = false;

 private:
  void updateDeadline() { deadline_ = operationsCauseReports ? 0 : kNever; }

  Nanoseconds deadline_ = kNever;
};

class ApplicationTest : public EventRecordingTest {
 protected:
  // Starts a new application that uses a scripted window system instead of the headless one.
  ScriptedWindowSystem& startScriptedWindowSystem() {
    auto ownedSystem = std::make_unique<ScriptedWindowSystem>();
    ScriptedWindowSystem& windowSystem = *ownedSystem;
    NSApplication::start(std::move(ownedSystem));
    observeNotifications();
    return windowSystem;
  }
  static std::optional<AdoptedWindow> gameWindow() {
    return AdoptedWindow{.handle = WindowHandle{7},
                         .className = "PlayerWindow",
                         .title = "Game",
                         .frame = CGRectMake(10, 20, 800, 600),
                         .styleMask = kFullStyle};
  }
};

/// Acts as a host, the program that uses the library: polls the run loop's descriptor in real time,
/// and calls AppKit between two passes of the run loop.
class PollingHostTest : public ApplicationTest {
 protected:
  PollingHostTest() {
    loop.useRealTime();
    // The operation `setBackgroundColor` needs a layer.
    window->contentView()->setWantsLayer(true);
  }

  /// Runs passes until the descriptor is no longer readable, as a host does before it waits.
  void pumpUntilIdle() {
    while (isReadable()) {
      loop.pump();
    }
  }
  bool isReadable(int timeoutInMilliseconds = 0) {
    pollfd pollEntry{.fd = loop.waitHandle().descriptor(), .events = POLLIN, .revents = 0};
    return poll(&pollEntry, 1, timeoutInMilliseconds) == 1;
  }
  /// Runs each operation. Expects that the descriptor then becomes readable.
  void expectReadableAfterEachOperation() {
    for (const Operation& operation : operations) {
      pumpUntilIdle();
      operation.run();
      EXPECT_TRUE(isReadable(kTimeoutInMilliseconds)) << operation.name;
    }
  }

  /// Runs each operation. Expects that the descriptor is then not readable.
  void expectNotReadableAfterEachOperation() {
    for (const Operation& operation : operations) {
      pumpUntilIdle();
      operation.run();
      EXPECT_FALSE(isReadable()) << operation.name;
    }
  }

  struct Operation {
    const char* name;
    std::function<void()> run;
  };

  static constexpr int kTimeoutInMilliseconds = 10'000;

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  Strong<NSWindow> window =
      NSWindow::initWithContentRectStyleMask(CGRectMake(10, 20, 800, 600), kFullStyle);
  std::string error;
  // Each operation starts from the state after the previous operation.
  std::vector<Operation> operations{
      {"adoptWindow", [this] { NSApp->adoptWindow(X11WindowId{7}, error); }},
      {"orderFront", [this] { window->orderFront(); }},
      {"makeKeyWindow", [this] { window->makeKeyWindow(); }},
      {"setFrame", [this] { window->setFrame(CGRectMake(1, 2, 300, 200)); }},
      {"setTitle", [this] { window->setTitle("Game"); }},
      {"setStyleMask", [this] { window->setStyleMask(NSWindowStyleMaskTitled); }},
      {"setMovableByWindowBackground", [this] { window->setMovableByWindowBackground(true); }},
      {"setBackgroundColor",
       [this] {
         window->contentView()->layer()->setBackgroundColor(CGColor{1, 1, 1, 1});
       }},
      {"miniaturize", [this] { window->miniaturize(); }},
      {"beginModalSession", [this] { NSApp->beginModalSession(window); }},
      {"close", [this] { window->close(); }},
      {"release the window", [this] { window = nullptr; }}};
};

TEST_F(PollingHostTest, TheDescriptorIsReadableAfterAnOperationThatCausesReports) {
  windowSystem.operationsCauseReports = true;
  expectReadableAfterEachOperation();
}

TEST_F(PollingHostTest, TheDescriptorIsNotReadableAfterAnOperationWithoutReports) {
  expectNotReadableAfterEachOperation();
}

TEST_F(ApplicationTest, NSAppIsNullAfterStop) {
  EXPECT_NE(NSApp, nullptr);
  NSApplication::stop();
  EXPECT_EQ(NSApp, nullptr);
  NSApplication::stop();  // does nothing
}

TEST_F(ApplicationTest, StopClosesAllWindowsNewestFirst) {
  addController(openWindow("A"), "first");
  addController(openWindow("B"), "second");
  recorder.takeEvents();
  NSApplication::stop();
  EXPECT_EQ(recorder.takeEvents(), (Events{"second will disappear", "second did disappear",
                                           "first will disappear", "first did disappear"}));
}

TEST_F(ApplicationTest, StopDiscardsTimersAndTheWorkOfTheMainQueue) {
  const auto ticker = make<Ticker>();
  schedule(0.1, ticker);
  dispatch_async(dispatch_get_main_queue(), [this] { recorder.record("work"); });
  NSApplication::stop();
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(ApplicationTest, StartStopsThePreviousApplication) {
  const auto window = openWindow("A");
  const Weak<NSApplication> previousApplication = NSApp;
  startScriptedWindowSystem();
  EXPECT_TRUE(previousApplication.expired());
  EXPECT_FALSE(window->isVisible());
  EXPECT_TRUE(windowOrder().empty());
}

TEST_F(ApplicationTest, AWindowOfAStoppedApplicationCanBeOpenedInTheNextApplication) {
  const auto window = openWindow("A");
  startScriptedWindowSystem().nextHandle = WindowHandle{5};
  window->orderFront();
  EXPECT_EQ(window->handle(), WindowHandle{5});
  EXPECT_EQ(windowOrder(), Events{"A"});
}

TEST_F(ApplicationTest, AWindowOfAStoppedApplicationStoresItsPropertiesButDoesNotOpen) {
  const auto window = openWindow("A");
  NSApplication::stop();
  window->makeKeyAndOrderFront();
  window->setFrame(CGRectMake(0, 0, 5, 5));
  window->setTitle("Title");
  window->setStyleMask(NSWindowStyleMaskTitled);
  window->miniaturize();
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(window->isKeyWindow());
  EXPECT_FALSE(window->isModalPanel());
  EXPECT_EQ(window->frame(), CGRectMake(0, 0, 5, 5));
  EXPECT_EQ(window->title(), "Title");
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  window->close();
  EXPECT_FALSE(window->isVisible());
}

TEST_F(ApplicationTest, DestroyingAWindowReleasesItInTheWindowSystem) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  Strong<NSWindow> window = openWindow("A");
  window->close();
  EXPECT_EQ(windowSystem.releaseCount, 0);
  window.reset();
  EXPECT_EQ(windowSystem.releaseCount, 1);
}

TEST_F(ApplicationTest, ReportsForTheNoneHandleDoNotAffectAWindowWithoutAHandle) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  windowSystem.nextHandle = WindowHandle::None;  // as if the display is lost
  const auto window = openWindow("A");
  windowSystem.delegate->focusMoved(WindowHandle::None);
  EXPECT_EQ(keyWindowName(), "none");
  windowSystem.delegate->windowDestroyed(WindowHandle::None);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(ApplicationTest, MakeKeyWindowTakesEffectOnlyWhenTheFocusIsReported) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  const auto window = openWindow("A");
  window->makeKeyWindow();
  EXPECT_EQ(keyWindowName(), "none");
  windowSystem.delegate->focusMoved(window->handle());
  EXPECT_EQ(keyWindowName(), "A");
}

TEST_F(ApplicationTest, ReportsAboutUnknownWindowsDoNothing) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  constexpr WindowHandle kUnknownWindow{99};
  windowSystem.delegate->closeRequested(kUnknownWindow);
  windowSystem.delegate->windowDestroyed(kUnknownWindow);
  windowSystem.delegate->frameChanged(kUnknownWindow, CGRectZero);
  windowSystem.delegate->miniaturizedChanged(kUnknownWindow, true);
  windowSystem.delegate->remainingControlsDetected(kUnknownWindow, NSWindowStyleMaskClosable);
  windowSystem.delegate->focusMoved(kUnknownWindow);
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(ApplicationTest, AFocusReportForAClosedWindowDoesNothing) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  const auto window = openWindow("A");
  window->close();
  windowSystem.delegate->focusMoved(window->handle());
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(ApplicationTest, AnActivationReportThatNamesAWindowDoesNotRestoreThePreviousKeyWindow) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  const auto windowA = openWindow("A");
  windowSystem.nextHandle = WindowHandle{2};
  const auto windowB = openWindow("B");
  windowSystem.delegate->focusMoved(windowA->handle());
  windowSystem.delegate->applicationDeactivated();
  recorder.takeEvents();
  windowSystem.delegate->focusMoved(windowB->handle());
  windowSystem.delegate->applicationActivated(windowB->handle());
  EXPECT_EQ(recorder.takeEvents(), (Events{"B becomes key", "application becomes active"}));
}

// The remaining controls are the controls that the window manager still offers although the style
// mask excludes them.
TEST_F(ApplicationTest, TheHandlerForRemainingControlsReceivesTheWindowAndTheControls) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  const auto window = openWindow("A");
  // Without a handler the report does nothing.
  windowSystem.delegate->remainingControlsDetected(window->handle(), NSWindowStyleMaskClosable);
  NSWindowStyleMask remainingControls = 0;
  NSApp->setRemainingControlsHandler([&](NSWindow& reportedWindow, NSWindowStyleMask controls) {
    EXPECT_EQ(&reportedWindow, window.get());
    remainingControls = controls;
  });
  windowSystem.delegate->remainingControlsDetected(window->handle(), NSWindowStyleMaskClosable);
  EXPECT_EQ(remainingControls, NSWindowStyleMaskClosable);
}

TEST_F(ApplicationTest, AnAdoptedWindowHasTheStateThatTheWindowSystemReports) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  windowSystem.adoptionResult = gameWindow();
  std::string error;
  const auto window = NSApp->adoptWindow(X11WindowId{42}, error);
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(error, "");
  EXPECT_EQ(window->className(), "PlayerWindow");
  EXPECT_EQ(window->title(), "Game");
  EXPECT_EQ(window->frame(), CGRectMake(10, 20, 800, 600));
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(window->handle(), WindowHandle{7});
  EXPECT_TRUE(window->isOnScreen());
  EXPECT_EQ(windowOrder(), Events{"PlayerWindow"});
  EXPECT_EQ(keyWindowName(), "none");
}

TEST_F(ApplicationTest, AnAdoptedWindowThatHasTheFocusBecomesKey) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  windowSystem.adoptionResult = gameWindow();
  windowSystem.adoptionResult->hasFocus = true;
  std::string error;
  const auto window = NSApp->adoptWindow(X11WindowId{42}, error);
  EXPECT_EQ(recorder.takeEvents(), Events{"PlayerWindow becomes key"});
  EXPECT_EQ(NSApp->mainWindow(), window);
}

TEST_F(ApplicationTest, AMiniaturisedWindowCanBeAdoptedAndDeminiaturised) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  windowSystem.adoptionResult = gameWindow();
  windowSystem.adoptionResult->isOnScreen = false;  // counts as miniaturised
  std::string error;
  const auto window = NSApp->adoptWindow(X11WindowId{42}, error);
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(window->isMiniaturized());
  EXPECT_TRUE(windowOrder().empty());
  windowSystem.delegate->miniaturizedChanged(window->handle(), false);
  EXPECT_EQ(windowOrder(), Events{"PlayerWindow"});
}

TEST_F(ApplicationTest, AFailedAdoptionReturnsNullAndAReason) {
  startScriptedWindowSystem();
  std::string error;
  EXPECT_EQ(NSApp->adoptWindow(X11WindowId{42}, error), nullptr);
  EXPECT_EQ(error, "no such window");
  EXPECT_TRUE(windowOrder().empty());
}

TEST_F(ApplicationTest, AnAdoptedWindowIsClosedWhenItsOwnerDestroysIt) {
  ScriptedWindowSystem& windowSystem = startScriptedWindowSystem();
  windowSystem.adoptionResult = gameWindow();
  windowSystem.adoptionResult->hasFocus = true;
  std::string error;
  const auto window = NSApp->adoptWindow(X11WindowId{42}, error);
  addController(window, "view");
  recorder.takeEvents();
  windowSystem.delegate->windowDestroyed(window->handle());
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"view will disappear", "view did disappear", "PlayerWindow resigns key"}));
}

}  // namespace
}  // namespace vel::test
