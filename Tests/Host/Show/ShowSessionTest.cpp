// Tests `launchscreen show` in virtual time. The program opens a window, the player window, and
// shows a launch screen over it.
#include <gmock/gmock.h>

#include <fstream>
#include <sstream>
#include <utility>

#include "Host/Show/ShowSession.h"
#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::host {
namespace {

using test::VirtualPlatformTest;

// The player window draws a background and a moving square.
constexpr std::size_t kPlayerItemCount = 2;
constexpr NSWindowStyleMask kPlayerStyleMask = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                               NSWindowStyleMaskMiniaturizable |
                                               NSWindowStyleMaskResizable;

class ShowSessionTest : public VirtualPlatformTest {
 protected:
  // Starts a session with `options`. The session opens the player window and presents the launch
  // screen.
  void start() {
    session = make<ShowSession>(options, std::make_shared<LineConsole>(out), std::move(events));
    session->start();
    session->update();
  }

  // Runs the main run loop for `seconds`. Updates the session after each pass, as the program does.
  void run(double seconds) {
    NSRunLoop& loop = NSRunLoop::mainRunLoop();
    const Nanoseconds limit = loop.now() + nanosecondsFromSeconds(seconds);
    bool isTimeUp = false;
    dispatch_after(limit, dispatch_get_main_queue(), [&isTimeUp] { isTimeUp = true; });
    loop.runUntil([&] {
      session->update();
      return isTimeUp;
    });
  }

  // Runs the main run loop until the session has an outcome.
  ShowOutcome runToEnd() {
    NSRunLoop::mainRunLoop().runUntil([this] { return session->update(); });
    return *session->outcome();
  }

  // The player window in the headless window system.
  [[nodiscard]] const HeadlessWindowSystem::Window& player() {
    return *platform.windowSystem().window(session->playerWindow()->handle());
  }

  // The frame of the moving square, which is the second item in the scene of the player window.
  [[nodiscard]] CGRect squareFrame() { return player().scene[1].frame; }

  ShowOptions options = [] {
    ShowOptions result;
    result.duration = "2";
    return result;
  }();
  std::unique_ptr<EventsFile> events;
  std::ostringstream out;
  Strong<ShowSession> session;
};

// Reports

TEST_F(ShowSessionTest, ReportsTheProgressOfAnEmbeddedLaunchScreen) {
  start();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_EQ(out.str(),
            "   0.000 s  content loaded\n"
            "   0.000 s  covered\n"
            "   0.000 s  controls removed\n"
            "   0.000 s  2 s left\n"
            "   1.000 s  1 s left\n"
            "   2.000 s  controls restored\n"
            "   2.000 s  dismissed\n"
            "   2.500 s  event recorded: launch_end\n"
            "   3.000 s  uncovered\n");
}

TEST_F(ShowSessionTest, DismissalRemovesTheCoverImmediatelyIfTheWindowHasAContentController) {
  options.hasContentController = true;
  start();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_EQ(out.str(),
            "   0.000 s  content loaded\n"
            "   0.000 s  covered\n"
            "   0.000 s  controls removed\n"
            "   0.000 s  2 s left\n"
            "   1.000 s  1 s left\n"
            "   2.000 s  controls restored\n"
            "   2.000 s  dismissed\n"
            "   2.000 s  uncovered\n"
            "   2.500 s  event recorded: launch_end\n");
}

class ShowSessionPresentationTest : public ShowSessionTest,
                                    public testing::WithParamInterface<std::string> {};

INSTANTIATE_TEST_SUITE_P(ModalAndSheet, ShowSessionPresentationTest,
                         testing::Values("modal", "sheet"),
                         [](const testing::TestParamInfo<std::string>& testInfo) {
                           return testInfo.param;
                         });

TEST_P(ShowSessionPresentationTest, ModalWindowOrSheetDoesNotRemoveControls) {
  options.presentation = GetParam();
  options.hasContentController = true;
  start();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_EQ(out.str(),
            "   0.000 s  content loaded\n"
            "   0.000 s  covered\n"
            "   0.000 s  2 s left\n"
            "   1.000 s  1 s left\n"
            "   2.000 s  dismissed\n"
            "   2.000 s  uncovered\n"
            "   2.500 s  event recorded: launch_end\n");
}

TEST_F(ShowSessionTest, CountdownPausesWhileTheWindowIsNotKey) {
  start();
  run(0.55);
  platform.windowSystem().userMovesFocusAway();
  run(10);
  session->playerWindow()->makeKeyWindow();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_THAT(out.str(), testing::HasSubstr("   0.550 s  paused: not in front\n"
                                            "  10.550 s  resumed: in front again\n"
                                            "  11.050 s  1 s left\n"
                                            "  12.050 s  controls restored\n"));
}

TEST_F(ShowSessionTest, RecordsTheEventNameFromTheOptions) {
  options.event = "loading_done";
  start();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_THAT(out.str(), testing::HasSubstr("event recorded: loading_done\n"));
}

// The end of a session

TEST_F(ShowSessionTest, EndsAfterTheEventAndTheRemovalOfTheCover) {
  start();
  run(2.9);
  EXPECT_THAT(out.str(), testing::HasSubstr("event recorded"));
  EXPECT_FALSE(session->outcome());
  run(0.1);
  EXPECT_TRUE(session->outcome());
}

TEST_F(ShowSessionTest, SkippedSessionEndsWithoutAnEvent) {
  options.mode = "skip";
  start();
  run(0.55);
  session->skip();
  run(0.95);
  EXPECT_FALSE(session->outcome());
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_EQ(out.str(),
            "   0.000 s  content loaded\n"
            "   0.000 s  covered\n"
            "   0.000 s  controls removed\n"
            "   0.000 s  2 s left\n"
            "   0.550 s  controls restored\n"
            "   0.550 s  dismissed\n"
            "   1.550 s  uncovered\n");
  run(5);
  EXPECT_THAT(out.str(), testing::Not(testing::HasSubstr("event recorded")));
}

TEST_F(ShowSessionTest, SkipAfterOptionSetsTheTimeOfTheDismissal) {
  options.mode = "skip";
  options.skipAfter = 0.25;
  options.presentation = "modal";
  start();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_THAT(out.str(), testing::EndsWith("   0.250 s  dismissed\n   0.250 s  uncovered\n"));
}

TEST_F(ShowSessionTest, SkipModeRecordsNoEventEvenIfTheTimeRunsOut) {
  options.mode = "skip";
  options.skipAfter = 60;
  start();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_THAT(out.str(), testing::EndsWith("   2.000 s  dismissed\n   3.000 s  uncovered\n"));
}

TEST_F(ShowSessionTest, SkippingTwiceDismissesOnce) {
  options.mode = "skip";
  start();
  run(0.5);
  session->skip();
  run(0.3);
  session->skip();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  run(5);
  session->skip();
  EXPECT_THAT(out.str(), testing::EndsWith("   0.500 s  dismissed\n   1.500 s  uncovered\n"));
}

TEST_F(ShowSessionTest, SkipTakesEffectWhenTheWindowIsKeyAgain) {
  options.mode = "skip";
  start();
  run(0.5);
  platform.windowSystem().userMovesFocusAway();
  session->skip();
  run(0.5);
  EXPECT_THAT(out.str(), testing::Not(testing::HasSubstr("dismissed")));
  session->playerWindow()->makeKeyWindow();
  EXPECT_THAT(out.str(), testing::EndsWith("   1.000 s  dismissed\n"));
}

TEST_F(ShowSessionTest, SkipDoesNothingInTheDefaultMode) {
  start();
  run(0.5);
  session->skip();
  runToEnd();
  EXPECT_THAT(out.str(), testing::HasSubstr("   2.000 s  dismissed\n"));
  EXPECT_THAT(out.str(), testing::HasSubstr("   2.500 s  event recorded: launch_end\n"));
}

// Failures and special cases

class ShowSessionDurationTest : public ShowSessionTest,
                                public testing::WithParamInterface<std::string> {};

INSTANTIATE_TEST_SUITE_P(Invalid, ShowSessionDurationTest,
                         testing::Values("abc", "0", "", "nan", "inf"),
                         [](const testing::TestParamInfo<std::string>& testInfo) {
                           return testInfo.param.empty() ? "empty" : testInfo.param;
                         });

TEST_P(ShowSessionDurationTest, OnlyTheLibraryReportsAnInvalidDuration) {
  options.duration = GetParam();
  start();
  EXPECT_EQ(runToEnd().status, kExitFailure);
  EXPECT_EQ(session->outcome()->failure, "");
  EXPECT_THAT(platform.log,
              testing::ElementsAre("LaunchScreenManager (-[LaunchScreenManager "
                                   "parseParameters:]): Max duration time is nil or empty!"));
  EXPECT_EQ(out.str(), "");
}

TEST_F(ShowSessionTest, LibraryRefusesAnEmptyEventName) {
  options.event = "";
  start();
  EXPECT_EQ(runToEnd().status, kExitFailure);
  EXPECT_THAT(platform.log,
              testing::ElementsAre(testing::EndsWith("Next event name is nil or empty!")));
}

TEST_F(ShowSessionTest, SessionFailsIfTheDurationIsNegative) {
  // The library accepts a negative duration but creates no view controller for it.
  options.duration = "-3";
  start();
  const ShowOutcome outcome = runToEnd();
  EXPECT_EQ(outcome.status, kExitFailure);
  EXPECT_EQ(outcome.failure,
            "the launch screen cannot be shown: LaunchScreen view controller is NIL");
  EXPECT_EQ(out.str(), "");
}

TEST_F(ShowSessionTest, SheetWithoutContentControllerIsReported) {
  options.presentation = "sheet";
  start();
  const ShowOutcome outcome = runToEnd();
  EXPECT_EQ(outcome.status, kExitFailure);
  EXPECT_THAT(outcome.failure, testing::HasSubstr("--content-controller"));
  EXPECT_EQ(out.str(), "   0.000 s  content loaded\n");
}

TEST_F(ShowSessionTest, LostDisplayIsReported) {
  start();
  run(0.5);
  platform.windowSystem().serverClosesConnection("the server went away");
  const ShowOutcome outcome = runToEnd();
  EXPECT_EQ(outcome.status, kExitFailure);
  EXPECT_EQ(outcome.failure, "the display is lost: the server went away");
}

TEST_F(ShowSessionTest, LostDisplayAfterASuccessfulEndIsReported) {
  start();
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  platform.windowSystem().serverClosesConnection("the server went away");
  EXPECT_EQ(session->outcome()->status, kExitFailure);
  EXPECT_EQ(session->outcome()->failure, "the display is lost: the server went away");
}

TEST_F(ShowSessionTest, LostDisplayDoesNotHideAnEarlierFailure) {
  options.presentation = "sheet";
  start();
  const ShowOutcome outcome = runToEnd();
  platform.windowSystem().serverClosesConnection("the server went away");
  EXPECT_EQ(session->outcome()->failure, outcome.failure);
}

TEST_F(ShowSessionTest, CoversThePlayerWindowAfterASecondIfTheWindowDoesNotBecomeKey) {
  platform.windowSystem().setIgnoresFocusRequests(true);
  start();
  run(0.95);
  EXPECT_EQ(out.str(), "");
  run(0.1);
  EXPECT_THAT(out.str(), testing::HasSubstr("covered\n"));
}

TEST_F(ShowSessionTest, SessionFailsIfThePlayerWindowClosesBeforeItBecomesKey) {
  platform.windowSystem().setIgnoresFocusRequests(true);
  start();
  session->playerWindow()->close();
  EXPECT_EQ(runToEnd().failure, "the player window was closed");
}

TEST_F(ShowSessionTest, CoverIsReportedOnlyWhenItIsOnTheScreen) {
  platform.windowSystem().setHidesScenes(true);
  start();
  run(0.55);
  EXPECT_THAT(out.str(), testing::Not(testing::HasSubstr("covered")));
  platform.windowSystem().setHidesScenes(false);
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_THAT(out.str(), testing::HasSubstr("   0.550 s  covered\n"));
  EXPECT_THAT(out.str(), testing::EndsWith("   3.000 s  uncovered\n"));
}

TEST_F(ShowSessionTest, SessionFailsIfTheCoverIsNeverOnTheScreen) {
  platform.windowSystem().setHidesScenes(true);
  start();
  const ShowOutcome outcome = runToEnd();
  EXPECT_EQ(outcome.status, kExitFailure);
  EXPECT_EQ(outcome.failure, "the launch screen was never on the screen");
  EXPECT_THAT(out.str(), testing::EndsWith("   3.000 s  closed before it was on the screen\n"));
  EXPECT_THAT(out.str(), testing::Not(testing::HasSubstr("covered")));
}

TEST_F(ShowSessionTest, SessionFailsIfTheDisplayHasNoWindowsOfOtherPrograms) {
  options.window = 77;  // the ID of a window of another program
  start();
  const ShowOutcome outcome = runToEnd();
  EXPECT_EQ(outcome.status, kExitFailure);
  EXPECT_EQ(outcome.failure, "the headless display has no windows of other programs");
  EXPECT_EQ(out.str(), "");
  session->shutDown();  // must not fail without a player window
}

TEST_F(ShowSessionTest, SessionFailsIfTheScreenshotFails) {
  options.screenshotPath = "/nonexistent/picture.png";
  start();
  const ShowOutcome outcome = runToEnd();
  EXPECT_EQ(outcome.status, kExitFailure);
  EXPECT_EQ(outcome.failure, "no screenshot: the player window is not on a screen");
  // The session takes the screenshot at half of the duration of 2 s.
  EXPECT_DOUBLE_EQ(secondsFromNanoseconds(NSRunLoop::mainRunLoop().now()), 1);
}

TEST_F(ShowSessionTest, SessionFailsIfTheUserSkipsBeforeTheScreenshot) {
  options.mode = "skip";
  options.presentation = "modal";
  options.screenshotPath = "/nonexistent/picture.png";
  start();
  run(0.2);
  session->skip();
  EXPECT_EQ(runToEnd().failure, "no screenshot: the launch screen ended before half of its time");
}

TEST_F(ShowSessionTest, ReportsTheControlsThatTheWindowManagerKeeps) {
  start();
  const WindowHandle window = session->playerWindow()->handle();
  platform.windowSystem().windowManagerKeepsControls(
      window, NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable);
  // NSWindowStyleMaskBorderless is 0: the window manager keeps no controls.
  platform.windowSystem().windowManagerKeepsControls(window, NSWindowStyleMaskBorderless);
  EXPECT_THAT(out.str(), testing::EndsWith(
                             "   0.000 s  controls kept by the window manager: close, miniaturise\n"
                             "   0.000 s  controls kept by the window manager: none\n"));
}

TEST_F(ShowSessionTest, DoesNotReportRemainingControlsAfterTheEndOfTheSession) {
  start();
  runToEnd();
  platform.windowSystem().windowManagerKeepsControls(session->playerWindow()->handle(),
                                                     NSWindowStyleMaskClosable);
  EXPECT_THAT(out.str(), testing::Not(testing::HasSubstr("kept")));
}

class ShowSessionDestroyedPlayerTest : public ShowSessionTest,
                                       public testing::WithParamInterface<std::string> {};

INSTANTIATE_TEST_SUITE_P(EmbeddedAndSheet, ShowSessionDestroyedPlayerTest,
                         testing::Values("embedded", "sheet"),
                         [](const testing::TestParamInfo<std::string>& testInfo) {
                           return testInfo.param;
                         });

TEST_P(ShowSessionDestroyedPlayerTest, EventIsRecordedIfTheWindowIsDestroyedWhileItIsKey) {
  options.presentation = GetParam();
  options.hasContentController = true;
  start();
  run(0.5);
  platform.windowSystem().ownerDestroysWindow(session->playerWindow()->handle());
  EXPECT_EQ(runToEnd().status, kExitSuccess);
  EXPECT_THAT(out.str(), testing::EndsWith("   0.500 s  dismissed\n"
                                           "   0.500 s  uncovered\n"
                                           "   1.000 s  event recorded: launch_end\n"));
}

TEST_F(ShowSessionTest, SessionFailsIfTheWindowIsDestroyedWhileItIsNotKey) {
  start();
  run(0.5);
  platform.windowSystem().userMovesFocusAway();
  run(0.5);
  platform.windowSystem().ownerDestroysWindow(session->playerWindow()->handle());
  const ShowOutcome outcome = runToEnd();
  EXPECT_EQ(outcome.status, kExitFailure);
  EXPECT_THAT(outcome.failure, testing::HasSubstr("no event is recorded"));
}

TEST_F(ShowSessionTest, SessionFailsIfTheEventCannotBeWritten) {
  events = std::make_unique<EventsFile>("/dev/full");
  start();
  const ShowOutcome outcome = runToEnd();
  EXPECT_EQ(outcome.status, kExitFailure);
  EXPECT_EQ(outcome.failure, "the event could not be written to /dev/full");
  EXPECT_THAT(out.str(), testing::HasSubstr("event recorded: launch_end\n"));
}

// The windows

TEST_F(ShowSessionTest, PlayerWindowIsKeyAndHasTheClassThatTheLibraryExpects) {
  options.size = {640, 480};
  start();
  EXPECT_EQ(session->playerWindow()->className(), LSUnityPlayerWindowClassName);
  EXPECT_TRUE(session->playerWindow()->isKeyWindow());
  EXPECT_EQ(player().description.className, "PlayerWindow");
  EXPECT_EQ(player().description.frame.size, (CGSize{640, 480}));
}

TEST_F(ShowSessionTest, PlayerWindowHasAContentControllerOnlyIfRequested) {
  start();
  EXPECT_EQ(session->playerWindow()->contentViewController(), nullptr);
  session = nullptr;
  options.hasContentController = true;
  start();
  EXPECT_NE(session->playerWindow()->contentViewController(), nullptr);
}

TEST_F(ShowSessionTest, IndicatorSpinsInTheMiddleOfTheCover) {
  options.hasIndicator = true;
  options.size = {800, 600};
  start();
  ASSERT_EQ(player().scene.size(), kPlayerItemCount + 2);  // the white fill and the indicator
  const SceneItem& indicator = player().scene.back();
  EXPECT_EQ(indicator.kind, SceneItem::Kind::Spinner);
  EXPECT_TRUE(indicator.isAnimated);
  EXPECT_EQ(indicator.frame, CGRectMake(384, 284, 32, 32));
}

TEST_F(ShowSessionTest, CoverIsWhiteAndHasNoIndicatorByDefault) {
  start();
  ASSERT_EQ(player().scene.size(), kPlayerItemCount + 1);
  EXPECT_EQ(player().scene.back().kind, SceneItem::Kind::Fill);
  EXPECT_EQ(player().scene.back().color, (CGColor{1, 1, 1, 1}));
}

TEST_F(ShowSessionTest, SquareMovesDuringAndAfterTheLaunchScreen) {
  options.hasContentController = true;
  start();
  const CGRect firstFrame = squareFrame();
  run(0.5);
  EXPECT_NE(squareFrame(), firstFrame);
  run(1.6);
  ASSERT_EQ(player().scene.size(), kPlayerItemCount);
  const CGRect frameAfterCover = squareFrame();
  run(0.2);
  EXPECT_NE(squareFrame(), frameAfterCover);
}

TEST_F(ShowSessionTest, SquareMovesWhileAModalWindowIsOpen) {
  options.presentation = "modal";
  start();
  const CGRect firstFrame = squareFrame();
  run(0.5);
  EXPECT_NE(squareFrame(), firstFrame);
}

struct ShutDownCase {
  const char* testName;
  const char* presentation;
  bool hasContentController;
  double secondsBeforeShutDown;

  friend void PrintTo(const ShutDownCase& testCase, std::ostream* out) {
    *out << testCase.testName;
  }
};

class ShowSessionShutDownTest : public ShowSessionTest,
                                public testing::WithParamInterface<ShutDownCase> {};

TEST_P(ShowSessionShutDownTest, RestoresTheControlsAndClosesTheWindow) {
  options.presentation = GetParam().presentation;
  options.hasContentController = GetParam().hasContentController;
  start();
  const Strong<NSWindow> window = session->playerWindow();
  run(GetParam().secondsBeforeShutDown);
  session->shutDown();
  EXPECT_EQ(window->styleMask(), kPlayerStyleMask);
  EXPECT_EQ(player().description.styleMask, kPlayerStyleMask);
  EXPECT_FALSE(window->isVisible());
  EXPECT_TRUE(NSApp->orderedWindows().empty());
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(NSRunLoop::mainRunLoop().timerCount(), 0U);
  EXPECT_THAT(out.str(), testing::HasSubstr("dismissed\n"));
  EXPECT_THAT(out.str(), testing::HasSubstr("uncovered\n"));
  const std::string output = out.str();
  session->shutDown();
  platform.run(5);
  EXPECT_EQ(out.str(), output);
}

INSTANTIATE_TEST_SUITE_P(
    ShowSession, ShowSessionShutDownTest,
    testing::Values(ShutDownCase{"Embedded", "embedded", false, 0.5},
                    ShutDownCase{"EmbeddedWithAContentController", "embedded", true, 0.5},
                    ShutDownCase{"Modal", "modal", false, 0.5},
                    ShutDownCase{"ModalWithAContentController", "modal", true, 0.5},
                    ShutDownCase{"Sheet", "sheet", true, 0.5},
                    ShutDownCase{"DismissedCoverThatIsStillShown", "embedded", false, 2.4}),
    [](const testing::TestParamInfo<ShutDownCase>& testInfo) { return testInfo.param.testName; });

TEST_F(ShowSessionTest, ShutDownAfterTheEndOfTheSessionReportsNothing) {
  start();
  runToEnd();
  const std::string output = out.str();
  session->shutDown();
  EXPECT_EQ(out.str(), output);
  EXPECT_FALSE(session->playerWindow()->isVisible());
}

TEST_F(ShowSessionTest, SessionReleasesItsWindowAndCover) {
  start();
  const Weak<NSWindow> window = session->playerWindow();
  const Weak<LaunchScreenViewController> cover = embedded_cover::selfController;
  ASSERT_FALSE(cover.expired());
  runToEnd();
  session = nullptr;
  platform.runDueWork();
  EXPECT_TRUE(window.expired());
  EXPECT_TRUE(cover.expired());
}

}  // namespace
}  // namespace vel::host
