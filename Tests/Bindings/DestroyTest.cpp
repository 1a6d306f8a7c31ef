// vel_destroy in every state and inside every callback. The host records one line for each
// callback except log_line, such as "ended 1". The number after "ended" is a VelEndReason: 1 time
// used up, 3 window closed, 4 display lost, 5 destroyed. The line "state_changed 3" reports
// VEL_STATE_LOADED.
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Bindings/CScreen.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

class DestroyTest : public CBindingTest {
 protected:
  /// Expects that the launch screen has been destroyed completely, and that another launch screen
  /// can be created and run.
  void expectDestroyed() {
    EXPECT_EQ(screen, nullptr);
    EXPECT_EQ(NSApp, nullptr);
    EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0u);
    EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
    host = {};
    const VelCreateOptions options = virtualTimeOptions(&callbacks);
    ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
    present(VEL_PRESENT_EMBEDDED, 1);
    ASSERT_EQ(vel_run(screen, 5), VEL_OK);
    EXPECT_EQ(host.callbackLines,
              (std::vector<std::string>{"state_changed 3", "will_appear", "may_disappear",
                                        "did_disappear", "record_event launch_end", "ended 1"}));
  }

  /// Destroys the launch screen. Expects that `vel_destroy` calls the callbacks of
  /// `expectedLines` and no other callback.
  void destroyAndExpectDestroyed(const std::vector<std::string>& expectedLines = {}) {
    host.callbackLines.clear();
    EXPECT_EQ(vel_destroy(&screen), VEL_OK);
    EXPECT_EQ(host.callbackLines, expectedLines);
    expectDestroyed();
  }
};

TEST_F(DestroyTest, BeforeARequest) { destroyAndExpectDestroyed(); }

TEST_F(DestroyTest, WithARequestLoaded) {
  const VelRequest request = makeRequest("launch_end", 1);
  ASSERT_EQ(vel_request(screen, &request), VEL_OK);
  destroyAndExpectDestroyed();
}

TEST_F(DestroyTest, AfterARefusedRequest) {
  const VelRequest request = makeRequest("launch_end", -1);
  ASSERT_EQ(vel_request(screen, &request), VEL_REFUSED);
  destroyAndExpectDestroyed();
}

TEST_F(DestroyTest, WhileTheWindowIsCovered) {
  present(VEL_PRESENT_EMBEDDED, 1);
  const Strong<NSWindow> window = NSApp->keyWindow();
  ASSERT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  ASSERT_EQ(vel_run(screen, 0.5), VEL_OK);
  destroyAndExpectDestroyed({"ended 5"});
  EXPECT_EQ(window->styleMask(), kFullStyle);
}

TEST_F(DestroyTest, WhileAModalWindowOrASheetIsShown) {
  for (const VelPresentation presentation : {VEL_PRESENT_MODAL, VEL_PRESENT_SHEET}) {
    VelCreateOptions options = virtualTimeOptions(&callbacks);
    options.content_controller = 1;
    createAgain(options);
    present(presentation, 1);
    destroyAndExpectDestroyed({"ended 5"});
  }
}

TEST_F(DestroyTest, WhileTheCountdownIsPaused) {
  present(VEL_PRESENT_EMBEDDED, 1);
  windowSystem().userMovesFocusAway();
  destroyAndExpectDestroyed({"ended 5"});
}

TEST_F(DestroyTest, BeforeTheEventIsRecorded) {
  present(VEL_PRESENT_EMBEDDED, 1);
  ASSERT_EQ(vel_run(screen, 1.2), VEL_OK);
  ASSERT_EQ(host.callbackLines.back(), "did_disappear");
  destroyAndExpectDestroyed({"ended 1"});
}

TEST_F(DestroyTest, AfterTheDisplayWasLost) {
  present(VEL_PRESENT_EMBEDDED, 1);
  windowSystem().serverClosesConnection("gone");
  destroyAndExpectDestroyed({"ended 4"});
}

TEST_F(DestroyTest, AfterTheOwnerHasDestroyedTheWindow) {
  present(VEL_PRESENT_EMBEDDED, 1);
  windowSystem().ownerDestroysWindow(NSApp->keyWindow()->handle());
  destroyAndExpectDestroyed({"ended 3"});
}

/// The parameter is the callback that destroys the launch screen.
class DestroyInsideCallbackTest : public DestroyTest,
                                  public testing::WithParamInterface<const char*> {};

TEST_P(DestroyInsideCallbackTest, OnlyEndedIsCalledAfterDestroy) {
  bool isDestroyed = false;
  host.onCallback = [&](const std::string& callback) {
    EXPECT_TRUE(!isDestroyed || callback == "ended") << callback << " is called after vel_destroy";
    if (callback == GetParam()) {
      isDestroyed = true;
      VelLaunchScreen* const staleHandle = screen;
      EXPECT_EQ(vel_destroy(&screen), VEL_OK);
      EXPECT_EQ(screen, nullptr);
      VelLaunchScreen* handleCopy = staleHandle;
      EXPECT_EQ(vel_destroy(&handleCopy), VEL_NOT_ALIVE);
      EXPECT_EQ(vel_pump(staleHandle, nullptr), VEL_NOT_ALIVE);
      // vel_create fails until the call that caused this callback returns.
      const VelCreateOptions options = virtualTimeOptions(&callbacks);
      VelLaunchScreen* nextScreen = nullptr;
      EXPECT_EQ(vel_create(&options, &nextScreen), VEL_ALREADY_EXISTS);
    }
  };
  const VelRequest request = makeRequest("launch_end", 1);
  vel_request(screen, &request);
  vel_present(screen, VEL_PRESENT_EMBEDDED);
  vel_run(screen, 100);
  EXPECT_TRUE(isDestroyed);
  expectDestroyed();
}

INSTANTIATE_TEST_SUITE_P(Callback, DestroyInsideCallbackTest,
                         testing::Values("state_changed", "log_line", "will_appear",
                                         "may_disappear", "did_disappear", "record_event"),
                         [](const auto& testInfo) { return std::string(testInfo.param); });

TEST_F(DestroyTest, InsideDisplayLost) {
  present(VEL_PRESENT_EMBEDDED, 1);
  host.onCallback = [this](const std::string& callback) {
    if (callback == "display_lost") {
      EXPECT_EQ(vel_destroy(&screen), VEL_OK);
    }
  };
  // The library notices the loss of a real display in a pass of the run loop. The test therefore
  // causes the loss in a pass.
  dispatch_async(dispatch_get_main_queue(), [] { windowSystem().serverClosesConnection("gone"); });
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
  EXPECT_EQ(host.callbackLines[host.callbackLines.size() - 2], "display_lost gone");
  EXPECT_EQ(host.callbackLines.back(), "ended 4");
  expectDestroyed();
}

TEST_F(DestroyTest, InsideControlsKept) {
  present(VEL_PRESENT_EMBEDDED, 1);
  host.onCallback = [this](const std::string& callback) {
    if (callback == "controls_kept") {
      EXPECT_EQ(vel_destroy(&screen), VEL_OK);
    }
  };
  dispatch_async(dispatch_get_main_queue(), [] {
    windowSystem().windowManagerKeepsControls(NSApp->keyWindow()->handle(),
                                              NSWindowStyleMaskClosable);
  });
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
  EXPECT_EQ(host.callbackLines[host.callbackLines.size() - 2],
            "controls_kept " + std::to_string(VEL_CONTROL_CLOSE));
  EXPECT_EQ(host.callbackLines.back(), "ended 5");
  expectDestroyed();
}

TEST_F(DestroyTest, RunReturnsWhenACallbackDestroysTheLaunchScreen) {
  present(VEL_PRESENT_EMBEDDED, 1);
  host.onCallback = [this](const std::string& callback) {
    if (callback == "did_disappear") {
      vel_destroy(&screen);
    }
  };
  EXPECT_EQ(vel_run(screen, 1e9), VEL_OK);
  // Because of rounding, a countdown of 1 s ends at the eleventh step of 0.1 s.
  EXPECT_EQ(secondsFromNanoseconds(NSRunLoop::mainRunLoop().now()), 1.1);
  expectDestroyed();
}

TEST_F(DestroyTest, ACallbackCanCallPumpAndRun) {
  bool hasCalledRun = false;
  host.onCallback = [&](const std::string& callback) {
    int upFlag = -1;
    EXPECT_EQ(vel_is_up(screen, &upFlag), VEL_OK) << callback;
    EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK) << callback;
    if (callback == "did_disappear" && !hasCalledRun) {
      hasCalledRun = true;
      EXPECT_EQ(vel_run(screen, 5), VEL_OK);
    }
  };
  present(VEL_PRESENT_EMBEDDED, 1);
  // The callback calls vel_run for 5 s, so this call advances the time by more than 2 s.
  EXPECT_EQ(vel_run(screen, 2), VEL_OK);
  EXPECT_EQ(vel_run(screen, 1), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), "ended 1");
}

}  // namespace
}  // namespace vel::test
