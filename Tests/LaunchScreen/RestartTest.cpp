// Stopping the application while a launch screen is shown, and showing another launch screen after
// a restart. The cover is the launch screen's view. A tracked cover is embedded in a window without
// a content view controller. Global variables own the tracked cover and its controller
// (EmbeddedCover.h).
#include <memory>

#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

class RestartTest : public LaunchScreenTest {
 protected:
  // Shows a tracked cover and stops the application. Returns the controller of the cover.
  Weak<LaunchScreenViewController> showTrackedCoverAndStop() {
    load(1);
    present(openPlayerWindow(), kHostModeEmbedded);
    const Weak<LaunchScreenViewController> coverController = controller();
    EXPECT_TRUE(hasTrackedCover());
    NSApplication::stop();
    return coverController;
  }
  void startWithNewManager() {
    NSApplication::start(std::make_unique<HeadlessWindowSystem>());
    manager = LaunchScreenManager::init();
  }
};

TEST_F(RestartTest, StoppingReleasesTheTrackedCover) {
  const auto coverController = showTrackedCoverAndStop();
  EXPECT_FALSE(hasTrackedCover());
  manager = nullptr;
  EXPECT_TRUE(coverController.expired());
}

TEST_F(RestartTest, AnUntrackedCoverShownAfterARestartEnds) {
  showTrackedCoverAndStop();
  startWithNewManager();
  const auto window = openPlayerWindowWithContentViewController();
  load(1);
  present(window, kHostModeEmbedded);
  const auto coverController = controller();
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  platform.run(1.5);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_FALSE(coverController->isShown());
}

TEST_F(RestartTest, ATrackedCoverShownAfterARestartEnds) {
  showTrackedCoverAndStop();
  platform.events.clear();
  startWithNewManager();
  const auto window = openPlayerWindow();
  load(1);
  present(window, kHostModeEmbedded);
  platform.run(5);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_FALSE(hasTrackedCover());
  EXPECT_EQ(platform.events.size(), 1u);
}

}  // namespace
}  // namespace vel::test
