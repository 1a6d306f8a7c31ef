// Complete runs of a launch screen, from the request for content to the recorded analytics event.
//
// The journal lists what happens in a run. Its line "style 7" means that a window gets the style
// mask 7. The style mask of a window with a title and all controls is 15. An embedded launch screen
// removes the three controls one by one, so the window gets the style masks 7, 3 and 1.
//
// The cover is the view of an embedded launch screen: it covers the content of an existing window.
//
// The countdown ticks every 0.1 s. A countdown of 1 s takes 11 ticks, because rounding errors leave
// a little time after ten ticks. The event is recorded 0.5 s after the dismissal.
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

// The recorded analytics events, with their times in seconds.
using Events = std::vector<VirtualPlatform::Event>;

class CompleteRunTest : public LaunchScreenTest {
 protected:
  // Requests and presents the content. The host's view delegate writes to the journal.
  void show(const Strong<NSWindow>& window, std::int32_t hostMode, double duration = 1.0,
            std::string_view requestMode = "") {
    load(duration, requestMode);
    manager->content()->setDelegate(hostDelegate);
    takeJournal();
    present(window, hostMode);
  }
  // Takes the focus away after three ticks. Makes `window` key five seconds later.
  void switchAwayAndBack(const Strong<NSWindow>& window) {
    platform.run(0.35);
    platform.windowSystem().userMovesFocusAway();
    platform.run(5);
    window->makeKeyWindow();
  }
  // Empties the journal and returns its lines.
  Lines takeJournal() { return std::exchange(*journal, {}); }
  // The number of rectangles that the window draws: 1 while it shows a cover, otherwise 0.
  [[nodiscard]] std::size_t rectangleCount(const Strong<NSWindow>& window) {
    return platform.windowSystem().window(window->handle())->scene.size();
  }

  PlatformJournal platformJournal{journal};
  Strong<HostViewDelegate> hostDelegate = make<HostViewDelegate>("host", journal);
};

// Each presentation mode

TEST_F(CompleteRunTest, ACoverInAWindowWithoutContentViewControllerIsRemovedASecondAfterDismissal) {
  const auto window = openPlayerWindow();
  show(window, kHostModeEmbedded);
  EXPECT_EQ(takeJournal(), (Lines{"viewWillAppear", "host: will appear", "viewDidAppear", "style 7",
                                  "style 3", "style 1"}));
  EXPECT_EQ(rectangleCount(window), 1u);
  platform.run(1.05);
  EXPECT_EQ(takeJournal(), Lines{});
  platform.run(0.05);
  // The dismissal itself calls `viewDidDisappear`. `viewWillDisappear` follows when the view is
  // removed.
  EXPECT_EQ(takeJournal(), (Lines{"host: can disappear", "style 15",  //
                                  "viewDidDisappear", "host: did disappear"}));
  EXPECT_EQ(rectangleCount(window), 1u);
  platform.run(1);
  EXPECT_EQ(takeJournal(), Lines{"viewWillDisappear"});
  EXPECT_EQ(rectangleCount(window), 0u);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 1.6}}));
}

TEST_F(CompleteRunTest, ACoverInAWindowWithContentViewControllerIsRemovedAtDismissal) {
  const auto window = openPlayerWindowWithContentViewController();
  show(window, kHostModeEmbedded);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  takeJournal();
  platform.run(1.1);
  EXPECT_EQ(takeJournal(), (Lines{"host: can disappear", "style 15", "viewWillDisappear",
                                  "viewDidDisappear", "host: did disappear"}));
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(rectangleCount(window), 0u);
  platform.run(2);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 1.6}}));
}

TEST_F(CompleteRunTest, AModalWindowIsShownModallyUntilTheDismissal) {
  const auto window = openPlayerWindow();
  show(window, kHostModeModalWindow);
  EXPECT_EQ(takeJournal(), (Lines{"viewWillAppear", "host: will appear", "style 0", "window opened",
                                  "viewDidAppear"}));
  EXPECT_EQ(NSApp->modalWindow(), controller()->view()->window());
  EXPECT_EQ(NSApp->keyWindow(), NSApp->modalWindow());
  platform.run(1.1);
  EXPECT_EQ(takeJournal(), (Lines{"host: can disappear", "viewWillDisappear", "window closed",
                                  "viewDidDisappear", "host: did disappear"}));
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(NSApp->keyWindow(), window);
  platform.run(2);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 1.6}}));
}

TEST_F(CompleteRunTest, ASheetIsAttachedToTheWindowUntilTheDismissal) {
  const auto window = openPlayerWindowWithContentViewController();
  show(window, kHostModeSheet);
  EXPECT_EQ(takeJournal(), (Lines{"viewWillAppear", "host: will appear", "window opened",  //
                                  "viewDidAppear"}));
  EXPECT_EQ(window->sheets().size(), 1u);
  platform.run(1.1);
  EXPECT_EQ(takeJournal(), (Lines{"host: can disappear", "viewWillDisappear", "window closed",
                                  "viewDidDisappear", "host: did disappear"}));
  EXPECT_TRUE(window->sheets().empty());
  platform.run(2);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 1.6}}));
}

// In these tests, the countdown pauses from 0.35 s to 5.35 s. Its last eight ticks end at 6.15 s.

TEST_F(CompleteRunTest, TheCountdownInAWindowWithoutContentViewControllerPausesWithoutFocus) {
  const auto window = openPlayerWindow();
  show(window, kHostModeEmbedded);
  switchAwayAndBack(window);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  platform.run(3);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 6.65}}));
}

TEST_F(CompleteRunTest, TheCountdownInAWindowWithContentViewControllerPausesWithoutFocus) {
  const auto window = openPlayerWindowWithContentViewController();
  show(window, kHostModeEmbedded);
  switchAwayAndBack(window);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  platform.run(3);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 6.65}}));
}

TEST_F(CompleteRunTest, TheCountdownOfAModalWindowPausesWithoutFocus) {
  show(openPlayerWindow(), kHostModeModalWindow);
  switchAwayAndBack(NSApp->modalWindow());
  platform.run(3);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 6.65}}));
}

TEST_F(CompleteRunTest, TheCountdownOfAModalWindowResumesWhenThePlayerWindowBecomesKey) {
  const auto window = openPlayerWindow();
  show(window, kHostModeModalWindow);
  switchAwayAndBack(window);
  platform.run(3);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 6.65}}));
}

TEST_F(CompleteRunTest, TheCountdownOfASheetPausesWithoutFocus) {
  const auto window = openPlayerWindowWithContentViewController();
  show(window, kHostModeSheet);
  switchAwayAndBack(window->sheets().front());
  platform.run(3);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 6.65}}));
}

TEST_F(CompleteRunTest, TheCountdownPausesWhileTheApplicationIsInactive) {
  const auto window = openPlayerWindow();
  show(window, kHostModeEmbedded);
  platform.run(0.35);
  platform.windowSystem().userDeactivatesApplication();
  platform.run(5);
  platform.windowSystem().userActivatesApplication();
  EXPECT_EQ(NSApp->keyWindow(), window);
  platform.run(3);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 6.65}}));
}

// A consent dialog over the launch screen

TEST_F(CompleteRunTest, AConsentDialogPausesTheCountdownUntilItCloses) {
  const auto window = openPlayerWindow();
  show(window, kHostModeEmbedded);
  platform.run(0.35);
  const auto consentDialog = openWindow("ConsentWindow");
  consentDialog->setContentViewController(make<NamedViewController>(LSGDPRControllerClassName));
  NSApp->beginModalSession(consentDialog);
  consentDialog->makeKeyWindow();
  platform.run(5);
  EXPECT_TRUE(platform.events.empty());
  consentDialog->close();
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(NSApp->keyWindow(), window);
  platform.run(3);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 6.65}}));
}

// Dismissals, a destroyed window and a second launch screen

TEST_F(CompleteRunTest, InSkipModeAnEarlyDismissalRecordsNoEvent) {
  const auto window = openPlayerWindow();
  show(window, kHostModeEmbedded, 10, "skip");
  platform.run(0.5);
  manager->dismissLaunchScreen();
  EXPECT_EQ(window->styleMask(), kFullStyle);
  platform.run(20);
  EXPECT_EQ(rectangleCount(window), 0u);
  EXPECT_TRUE(platform.events.empty());
}

TEST_F(CompleteRunTest, AnEarlyDismissalWithoutSkipModeIsRefusedButRecordsTheEvent) {
  const auto window = openPlayerWindowWithContentViewController();
  show(window, kHostModeEmbedded, 5);
  platform.run(0.5);
  takeJournal();
  manager->dismissLaunchScreen();
  EXPECT_EQ(takeJournal(), Lines{"host: can disappear"});
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  platform.run(3);
  // The event is recorded 2.5 s after a refused dismissal.
  EXPECT_EQ(platform.events, (Events{{"launch_end", 3.0}}));
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  platform.run(5);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_EQ(platform.events.size(), 1u);
}

TEST_F(CompleteRunTest, TheHostCanKeepTheLaunchScreenBeyondItsTime) {
  const auto window = openPlayerWindowWithContentViewController();
  show(window, kHostModeEmbedded);
  hostDelegate->agrees = false;
  platform.run(10);
  EXPECT_EQ(rectangleCount(window), 1u);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  EXPECT_TRUE(platform.events.empty());
  hostDelegate->agrees = true;
  manager->dismissLaunchScreen();
  EXPECT_EQ(rectangleCount(window), 0u);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  platform.run(1);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 10.5}}));
}

TEST_F(CompleteRunTest, ALaunchScreenThatPresentsASheetIsNotDismissed) {
  show(openPlayerWindow(), kHostModeModalWindow);
  const auto sheet = make<NamedViewController>("OnTop");
  controller()->presentViewControllerAsSheet(sheet);
  controller()->view()->window()->makeKeyWindow();
  platform.run(5);
  EXPECT_NE(controller()->view()->window(), nullptr);
  EXPECT_TRUE(platform.events.empty());
  // `dismissViewController` of the launch screen's controller would ask the delegates, so call the
  // base class.
  controller()->NSViewController::dismissViewController(sheet);
  takeJournal();
  manager->dismissLaunchScreen();
  EXPECT_EQ(takeJournal(), (Lines{"host: can disappear", "viewWillDisappear", "window closed",
                                  "viewDidDisappear", "host: did disappear"}));
}

TEST_F(CompleteRunTest, TheLaunchScreenEndsWhenItsWindowIsDestroyed) {
  const auto window = openPlayerWindow();
  show(window, kHostModeEmbedded, 10);
  platform.run(0.5);
  takeJournal();
  platform.windowSystem().ownerDestroysWindow(window->handle());
  EXPECT_EQ(takeJournal(), (Lines{"viewWillDisappear", "style 15", "window closed",  //
                                  "viewDidDisappear", "host: did disappear"}));
  platform.run(1);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 1.0}}));
}

TEST_F(CompleteRunTest, ASecondLaunchScreenOfTheSameManagerRecordsNoEvent) {
  const auto window = openPlayerWindow();
  show(window, kHostModeEmbedded);
  platform.run(5);
  window->setStyleMask(7);
  show(window, kHostModeEmbedded);
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  platform.run(5);
  EXPECT_EQ(window->styleMask(), 7u);
  EXPECT_EQ(rectangleCount(window), 0u);
  EXPECT_EQ(platform.events.size(), 1u);
}

}  // namespace
}  // namespace vel::test
