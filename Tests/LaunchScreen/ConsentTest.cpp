// A host's consent dialog is a window whose content view controller has the class name
// "GDPRViewController". When the dialog resigns key, the manager ends the innermost modal session
// and makes the launch screen's window the key window.
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Calls = std::vector<std::string>;

/// Records the window of each NSWindowDidBecomeKeyNotification.
class KeyObserver final : public Class<KeyObserver, "KeyObserver"> {
 public:
  void windowDidBecomeKey(const NSNotification& notification) {
    keyWindows.push_back(as<NSWindow>(notification.object()));
  }
  std::vector<Strong<NSWindow>> keyWindows;
};

class ConsentTest : public ShownLaunchScreenTest {
 protected:
  ConsentTest() {
    consentDialog->setContentViewController(make<NamedViewController>("GDPRViewController"));
  }
  Strong<NSWindow> consentDialog = openWindow("NSWindow");
};

TEST_F(ConsentTest, WhenTheDialogResignsKeyTheLaunchScreenBecomesKeyAndCountsDown) {
  load(5.0);
  const auto player = openPlayerWindowWithContentViewController();
  present(player, kHostModeSheet);
  const auto sheet = controller()->view()->window();
  NSApp->beginModalSession(consentDialog);
  consentDialog->makeKeyWindow();
  ASSERT_TRUE(manager->appIsUnfocused());
  ASSERT_EQ(timer(), nullptr);

  platform.windowSystem().userMovesFocusAway();
  EXPECT_EQ(NSApp->keyWindow(), sheet);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_NE(timer(), nullptr);
}

TEST_F(ConsentTest, TheDialogEndsOnlyTheInnermostModalSession) {
  load(5.0);
  present(openPlayerWindow(), kHostModeModalWindow);
  const auto modalWindow = controller()->view()->window();
  NSApp->beginModalSession(consentDialog);
  notifyDidResignKey(consentDialog);
  EXPECT_EQ(NSApp->modalWindow(), modalWindow);
}

TEST_F(ConsentTest, AnExpiredLaunchScreenBecomesKey) {
  show(5.0);
  manager->setLaunchScreenExpired(true);
  manager->setAppIsUnfocused(true);
  notifyDidResignKey(consentDialog);
  EXPECT_EQ(NSApp->keyWindow(), window);
  EXPECT_FALSE(manager->appIsUnfocused());
}

TEST_F(ConsentTest, APostponedDismissalRunsAfterTheModalSessionEndsAndBeforeTheWindowBecomesKey) {
  show(5.0, "skip");
  manager->setLaunchShouldBeClosed(true);
  NSApp->beginModalSession(consentDialog);
  // The manager calls its own `windowDidBecomeKey` before it makes the window the key window. This
  // call dismisses the controller.
  hostController->onNextCall([&] {
    EXPECT_EQ(NSApp->modalWindow(), nullptr);
    EXPECT_EQ(NSApp->keyWindow(), nullptr);
  });
  notifyDidResignKey(consentDialog);
  EXPECT_EQ(hostController->calls, Calls{"dismissViewController"});
  EXPECT_EQ(NSApp->keyWindow(), window);
}

TEST_F(ConsentTest, TheWindowToWhichADismissalMovesTheViewBecomesKey) {
  show(5.0, "skip");
  manager->setLaunchShouldBeClosed(true);
  const auto newWindow = openWindow("NSWindow");
  hostController->onNextCall([&] { newWindow->contentView()->addSubview(hostController->view()); });
  notifyDidResignKey(consentDialog);
  EXPECT_EQ(NSApp->keyWindow(), newWindow);
}

TEST_F(ConsentTest, ANotificationIsPostedOnlyIfTheLaunchScreenWindowWasNotKey) {
  show(5.0);
  window->makeKeyWindow();
  notifyDidResignKey(window);
  const auto observer = make<KeyObserver>();
  NSNotificationCenter::defaultCenter()
      .addObserverSelectorNameObject<&KeyObserver::windowDidBecomeKey>(
          observer, NSWindowDidBecomeKeyNotification, nullptr);
  notifyDidResignKey(consentDialog);
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_TRUE(observer->keyWindows.empty()) << "the window was key already";
  platform.windowSystem().userMovesFocusAway();
  notifyDidResignKey(consentDialog);
  EXPECT_EQ(observer->keyWindows, std::vector<Strong<NSWindow>>{window})
      << "the window becomes key";
}

TEST_F(ConsentTest, OnlyTheModalSessionEndsIfNoWindowShowsTheLaunchScreen) {
  load(5.0);
  manager->setAppIsUnfocused(true);
  NSApp->beginModalSession(consentDialog);
  notifyDidResignKey(consentDialog);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(NSApp->keyWindow(), nullptr);
  EXPECT_TRUE(manager->appIsUnfocused());
  EXPECT_EQ(timer(), nullptr);
}

TEST_F(ConsentTest, AConsentDialogThatIsARequiredWindowDoesNotPauseTheCountdown) {
  show(5.0);
  // The countdown pauses when a required window resigns key. A window is required if its content
  // view controller has a child of the class of the launch screen's controller.
  consentDialog->contentViewController()->addChildViewController(
      make<NamedViewController>("HostController"));
  ASSERT_TRUE(manager->isRequiredWindow(consentDialog));
  const auto runningTimer = timer();
  notifyDidResignKey(consentDialog);
  EXPECT_EQ(timer(), runningTimer);
  EXPECT_FALSE(manager->appIsUnfocused());
}

TEST_F(ConsentTest, TheCountdownResumesEvenIfNSAppIsNull) {
  show(5.0);
  manager->pauseTimer();
  const Strong<NSApplication> application = NSApp;
  NSApp = nullptr;
  notifyDidResignKey(consentDialog);
  NSApp = application;
  EXPECT_NE(timer(), nullptr);
}

TEST_F(ConsentTest, ADialogWithAnotherControllerClassIsNotAConsentDialog) {
  show(5.0);
  // The class names of the window and of a child controller do not matter.
  for (const std::string_view name : {"GDPRViewControllerSubclass", "gdprViewController", ""}) {
    const auto otherWindow = openWindow("GDPRViewController");
    otherWindow->setContentViewController(make<NamedViewController>(name));
    otherWindow->contentViewController()->addChildViewController(
        make<NamedViewController>("GDPRViewController"));
    NSApp->beginModalSession(otherWindow);
    notifyDidResignKey(otherWindow);
    EXPECT_EQ(NSApp->modalWindow(), otherWindow) << name;
    EXPECT_EQ(NSApp->keyWindow(), nullptr) << name;
  }
}

}  // namespace
}  // namespace vel::test
