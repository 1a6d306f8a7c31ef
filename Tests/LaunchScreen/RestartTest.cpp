// Stopping the application while a launch screen is shown, and showing another after a restart.
#include <memory>

#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

class RestartTest : public LaunchScreenTest {
 protected:
  // Shows a launch screen that is a tracked cover, and then stops the application. A tracked cover
  // is an embedded launch screen without a parent view controller. Global variables own the cover
  // (EmbeddedCover.h). Returns the cover's view controller.
  Weak<LaunchScreenViewController> showTrackedCoverAndStop() {
    load(1);
    present(openPlayerWindow(), kHostModeEmbedded);
    const Weak<LaunchScreenViewController> cover = controller();
    EXPECT_TRUE(hasTrackedCover());
    NSApplication::stop();
    return cover;
  }
  void startWithNewManager() {
    NSApplication::start(std::make_unique<HeadlessWindowSystem>());
    manager = LaunchScreenManager::init();
  }
};

TEST_F(RestartTest, StoppingReleasesTheTrackedCover) {
  const auto cover = showTrackedCoverAndStop();
  EXPECT_FALSE(hasTrackedCover());
  manager = nullptr;
  EXPECT_TRUE(cover.expired());
}

TEST_F(RestartTest, ALaunchScreenShownAfterARestartEndsIfItHasAParentViewController) {
  showTrackedCoverAndStop();
  startWithNewManager();
  const auto window = openPlayerWindowWithContentViewController();
  load(1);
  present(window, kHostModeEmbedded);
  const auto cover = controller();
  EXPECT_EQ(window->styleMask(), NSWindowStyleMaskTitled);
  platform.run(1.5);
  EXPECT_EQ(window->styleMask(), kFullStyle);
  EXPECT_FALSE(cover->isShown());
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
