// Tests a launch screen from its request to its end. Each line of `host.callbackLines` is the name
// and the arguments of a callback. "state_changed 3" means VEL_STATE_LOADED, "ended 1" means
// VEL_END_TIME_USED_UP, and "ended 2" means VEL_END_DISMISSED.
#include <thread>

#include "Platform/AppKit/NSApplication.h"
#include "Tests/Bindings/CScreen.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

using Lines = std::vector<std::string>;

class CRunTest : public CBindingTest {
 protected:
  /// Destroys the launch screen and creates another one. Its window has a content controller.
  void createWithContentController() {
    VelCreateOptions options = virtualTimeOptions(&callbacks);
    options.content_controller = 1;
    createAgain(options);
  }
};

TEST_F(CRunTest, AnEmbeddedLaunchScreenCallsTheCallbacksInOrder) {
  present(VEL_PRESENT_EMBEDDED, 1);
  EXPECT_EQ(host.callbackLines, (Lines{"state_changed 3", "will_appear"}));
  // The embedded launch screen disables the controls of the window.
  EXPECT_EQ(NSApp->keyWindow()->styleMask(), NSWindowStyleMaskTitled);
  EXPECT_TRUE(isUp());
  // Because of rounding, a countdown of 1 s ends at the eleventh step of 0.1 s.
  ASSERT_EQ(vel_run(screen, 1.05), VEL_OK);
  EXPECT_EQ(host.callbackLines.size(), 2u);
  ASSERT_EQ(vel_run(screen, 0.05), VEL_OK);
  EXPECT_EQ(host.callbackLines,
            (Lines{"state_changed 3", "will_appear", "may_disappear", "did_disappear"}));
  EXPECT_EQ(NSApp->keyWindow()->styleMask(), kFullStyle);
  // Without a content controller, the launch screen stays up for one second after did_disappear.
  EXPECT_TRUE(isUp());
  ASSERT_EQ(vel_run(screen, 0.5), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "record_event launch_end");
  ASSERT_EQ(vel_run(screen, 10), VEL_OK);
  EXPECT_EQ(host.callbackLines.size(), 6u);
  EXPECT_EQ(host.callbackLines.back(), "ended 1");
  EXPECT_FALSE(isUp());
}

TEST_F(CRunTest, AnEmbeddedLaunchScreenEndsWithoutDelayIfTheWindowHasAContentController) {
  createWithContentController();
  present(VEL_PRESENT_EMBEDDED, 1);
  ASSERT_EQ(vel_run(screen, 1.1), VEL_OK);
  EXPECT_EQ(host.callbackLines,
            (Lines{"state_changed 3", "will_appear", "may_disappear", "did_disappear", "ended 1"}));
  EXPECT_FALSE(isUp());
}

TEST_F(CRunTest, ASheetOrModalLaunchScreenEndsBeforeItsEventIsRecorded) {
  for (const VelPresentation presentation : {VEL_PRESENT_SHEET, VEL_PRESENT_MODAL}) {
    createWithContentController();
    host.callbackLines.clear();
    present(presentation, 1);
    EXPECT_EQ(windowSystem().windowCount(), 2u);
    ASSERT_EQ(vel_run(screen, 3), VEL_OK);
    EXPECT_EQ(host.callbackLines, (Lines{"state_changed 3", "will_appear", "may_disappear",
                                         "did_disappear", "ended 1", "record_event launch_end"}));
    EXPECT_FALSE(isUp());
  }
}

TEST_F(CRunTest, APresentationIsLogged) {
  present(VEL_PRESENT_MODAL, 1);
  EXPECT_EQ(host.log, (Lines{"LaunchScreenContent (-[LaunchScreenContent "
                             "presentForWindow:withPresentationMode:]) mode: 2"}));
}

TEST_F(CRunTest, PresentFailsWithoutARequest) {
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_NOTHING_TO_PRESENT);
  EXPECT_STREQ(vel_last_error(), "no request has been loaded");
}

TEST_F(CRunTest, ARequestCanBePresentedOnlyOnce) {
  present(VEL_PRESENT_EMBEDDED, 1);
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_MODAL), VEL_NOTHING_TO_PRESENT);
  vel_run(screen, 10);
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_NOTHING_TO_PRESENT);
  int upFlag = 1;
  EXPECT_EQ(vel_is_up(screen, &upFlag), VEL_OK);
  EXPECT_EQ(upFlag, 0);
}

TEST_F(CRunTest, AnUnknownPresentationIsRefused) {
  const VelRequest request = makeRequest("launch_end", 1);
  ASSERT_EQ(vel_request(screen, &request), VEL_OK);
  for (const int presentation : {-1, 3, 1'000'000}) {
    EXPECT_EQ(vel_present(screen, static_cast<VelPresentation>(presentation)),
              VEL_INVALID_ARGUMENT);
  }
  EXPECT_FALSE(isUp());
}

TEST_F(CRunTest, ASheetNeedsAContentController) {
  const VelRequest request = makeRequest("launch_end", 1);
  ASSERT_EQ(vel_request(screen, &request), VEL_OK);
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_SHEET), VEL_NOTHING_TO_PRESENT);
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_OK);
}

TEST_F(CRunTest, AClosedWindowCannotBeCovered) {
  const VelRequest request = makeRequest("launch_end", 1);
  ASSERT_EQ(vel_request(screen, &request), VEL_OK);
  NSApp->keyWindow()->close();
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_NOTHING_TO_PRESENT);
  EXPECT_STREQ(vel_last_error(), "the window has been closed");
}

TEST_F(CRunTest, ThePauseReasonSaysWhyTheCountdownDoesNotRun) {
  EXPECT_EQ(pauseReason(), VEL_PAUSE_NOT_UP);
  present(VEL_PRESENT_EMBEDDED, 1);
  EXPECT_EQ(pauseReason(), VEL_PAUSE_NONE);
  ASSERT_EQ(vel_run(screen, 0.3), VEL_OK);
  windowSystem().userMovesFocusAway();
  EXPECT_EQ(pauseReason(), VEL_PAUSE_NOT_IN_FRONT);
  const double remainingSeconds = secondsLeft();
  ASSERT_EQ(vel_run(screen, 100), VEL_OK);
  EXPECT_EQ(secondsLeft(), remainingSeconds);
  NSApp->orderedWindows().front()->makeKeyWindow();
  EXPECT_EQ(pauseReason(), VEL_PAUSE_NONE);
  ASSERT_EQ(vel_run(screen, 0.9), VEL_OK);
  EXPECT_EQ(pauseReason(), VEL_PAUSE_NO_TIME_LEFT);
  EXPECT_LE(secondsLeft(), 0);
  ASSERT_EQ(vel_run(screen, 1), VEL_OK);
  EXPECT_EQ(pauseReason(), VEL_PAUSE_NOT_UP);
}

TEST_F(CRunTest, ADismissalInSkipModeRecordsNoEvent) {
  present(VEL_PRESENT_EMBEDDED, 60, "skip");
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "did_disappear");
  ASSERT_EQ(vel_run(screen, 100), VEL_OK);
  EXPECT_EQ(host.callbackLines,
            (Lines{"state_changed 3", "will_appear", "may_disappear", "did_disappear", "ended 2"}));
}

TEST_F(CRunTest, ADismissalInForcedModeRecordsTheEventTwoAndAHalfSecondsLater) {
  present(VEL_PRESENT_EMBEDDED, 60);
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);  // the launch screen stays up
  ASSERT_EQ(vel_run(screen, 2.49), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "may_disappear");
  ASSERT_EQ(vel_run(screen, 0.02), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "record_event launch_end");
  EXPECT_TRUE(isUp());
}

TEST_F(CRunTest, DismissChangesNothingIfNoLaunchScreenIsShown) {
  EXPECT_EQ(vel_dismiss(screen), VEL_NOT_UP);
  present(VEL_PRESENT_EMBEDDED, 1);
  windowSystem().userMovesFocusAway();
  // The loss of focus pauses the countdown only if LaunchScreenManager::launchScreenExpired is
  // false. So vel_dismiss has not set it.
  EXPECT_EQ(pauseReason(), VEL_PAUSE_NOT_IN_FRONT);
}

TEST_F(CRunTest, DismissOnAnotherThreadChangesNothingIfNoLaunchScreenIsShown) {
  const VelRequest request = makeRequest("launch_end", 2);
  EXPECT_EQ(vel_request(screen, &request), VEL_OK);
  VelStatus status = VEL_INTERNAL_ERROR;
  std::thread([&] { status = vel_dismiss(screen); }).join();
  EXPECT_EQ(status, VEL_OK);  // returns VEL_NOT_UP only on the owning thread
  host.callbackLines.clear();
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
  EXPECT_TRUE(host.callbackLines.empty());
  EXPECT_EQ(secondsLeft(), 2);
}

TEST_F(CRunTest, TheLaunchScreenStaysUpIfMayDisappearReturnsZero) {
  host.mayDisappear = false;
  present(VEL_PRESENT_EMBEDDED, 1, "skip");
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "may_disappear");
  EXPECT_TRUE(isUp());
  host.mayDisappear = true;
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "did_disappear");
}

TEST_F(CRunTest, WithoutCallbacksTheLaunchScreenRunsToItsEnd) {
  VelCallbacks noCallbacks = VEL_CALLBACKS_INIT;
  createAgain(virtualTimeOptions(&noCallbacks));
  testing::internal::CaptureStderr();
  present(VEL_PRESENT_EMBEDDED, 1);
  ASSERT_EQ(vel_run(screen, 5), VEL_OK);
  EXPECT_FALSE(isUp());
  // Without callbacks, the library writes its log lines and the event to standard error.
  const std::string lines = testing::internal::GetCapturedStderr();
  EXPECT_NE(lines.find("mode: 0"), std::string::npos);
  EXPECT_NE(lines.find("launch_end"), std::string::npos);
}

TEST_F(CRunTest, ControlsKeptReportsTheControlsThatTheWindowManagerKeeps) {
  present(VEL_PRESENT_EMBEDDED, 1);
  const WindowHandle window = NSApp->keyWindow()->handle();
  windowSystem().windowManagerKeepsControls(
      window, NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable);
  EXPECT_EQ(host.callbackLines.back(),
            "controls_kept " + std::to_string(VEL_CONTROL_MINIATURIZE | VEL_CONTROL_RESIZE));
  windowSystem().windowManagerKeepsControls(window, NSWindowStyleMaskClosable);
  EXPECT_EQ(host.callbackLines.back(), "controls_kept " + std::to_string(VEL_CONTROL_CLOSE));
  windowSystem().windowManagerKeepsControls(window, 0);
  EXPECT_EQ(host.callbackLines.back(), "controls_kept 0");
}

TEST_F(CRunTest, ALostDisplayEndsTheLaunchScreen) {
  present(VEL_PRESENT_EMBEDDED, 1);
  windowSystem().serverClosesConnection("the plug was pulled");
  EXPECT_EQ(host.callbackLines.back(), "display_lost the plug was pulled");
  EXPECT_FALSE(isUp());
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
  const VelRequest request = makeRequest("launch_end", 1);
  EXPECT_EQ(vel_request(screen, &request), VEL_OK);
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_NOTHING_TO_PRESENT);
}

TEST_F(CRunTest, DestroyingTheModalWindowMakesTheLaunchScreenDisappear) {
  createWithContentController();
  host.callbackLines.clear();
  present(VEL_PRESENT_MODAL, 5);
  windowSystem().ownerDestroysWindow(NSApp->modalWindow()->handle());
  // `ended` follows in the next vel_pump or vel_run.
  EXPECT_EQ(host.callbackLines, (Lines{"state_changed 3", "will_appear", "did_disappear"}));
  EXPECT_FALSE(isUp());
}

TEST_F(CRunTest, ANewRequestCanBePresentedAfterALaunchScreenHasEnded) {
  present(VEL_PRESENT_EMBEDDED, 1);
  ASSERT_EQ(vel_run(screen, 10), VEL_OK);
  host.callbackLines.clear();
  present(VEL_PRESENT_EMBEDDED, 2);
  EXPECT_TRUE(isUp());
  ASSERT_EQ(vel_run(screen, 10), VEL_OK);
  // No `record_event`: a `VelLaunchScreen` object records at most one event.
  EXPECT_EQ(host.callbackLines,
            (Lines{"state_changed 3", "will_appear", "may_disappear", "did_disappear", "ended 1"}));
}

}  // namespace
}  // namespace vel::test
