// Modal sessions, and the mode of the run loop during a modal session.
#include <functional>
#include <string>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/AppKit/EventRecorder.h"
#include "Tests/Foundation/Ticker.h"

namespace vel::test {
namespace {

class ModalSessionTest : public EventRecordingTest {
 protected:
  // Runs `work` after a delay, even during a modal session.
  void runAfter(double seconds, const std::function<void()>& work) {
    loop.addTimerForMode(schedule(seconds, work), NSModalPanelRunLoopMode);
  }
  // Presents a new controller, the guest, in a modal window.
  Strong<RecordingController> presentModally(const std::string& name) {
    Strong<RecordingController> guest = makeController(name);
    host->presentViewControllerAsModalWindow(guest);
    return guest;
  }

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  Strong<NSWindow> window = openKeyWindow("A");
  Strong<RecordingController> host = addController(window, "host");
};

TEST_F(ModalSessionTest, TheRunLoopIsInTheModalPanelModeDuringAModalSession) {
  EXPECT_EQ(loop.mode(), NSDefaultRunLoopMode);
  const auto guest = presentModally("guest");
  EXPECT_EQ(loop.mode(), NSModalPanelRunLoopMode);
  host->dismissViewController(guest);
  EXPECT_EQ(loop.mode(), NSDefaultRunLoopMode);
}

TEST_F(ModalSessionTest, TimersOfTheDefaultModeFireAfterTheModalSession) {
  const auto ticker = make<Ticker>();
  schedule(0.1, ticker);
  presentModally("guest");
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
  NSApp->stopModal();
  platform.runDueWork();
  EXPECT_EQ(ticker->ticks(), 1);
}

TEST_F(ModalSessionTest, AModalSessionDoesNotReplaceTheEventTrackingMode) {
  NSApp->setRunLoopMode(NSEventTrackingRunLoopMode);
  presentModally("guest");
  EXPECT_EQ(loop.mode(), NSEventTrackingRunLoopMode);
  NSApp->setRunLoopMode(NSDefaultRunLoopMode);
  EXPECT_EQ(loop.mode(), NSModalPanelRunLoopMode);
}

TEST_F(ModalSessionTest, AWindowIsAModalPanelDuringItsModalSession) {
  EXPECT_FALSE(window->isModalPanel());
  NSApp->beginModalSession(window);
  EXPECT_TRUE(window->isModalPanel());
  NSApp->stopModal();
  EXPECT_FALSE(window->isModalPanel());
}

TEST_F(ModalSessionTest, StopModalEndsTheNewestModalSession) {
  const auto outerGuest = presentModally("outer");
  const auto innerGuest = presentModally("inner");
  EXPECT_EQ(NSApp->modalWindow(), innerGuest->view()->window());
  EXPECT_TRUE(outerGuest->view()->window()->isModalPanel());
  NSApp->stopModal();
  EXPECT_EQ(NSApp->modalWindow(), outerGuest->view()->window());
  EXPECT_FALSE(innerGuest->view()->window()->isModalPanel());
  EXPECT_EQ(loop.mode(), NSModalPanelRunLoopMode);
}

TEST_F(ModalSessionTest, StopModalLeavesTheWindowOnScreen) {
  const auto guest = presentModally("guest");
  NSApp->stopModal();
  EXPECT_TRUE(guest->view()->window()->isOnScreen());
  EXPECT_EQ(guest->presentingViewController(), host);
}

TEST_F(ModalSessionTest, StopModalWithoutAModalSessionDoesNothing) {
  NSApp->stopModal();
  NSApp->stopModal();
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(loop.mode(), NSDefaultRunLoopMode);
}

TEST_F(ModalSessionTest, TheWindowSystemReceivesTheModalWindow) {
  EXPECT_EQ(platform.windowSystem().modalWindow(), WindowHandle::None);
  const auto guest = presentModally("guest");
  EXPECT_EQ(platform.windowSystem().modalWindow(), guest->view()->window()->handle());
  host->dismissViewController(guest);
  EXPECT_EQ(platform.windowSystem().modalWindow(), WindowHandle::None);
}

TEST_F(ModalSessionTest, ClosingAWindowEndsOnlyItsOwnModalSessions) {
  const auto outerGuest = presentModally("outer");
  const auto innerGuest = presentModally("inner");
  outerGuest->view()->window()->close();
  EXPECT_EQ(NSApp->modalWindow(), innerGuest->view()->window());
  innerGuest->view()->window()->close();
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(ModalSessionTest, RunModalForWindowReturnsAfterStopModal) {
  const auto dialog = makeClosedWindow("dialog");
  runAfter(0.5, [] { NSApp->stopModal(); });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(platform.now(), 0.5);
  EXPECT_TRUE(dialog->isOnScreen());
  EXPECT_EQ(loop.mode(), NSDefaultRunLoopMode);
}

TEST_F(ModalSessionTest, RunModalForWindowOpensTheWindowAndMakesItKey) {
  const auto dialog = makeClosedWindow("dialog");
  std::string state;
  runAfter(0.5, [&] {
    state = keyWindowName() + (dialog->isModalPanel() ? " is modal" : "");
    NSApp->stopModal();
  });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(state, "dialog is modal");
}

TEST_F(ModalSessionTest, RunModalForWindowReturnsWhenTheWindowIsClosed) {
  const auto dialog = makeClosedWindow("dialog");
  runAfter(0.5, [&] { dialog->close(); });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(ModalSessionTest, RunModalForWindowReturnsWhenTheOwnerProgramDestroysTheWindow) {
  const auto dialog = makeClosedWindow("dialog");
  runAfter(0.5, [&] { platform.windowSystem().ownerDestroysWindow(dialog->handle()); });
  NSApp->runModalForWindow(dialog);
  EXPECT_FALSE(dialog->isVisible());
}

TEST_F(ModalSessionTest, RunModalForWindowReturnsAtOnceIfALifeCycleMethodClosesTheWindow) {
  const auto dialog = makeClosedWindow("dialog");
  addController(dialog, "view");
  recorder.onNext("view will appear", [&] { dialog->close(); });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(platform.now(), 0);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(ModalSessionTest, RunModalForANullWindowReturnsAtOnce) {
  NSApp->runModalForWindow(nullptr);
  EXPECT_EQ(platform.now(), 0);
}

TEST_F(ModalSessionTest, TheMainQueueRunsDuringRunModalForWindow) {
  const auto dialog = makeClosedWindow("dialog");
  dispatch_after(dispatch_time(kDispatchTimeNow, kNanosecondsPerSecond), dispatch_get_main_queue(),
                 [] { NSApp->stopModal(); });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(platform.now(), 1);
}

TEST_F(ModalSessionTest, NestedModalSessionsEndInnermostFirst) {
  const auto outerDialog = makeClosedWindow("outer");
  const auto innerDialog = makeClosedWindow("inner");
  runAfter(0.1, [&] {
    NSApp->runModalForWindow(innerDialog);
    recorder.record("inner ended");
    NSApp->stopModal();  // ends the modal session of `outerDialog`
  });
  runAfter(0.2, [] { NSApp->stopModal(); });  // ends the modal session of `innerDialog`
  recorder.takeEvents();
  NSApp->runModalForWindow(outerDialog);
  recorder.record("outer ended");
  EXPECT_EQ(recorder.takeEvents(),
            (Events{"A resigns key", "outer becomes key", "outer resigns key", "inner becomes key",
                    "inner ended", "outer ended"}));
}

}  // namespace
}  // namespace vel::test
