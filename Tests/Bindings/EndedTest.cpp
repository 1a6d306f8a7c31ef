// The library calls the callback `ended` once for each presented launch screen. The argument is the
// reason why the launch screen has ended.
#include <algorithm>
#include <functional>
#include <stdexcept>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Bindings/CScreen.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

std::string endedLine(VelEndReason reason) { return "ended " + std::to_string(reason); }

class EndedTest : public CBindingTest {
 protected:
  void createWithContentController() {
    VelCreateOptions options = virtualTimeOptions(&callbacks);
    options.content_controller = 1;
    createAgain(options);
    host.callbackLines.clear();
  }
  [[nodiscard]] std::size_t endCount() const {
    return static_cast<std::size_t>(std::ranges::count_if(
        host.callbackLines, [](const std::string& line) { return line.starts_with("ended"); }));
  }
  /// Runs until long after the end. Expects that the library has called `ended` only once, with
  /// `reason`.
  void expectEndedOnce(VelEndReason reason) {
    ASSERT_EQ(vel_run(screen, 100), VEL_OK);
    EXPECT_EQ(endCount(), 1u);
    EXPECT_EQ(std::ranges::count(host.callbackLines, endedLine(reason)), 1);
  }
  /// Calls `work` in a pass of the run loop.
  void runInPass(std::function<void()> work) {
    dispatch_async(dispatch_get_main_queue(), std::move(work));
    ASSERT_EQ(vel_pump(screen, nullptr), VEL_OK);
  }
};

TEST_F(EndedTest, EndedIsCalledOneSecondAfterDidDisappearIfTheWindowHasNoContentController) {
  present(VEL_PRESENT_EMBEDDED, 1);
  ASSERT_EQ(vel_run(screen, 2.09), VEL_OK);
  EXPECT_EQ(std::ranges::count(host.callbackLines, "did_disappear"), 1);
  EXPECT_EQ(endCount(), 0u);
  EXPECT_TRUE(isUp());
  ASSERT_EQ(vel_run(screen, 0.02), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), endedLine(VEL_END_TIME_USED_UP));
  EXPECT_FALSE(isUp());
  expectEndedOnce(VEL_END_TIME_USED_UP);
}

TEST_F(EndedTest, EndedIsCalledRightAfterDidDisappearIfTheWindowHasAContentController) {
  for (const VelPresentation presentation :
       {VEL_PRESENT_EMBEDDED, VEL_PRESENT_SHEET, VEL_PRESENT_MODAL}) {
    createWithContentController();
    present(presentation, 1);
    ASSERT_EQ(vel_run(screen, 1.1), VEL_OK);
    ASSERT_GE(host.callbackLines.size(), 2u);
    EXPECT_EQ(host.callbackLines[host.callbackLines.size() - 2], "did_disappear");
    EXPECT_EQ(host.callbackLines.back(), endedLine(VEL_END_TIME_USED_UP));
    expectEndedOnce(VEL_END_TIME_USED_UP);
  }
}

TEST_F(EndedTest, TheEndIsReportedAfterAnExceptionInWillAppear) {
  const VelRequest request = makeRequest("launch_end", 60, "skip");
  ASSERT_EQ(vel_request(screen, &request), VEL_OK);
  host.onCallback = [](const std::string& callback) {
    if (callback == "will_appear") {
      throw std::runtime_error("a fault of the host");
    }
  };
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_INTERNAL_ERROR);
  host.onCallback = nullptr;
  EXPECT_TRUE(isUp());
  EXPECT_EQ(endCount(), 0u);
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  expectEndedOnce(VEL_END_DISMISSED);
}

TEST_F(EndedTest, TheReasonIsTimeUsedUpInSkipModeWithoutADismissal) {
  present(VEL_PRESENT_MODAL, 1, "skip");
  expectEndedOnce(VEL_END_TIME_USED_UP);
}

TEST_F(EndedTest, DismissCallsEndedAtOnceIfTheWindowHasAContentController) {
  for (const VelPresentation presentation :
       {VEL_PRESENT_EMBEDDED, VEL_PRESENT_SHEET, VEL_PRESENT_MODAL}) {
    createWithContentController();
    present(presentation, 60, "skip");
    EXPECT_EQ(vel_dismiss(screen), VEL_OK);
    EXPECT_EQ(host.callbackLines.back(), endedLine(VEL_END_DISMISSED));
    expectEndedOnce(VEL_END_DISMISSED);
  }
}

TEST_F(EndedTest, DismissDoesNotCallEndedAtOnceIfTheWindowHasNoContentController) {
  present(VEL_PRESENT_EMBEDDED, 60, "skip");
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  EXPECT_EQ(endCount(), 0u);
  expectEndedOnce(VEL_END_DISMISSED);
}

TEST_F(EndedTest, TheReasonIsDismissedAfterAPostponedDismissal) {
  present(VEL_PRESENT_MODAL, 60, "skip");
  ASSERT_EQ(vel_run(screen, 1), VEL_OK);
  runInPass([] { windowSystem().userMovesFocusAway(); });
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  EXPECT_EQ(endCount(), 0u);
  runInPass([] { NSApp->orderedWindows().front()->makeKeyWindow(); });
  expectEndedOnce(VEL_END_DISMISSED);
}

TEST_F(EndedTest, ARefusedDismissalDoesNotChangeTheReason) {
  present(VEL_PRESENT_MODAL, 5);
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);  // VEL_OK although the dismissal is refused
  EXPECT_EQ(endCount(), 0u);
  expectEndedOnce(VEL_END_TIME_USED_UP);
}

TEST_F(EndedTest, TheReasonIsWindowClosedIfTheWindowIsDestroyedAfterARefusedDismissal) {
  present(VEL_PRESENT_MODAL, 5);
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);  // VEL_OK although the dismissal is refused
  runInPass([] { windowSystem().ownerDestroysWindow(NSApp->modalWindow()->handle()); });
  expectEndedOnce(VEL_END_WINDOW_CLOSED);
}

TEST_F(EndedTest, TheReasonIsWindowClosedIfTheWindowIsDestroyed) {
  for (const int contentController : {0, 1}) {
    VelCreateOptions options = virtualTimeOptions(&callbacks);
    options.content_controller = contentController;
    createAgain(options);
    host.callbackLines.clear();
    present(VEL_PRESENT_EMBEDDED, 5);
    runInPass([] { windowSystem().ownerDestroysWindow(NSApp->keyWindow()->handle()); });
    EXPECT_EQ(host.callbackLines.back(), endedLine(VEL_END_WINDOW_CLOSED));
    expectEndedOnce(VEL_END_WINDOW_CLOSED);
  }
}

TEST_F(EndedTest, TheReasonIsWindowClosedIfTheParentOfTheSheetIsDestroyed) {
  createWithContentController();
  const WindowHandle window = NSApp->keyWindow()->handle();
  present(VEL_PRESENT_SHEET, 5);
  runInPass([window] { windowSystem().ownerDestroysWindow(window); });
  expectEndedOnce(VEL_END_WINDOW_CLOSED);
}

TEST_F(EndedTest, TheReasonIsDisplayLostIfTheConnectionIsLost) {
  for (const VelPresentation presentation : {VEL_PRESENT_EMBEDDED, VEL_PRESENT_MODAL}) {
    createAgain(virtualTimeOptions(&callbacks));
    host.callbackLines.clear();
    present(presentation, 5);
    runInPass([] { windowSystem().serverClosesConnection("gone"); });
    EXPECT_EQ(host.callbackLines.back(), endedLine(VEL_END_DISPLAY_LOST));
    expectEndedOnce(VEL_END_DISPLAY_LOST);
  }
}

TEST_F(EndedTest, DestroyCallsEndedAsItsLastStep) {
  present(VEL_PRESENT_EMBEDDED, 5);
  const Strong<NSWindow> window = NSApp->keyWindow();
  VelLaunchScreen* const staleHandle = screen;
  host.onCallback = [&](const std::string& callback) {
    ASSERT_EQ(callback, "ended");
    EXPECT_EQ(screen, nullptr);
    EXPECT_EQ(vel_pump(staleHandle, nullptr), VEL_NOT_ALIVE);
    EXPECT_EQ(window->styleMask(), kFullStyle);
    EXPECT_EQ(NSApp, nullptr);
  };
  EXPECT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_EQ(host.callbackLines.back(), endedLine(VEL_END_DESTROYED));
  EXPECT_EQ(endCount(), 1u);
}

TEST_F(EndedTest, EndedMayCallCreateDuringDestroy) {
  present(VEL_PRESENT_EMBEDDED, 5);
  host.onCallback = [&](const std::string& callback) {
    if (callback == "ended") {
      const VelCreateOptions options = virtualTimeOptions();
      EXPECT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
    }
  };
  EXPECT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_NE(screen, nullptr);
}

TEST_F(EndedTest, DestroyInsideACallbackCausesOneCallOfEnded) {
  for (const char* name : {"will_appear", "may_disappear", "did_disappear", "record_event"}) {
    const VelCreateOptions options = virtualTimeOptions(&callbacks);
    host.onCallback = nullptr;
    vel_destroy(&screen);
    ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
    host.callbackLines.clear();
    host.onCallback = [this, name](const std::string& callback) {
      if (callback == name) {
        EXPECT_EQ(vel_destroy(&screen), VEL_OK);
        EXPECT_EQ(endCount(), 0u);
      }
    };
    const VelRequest request = makeRequest("launch_end", 1);
    ASSERT_EQ(vel_request(screen, &request), VEL_OK);
    vel_present(screen, VEL_PRESENT_EMBEDDED);
    if (screen != nullptr) {
      vel_run(screen, 100);
    }
    EXPECT_EQ(screen, nullptr) << name;
    EXPECT_EQ(endCount(), 1u) << name;
    EXPECT_TRUE(host.callbackLines.back().starts_with("ended")) << name;
  }
}

// vel_dismiss calls may_disappear. This callback calls vel_pump, which calls did_disappear.
TEST_F(EndedTest, DestroyInsideNestedCallbacksReportsTheEnd) {
  host.onCallback = [this](const std::string& callback) {
    if (callback == "may_disappear") {
      windowSystem().ownerDestroysWindow(NSApp->keyWindow()->handle());
      EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
    } else if (callback == "did_disappear") {
      EXPECT_EQ(vel_destroy(&screen), VEL_OK);
    }
  };
  present(VEL_PRESENT_EMBEDDED, 60, "skip");
  EXPECT_EQ(vel_dismiss(screen), VEL_OK);
  EXPECT_EQ(screen, nullptr);
  EXPECT_EQ(host.callbackLines.back(), endedLine(VEL_END_WINDOW_CLOSED));
  EXPECT_EQ(endCount(), 1u);
}

// vel_present calls log_line before it shows the launch screen. vel_pump must not mistake a launch
// screen that is not shown yet for one that has ended.
TEST_F(EndedTest, APumpInsideLogLineDoesNotCallEnded) {
  host.onCallback = [this](const std::string& callback) {
    if (callback == "log_line") {
      EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
    }
  };
  present(VEL_PRESENT_EMBEDDED, 1);
  EXPECT_EQ(endCount(), 0u);
  expectEndedOnce(VEL_END_TIME_USED_UP);
}

TEST_F(EndedTest, EndedIsNotCalledWithoutAPresentation) {
  const VelRequest request = makeRequest("launch_end", 1);
  ASSERT_EQ(vel_request(screen, &request), VEL_OK);
  EXPECT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_EQ(endCount(), 0u);
}

TEST_F(EndedTest, EndedMayPresentTheNextLaunchScreen) {
  bool hasPresentedNext = false;
  host.onCallback = [&](const std::string& callback) {
    if (callback == "ended" && !hasPresentedNext) {
      hasPresentedNext = true;
      EXPECT_FALSE(isUp());
      present(VEL_PRESENT_EMBEDDED, 3);
    }
  };
  present(VEL_PRESENT_EMBEDDED, 1);
  ASSERT_EQ(vel_run(screen, 100), VEL_OK);
  EXPECT_EQ(endCount(), 2u);
}

}  // namespace
}  // namespace vel::test
