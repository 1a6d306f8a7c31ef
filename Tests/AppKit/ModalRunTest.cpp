// Modal runs, and the mode in which the loop runs meanwhile.
#include <functional>
#include <string>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/AppKit/EventRecorder.h"
#include "Tests/Foundation/Ticker.h"

namespace vel::test {
namespace {

class ModalRunTest : public RecordedTest {
 protected:
  // A timer that fires in the mode of modal runs as well.
  void later(double seconds, const std::function<void()>& work) {
    loop.addTimerForMode(schedule(seconds, work), NSModalPanelRunLoopMode);
  }
  Strong<RecordingController> presentModally(const std::string& name) {
    Strong<RecordingController> guest = recordingController(name);
    host->presentViewControllerAsModalWindow(guest);
    return guest;
  }

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  Strong<NSWindow> window = openKey("A");
  Strong<RecordingController> host = recordingControllerIn(window, "host");
};

TEST_F(ModalRunTest, TheLoopRunsInTheModalPanelModeWhileOneIsOn) {
  EXPECT_EQ(loop.mode(), NSDefaultRunLoopMode);
  const auto guest = presentModally("guest");
  EXPECT_EQ(loop.mode(), NSModalPanelRunLoopMode);
  host->dismissViewController(guest);
  EXPECT_EQ(loop.mode(), NSDefaultRunLoopMode);
}

TEST_F(ModalRunTest, TimersOfTheDefaultModeWaitForItsEnd) {
  const auto ticker = make<Ticker>();
  schedule(0.1, ticker);
  presentModally("guest");
  platform.run(1);
  EXPECT_EQ(ticker->ticks(), 0);
  NSApp->stopModal();
  platform.runDue();
  EXPECT_EQ(ticker->ticks(), 1);
}

TEST_F(ModalRunTest, EventTrackingStaysDuringOne) {
  NSApp->setRunLoopMode(NSEventTrackingRunLoopMode);
  presentModally("guest");
  EXPECT_EQ(loop.mode(), NSEventTrackingRunLoopMode);
  NSApp->setRunLoopMode(NSDefaultRunLoopMode);
  EXPECT_EQ(loop.mode(), NSModalPanelRunLoopMode);
}

TEST_F(ModalRunTest, IsModalPanelWhileItIsRunModally) {
  EXPECT_FALSE(window->isModalPanel());
  NSApp->beginModalRun(window);
  EXPECT_TRUE(window->isModalPanel());
  NSApp->stopModal();
  EXPECT_FALSE(window->isModalPanel());
}

TEST_F(ModalRunTest, StopModalEndsTheNewest) {
  const auto outer = presentModally("outer");
  const auto inner = presentModally("inner");
  EXPECT_EQ(NSApp->modalWindow(), inner->view()->window());
  EXPECT_TRUE(outer->view()->window()->isModalPanel());
  NSApp->stopModal();
  EXPECT_EQ(NSApp->modalWindow(), outer->view()->window());
  EXPECT_FALSE(inner->view()->window()->isModalPanel());
  EXPECT_EQ(loop.mode(), NSModalPanelRunLoopMode);
}

TEST_F(ModalRunTest, StopModalLeavesTheWindowOnScreen) {
  const auto guest = presentModally("guest");
  NSApp->stopModal();
  EXPECT_TRUE(guest->view()->window()->isOnScreen());
  EXPECT_EQ(guest->presentingViewController(), host);
}

TEST_F(ModalRunTest, StopModalWithoutOneDoesNothing) {
  NSApp->stopModal();
  NSApp->stopModal();
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(loop.mode(), NSDefaultRunLoopMode);
}

TEST_F(ModalRunTest, TheWindowSystemKnowsTheModalWindow) {
  EXPECT_EQ(platform.user().modalWindow(), WindowHandle::None);
  const auto guest = presentModally("guest");
  EXPECT_EQ(platform.user().modalWindow(), guest->view()->window()->handle());
  host->dismissViewController(guest);
  EXPECT_EQ(platform.user().modalWindow(), WindowHandle::None);
}

TEST_F(ModalRunTest, ClosingAWindowEndsAllItsRunsAndNoOther) {
  const auto outer = presentModally("outer");
  const auto inner = presentModally("inner");
  outer->view()->window()->close();
  EXPECT_EQ(NSApp->modalWindow(), inner->view()->window());
  inner->view()->window()->close();
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(ModalRunTest, RunModalForWindowReturnsWhenATimerStopsIt) {
  const auto dialog = closedWindow("dialog");
  later(0.5, [] { NSApp->stopModal(); });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(platform.now(), 0.5);
  EXPECT_TRUE(dialog->isOnScreen());
  EXPECT_EQ(loop.mode(), NSDefaultRunLoopMode);
}

TEST_F(ModalRunTest, RunModalForWindowOpensTheWindowKey) {
  const auto dialog = closedWindow("dialog");
  std::string during;
  later(0.5, [&] {
    during = key() + (dialog->isModalPanel() ? " is modal" : "");
    NSApp->stopModal();
  });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(during, "dialog is modal");
}

TEST_F(ModalRunTest, RunModalForWindowReturnsWhenTheWindowIsClosed) {
  const auto dialog = closedWindow("dialog");
  later(0.5, [&] { dialog->close(); });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(ModalRunTest, RunModalForWindowReturnsWhenTheWindowVanishes) {
  const auto dialog = closedWindow("dialog");
  later(0.5, [&] { platform.user().windowVanishes(dialog->handle()); });
  NSApp->runModalForWindow(dialog);
  EXPECT_FALSE(dialog->isVisible());
}

TEST_F(ModalRunTest, RunModalForWindowReturnsAtOnceWhereAStepClosesTheWindow) {
  const auto dialog = closedWindow("dialog");
  recordingControllerIn(dialog, "view");
  recorder.onNext("view will appear", [&] { dialog->close(); });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
}

TEST_F(ModalRunTest, RunModalForNoWindowReturnsAtOnce) {
  NSApp->runModalForWindow(nullptr);
  EXPECT_EQ(platform.now(), 0);
}

TEST_F(ModalRunTest, RunModalForWindowServesTheMainQueue) {
  const auto dialog = closedWindow("dialog");
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC), dispatch_get_main_queue(),
                 [] { NSApp->stopModal(); });
  NSApp->runModalForWindow(dialog);
  EXPECT_EQ(platform.now(), 1);
}

TEST_F(ModalRunTest, RunsInsideRunsEndFromTheInside) {
  const auto outer = closedWindow("outer");
  const auto inner = closedWindow("inner");
  later(0.1, [&] {
    NSApp->runModalForWindow(inner);
    recorder.record("inner ended");
    NSApp->stopModal();
  });
  later(0.2, [] { NSApp->stopModal(); });
  recorder.take();
  NSApp->runModalForWindow(outer);
  recorder.record("outer ended");
  EXPECT_EQ(recorder.take(), (Events{"A resigns", "outer becomes key", "outer resigns",
                                     "inner becomes key", "inner ended", "outer ended"}));
}

}  // namespace
}  // namespace vel::test
