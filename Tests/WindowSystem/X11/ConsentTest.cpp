// A host's consent dialog over a launch screen, on a real display and in real time.
#include <gmock/gmock.h>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/VirtualPlatform.h"
#include "Tests/WindowSystem/X11/Support/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

class X11Consent : public X11TestWithManager {
 protected:
  void SetUp() override {
    other = user.openGame({900, 600, 200, 200}, 0);
    ASSERT_TRUE(eventually([this] { return user.isViewable(other); }));
    game = user.openGame(kGame, kGreen);
    ASSERT_TRUE(eventually([this] { return user.isViewable(game); }));
    system();
    NSApplication::start(takeSystem());
    std::string error;
    player = NSApp->adoptWindow(game, error);
    ASSERT_NE(player, nullptr) << error;
    player->makeKeyWindow();
    MetricsCenter::setSink([this](std::string_view event) { events.emplace_back(event); });
    consent->setContentViewController(make<NamedViewController>("GDPRViewController"));
  }
  void TearDown() override {
    manager->deactivate();
    player = nullptr;
    NSApplication::stop();
    MetricsCenter::setSink(nullptr);
    sDefaultConfiguration = nullptr;
  }
  void present(double duration) {
    const auto data = manager->contentDataForContentRequest(makeRequest("launch_end", duration));
    const auto view = manager->contentViewForContentData(data);
    as<CVPresentationFullScreen>(view->presentation())
        ->presentForWindowWithPresentationMode(player, 0);
  }
  /// Runs the loop until the condition holds; false where it does not come to hold.
  static bool runUntil(const std::function<bool()>& condition) {
    NSRunLoop& loop = NSRunLoop::mainRunLoop();
    return eventually([&] {
      loop.runModeBeforeDate(loop.mode(), loop.now() + kNanosecondsPerSecond / 100);
      return condition();
    });
  }
  /// Runs the consent window modally, and `act` once it is up and the countdown stands still.
  void runConsent(const std::function<void()>& act) {
    std::function<void()> look = [&] {
      if (user.focused() == idOf(consent->handle()) && manager->appIsUnfocused()) {
        EXPECT_EQ(manager->launchScreenExpirationTimer(), nullptr);
        EXPECT_TRUE(consent->isModalPanel());
        act();
      } else {
        dispatch_after(dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC / 100),
                       dispatch_get_main_queue(), look);
      }
    };
    dispatch_async(dispatch_get_main_queue(), look);
    NSApp->runModalForWindow(consent);
  }

  xcb_window_t other = 0;  // another program's
  xcb_window_t game = 0;
  Strong<NSWindow> player;
  Strong<NSWindow> consent =
      NSWindow::initWithContentRectStyleMask(CGRectMake(300, 300, 300, 200), kFullStyle);
  Strong<LaunchScreenManager> manager = LaunchScreenManager::init();
  std::vector<std::string> events;
};

TEST_F(X11Consent, WhenItHasBeenAnsweredTheLaunchScreenIsKeyAndGoesOnToItsEnd) {
  present(1);
  ASSERT_TRUE(runUntil([this] { return player->isKeyWindow(); }));
  EXPECT_TRUE(user.picture(game).isAll(kWhite));
  runConsent([this] { consent->close(); });
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_NE(manager->launchScreenExpirationTimer(), nullptr);
  EXPECT_TRUE(runUntil([this] { return user.focused() == game && player->isKeyWindow(); }));
  EXPECT_TRUE(user.picture(game).isAll(kWhite));
  EXPECT_TRUE(runUntil([this] { return !events.empty() && user.picture(game).isAll(kGreen); }));
  EXPECT_THAT(events, testing::ElementsAre("launch_end"));
}

TEST_F(X11Consent, WhenTheUserLeavesItUnansweredItIsModalNoMore) {
  present(600);
  ASSERT_TRUE(runUntil([this] { return player->isKeyWindow(); }));
  runConsent([&] { user.focus(other); });
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_TRUE(consent->isVisible());
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_NE(manager->launchScreenExpirationTimer(), nullptr);
}

}  // namespace
}  // namespace vel::test
