// The host's consent dialog: when the dialog resigns key, the window of the launch screen becomes
// key.
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Calls = std::vector<std::string>;

/// Another observer of windows that become key.
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
    consent->setContentViewController(make<NamedViewController>("GDPRViewController"));
  }
  Strong<NSWindow> consent = openWindow("NSWindow");
};

TEST_F(ConsentTest, WhenTheDialogResignsKeyTheLaunchScreenBecomesKeyAndCountsDown) {
  load(5.0);
  const auto player = openPlayerWindowWithContentViewController();
  present(player, kHostModeSheet);
  const auto sheet = controller()->view()->window();
  NSApp->beginModalRun(consent);
  consent->makeKeyWindow();
  ASSERT_TRUE(manager->appIsUnfocused());
  ASSERT_EQ(timer(), nullptr);

  platform.windowSystem().userMovesFocusAway();
  EXPECT_EQ(NSApp->keyWindow(), sheet);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_NE(timer(), nullptr);
}

TEST_F(ConsentTest, OnlyTheInnermostModalRunEnds) {
  load(5.0);
  present(openPlayerWindow(), kHostModeModalWindow);
  const auto modal = controller()->view()->window();
  NSApp->beginModalRun(consent);
  resignKey(consent);
  EXPECT_EQ(NSApp->modalWindow(), modal);
}

TEST_F(ConsentTest, AnExpiredLaunchScreenAlsoBecomesKey) {
  show(5.0);
  manager->setLaunchScreenExpired(true);
  manager->setAppIsUnfocused(true);
  resignKey(consent);
  EXPECT_EQ(NSApp->keyWindow(), window);
  EXPECT_FALSE(manager->appIsUnfocused());
}

TEST_F(ConsentTest, TheModalRunEndsThenTheManagerIsNotifiedThenTheWindowBecomesKey) {
  show(5.0, "skip");
  manager->setLaunchShouldBeClosed(true);
  NSApp->beginModalRun(consent);
  hostController->onNextCall([&] {
    EXPECT_EQ(NSApp->modalWindow(), nullptr);
    EXPECT_EQ(NSApp->keyWindow(), nullptr);
  });
  resignKey(consent);
  EXPECT_EQ(hostController->calls, Calls{"dismissViewController"});
  EXPECT_EQ(NSApp->keyWindow(), window);
}

TEST_F(ConsentTest, TheCurrentWindowOfTheLaunchScreenBecomesKey) {
  show(5.0, "skip");
  manager->setLaunchShouldBeClosed(true);
  const auto otherWindow = openWindow("NSWindow");
  hostController->onNextCall(
      [&] { otherWindow->contentView()->addSubview(hostController->view()); });
  resignKey(consent);
  EXPECT_EQ(NSApp->keyWindow(), otherWindow);
}

TEST_F(ConsentTest, OnlyTheManagerReceivesTheNotificationThatItMakes) {
  show(5.0);
  window->makeKeyWindow();
  resignKey(window);
  const auto listener = make<KeyObserver>();
  NSNotificationCenter::defaultCenter()
      .addObserverSelectorNameObject<&KeyObserver::windowDidBecomeKey>(
          listener, NSWindowDidBecomeKeyNotification, nullptr);
  resignKey(consent);
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_TRUE(listener->keyWindows.empty()) << "the window was key already";
  platform.windowSystem().userMovesFocusAway();
  resignKey(consent);
  EXPECT_EQ(listener->keyWindows, std::vector<Strong<NSWindow>>{window}) << "it is really made key";
}

TEST_F(ConsentTest, WithoutALaunchScreenWindowOnlyTheModalRunEnds) {
  load(5.0);
  manager->setAppIsUnfocused(true);
  NSApp->beginModalRun(consent);
  resignKey(consent);
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_EQ(NSApp->keyWindow(), nullptr);
  EXPECT_TRUE(manager->appIsUnfocused());
  EXPECT_EQ(timer(), nullptr);
}

TEST_F(ConsentTest, ARequiredWindowWithAConsentDialogPausesNothing) {
  show(5.0);
  consent->contentViewController()->addChildViewController(
      make<NamedViewController>("HostController"));
  ASSERT_TRUE(manager->isRequiredWindow(consent));
  const auto runningTimer = timer();
  resignKey(consent);
  EXPECT_EQ(timer(), runningTimer);
  EXPECT_FALSE(manager->appIsUnfocused());
}

TEST_F(ConsentTest, WithoutAnApplicationTheCountdownContinues) {
  show(5.0);
  manager->pauseTimer();
  const Strong<NSApplication> application = NSApp;
  NSApp = nullptr;
  resignKey(consent);
  NSApp = application;
  EXPECT_NE(timer(), nullptr);
}

TEST_F(ConsentTest, OnlyAContentViewControllerOfThisExactClassIsAConsentDialog) {
  show(5.0);
  for (const std::string_view name : {"GDPRViewControllerSubclass", "gdprViewController", ""}) {
    const auto otherWindow = openWindow("GDPRViewController");
    otherWindow->setContentViewController(make<NamedViewController>(name));
    otherWindow->contentViewController()->addChildViewController(
        make<NamedViewController>("GDPRViewController"));
    NSApp->beginModalRun(otherWindow);
    resignKey(otherWindow);
    EXPECT_EQ(NSApp->modalWindow(), otherWindow) << name;
    EXPECT_EQ(NSApp->keyWindow(), nullptr) << name;
  }
}

}  // namespace
}  // namespace vel::test
