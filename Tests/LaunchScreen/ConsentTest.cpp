// The host's consent dialog: when it loses key, the launch screen's window is to have it.
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Calls = std::vector<std::string>;

/// Somebody else who hears when a window becomes key.
class KeyListener final : public Class<KeyListener, "KeyListener"> {
 public:
  void windowDidBecomeKey(const NSNotification& notification) {
    became.push_back(as<NSWindow>(notification.object()));
  }
  std::vector<Strong<NSWindow>> became;
};

class ConsentTest : public ShownLaunchScreenTest {
 protected:
  ConsentTest() {
    consent->setContentViewController(make<NamedViewController>("GDPRViewController"));
  }
  Strong<NSWindow> consent = openWindow("NSWindow");
};

TEST_F(ConsentTest, WhenItLosesKeyTheLaunchScreenIsKeyAgainAndGoesOn) {
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

TEST_F(ConsentTest, ItEndsTheNewestModalRunOnly) {
  load(5.0);
  present(openPlayerWindow(), kHostModeModalWindow);
  const auto modal = controller()->view()->window();
  NSApp->beginModalRun(consent);
  resignKey(consent);
  EXPECT_EQ(NSApp->modalWindow(), modal);
}

TEST_F(ConsentTest, AnExpiredLaunchScreenIsMadeKeyToo) {
  show(5.0);
  manager->setLaunchScreenExpired(true);
  manager->setAppIsUnfocused(true);
  resignKey(consent);
  EXPECT_EQ(NSApp->keyWindow(), window);
  EXPECT_FALSE(manager->appIsUnfocused());
}

TEST_F(ConsentTest, TheModalRunEndsThenTheManagerIsToldThenTheWindowIsMadeKey) {
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

TEST_F(ConsentTest, TheWindowThatIsMadeKeyIsTheOneThatShowsTheLaunchScreenByThen) {
  show(5.0, "skip");
  manager->setLaunchShouldBeClosed(true);
  const auto other = openWindow("NSWindow");
  hostController->onNextCall([&] { other->contentView()->addSubview(hostController->view()); });
  resignKey(consent);
  EXPECT_EQ(NSApp->keyWindow(), other);
}

TEST_F(ConsentTest, TheManagerTellsItselfAndNobodyElse) {
  show(5.0);
  window->makeKeyWindow();
  resignKey(window);
  const auto listener = make<KeyListener>();
  NSNotificationCenter::defaultCenter()
      .addObserverSelectorNameObject<&KeyListener::windowDidBecomeKey>(
          listener, NSWindowDidBecomeKeyNotification, nullptr);
  resignKey(consent);
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_TRUE(listener->became.empty()) << "the window was key already";
  platform.windowSystem().userMovesFocusAway();
  resignKey(consent);
  EXPECT_EQ(listener->became, std::vector<Strong<NSWindow>>{window}) << "it is really made key";
}

TEST_F(ConsentTest, WithoutALaunchScreensWindowOnlyTheModalRunEnds) {
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
  const auto running = timer();
  resignKey(consent);
  EXPECT_EQ(timer(), running);
  EXPECT_FALSE(manager->appIsUnfocused());
}

TEST_F(ConsentTest, WithoutAnApplicationTheCountdownGoesOnAllTheSame) {
  show(5.0);
  manager->pauseTimer();
  const Strong<NSApplication> kept = NSApp;
  NSApp = nullptr;
  resignKey(consent);
  NSApp = kept;
  EXPECT_NE(timer(), nullptr);
}

TEST_F(ConsentTest, OnlyAContentViewControllerOfExactlyThatClassIsOne) {
  show(5.0);
  for (const std::string_view name : {"GDPRViewControllerSubclass", "gdprViewController", ""}) {
    const auto other = openWindow("GDPRViewController");
    other->setContentViewController(make<NamedViewController>(name));
    other->contentViewController()->addChildViewController(
        make<NamedViewController>("GDPRViewController"));
    NSApp->beginModalRun(other);
    resignKey(other);
    EXPECT_EQ(NSApp->modalWindow(), other) << name;
    EXPECT_EQ(NSApp->keyWindow(), nullptr) << name;
  }
}

}  // namespace
}  // namespace vel::test
