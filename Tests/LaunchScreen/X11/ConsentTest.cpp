// A host's consent dialog above a launch screen, on an X11 display and in real time.
#include <gmock/gmock.h>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/LaunchScreen/X11/X11HostTest.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

constexpr std::int32_t kEmbedded = 0;
constexpr std::uint32_t kGameColor = 0x208040;

class X11Consent : public X11HostTest {
 protected:
  void SetUp() override {
    X11HostTest::SetUp();
    consentDialog->setContentViewController(make<NamedViewController>("GDPRViewController"));
  }
  /// Runs the consent dialog modally. Calls `act` when the dialog has the focus and the countdown
  /// is paused.
  void runConsentDialog(const std::function<void()>& act) {
    std::function<void()> actWhenPaused = [&] {
      // `appIsUnfocused` becomes true when the player's window stops being the key window.
      if (client.focusedWindow() == idOf(consentDialog->handle()) &&
          launchScreen->appIsUnfocused()) {
        EXPECT_EQ(launchScreen->launchScreenExpirationTimer(), nullptr);
        EXPECT_TRUE(consentDialog->isModalPanel());
        act();
      } else {
        dispatch_after(dispatch_time(kDispatchTimeNow, kNanosecondsPerSecond / 100),
                       dispatch_get_main_queue(), actWhenPaused);
      }
    };
    dispatch_async(dispatch_get_main_queue(), actWhenPaused);
    NSApp->runModalForWindow(consentDialog);
  }

  Strong<NSWindow> consentDialog =
      NSWindow::initWithContentRectStyleMask(CGRectMake(300, 300, 300, 200), kFullStyle);
};

TEST_F(X11Consent, ClosingTheDialogResumesTheCountdown) {
  present(5, kEmbedded);
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  runConsentDialog([this] { consentDialog->close(); });
  EXPECT_FALSE(launchScreen->appIsUnfocused());
  EXPECT_NE(launchScreen->launchScreenExpirationTimer(), nullptr);
  EXPECT_TRUE(runUntil([this] { return client.focusedWindow() == game && player->isKeyWindow(); }));
  // The window manager removes the dialog's frame some time later.
  EXPECT_TRUE(runUntil([this] { return client.screenPicture(game).isAll(kWhite); }));
  EXPECT_THAT(events, testing::IsEmpty());
  EXPECT_TRUE(
      runUntil([this] { return !events.empty() && client.screenPicture(game).isAll(kGameColor); }));
  EXPECT_THAT(events, testing::ElementsAre("launch_end"));
}

TEST_F(X11Consent, ActivatingAnotherProgramEndsTheModalSessionAndResumesTheCountdown) {
  present(600, kEmbedded);
  runConsentDialog([&] { client.focus(otherWindow); });
  EXPECT_EQ(NSApp->modalWindow(), nullptr);
  EXPECT_TRUE(consentDialog->isVisible());
  EXPECT_FALSE(launchScreen->appIsUnfocused());
  EXPECT_NE(launchScreen->launchScreenExpirationTimer(), nullptr);
}

}  // namespace
}  // namespace vel::test
