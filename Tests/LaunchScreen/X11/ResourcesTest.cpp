// A launch screen that has ended leaves no resources on the X server.
#include <gmock/gmock.h>

#include <array>
#include <map>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/LaunchScreen/X11/X11HostTest.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// The test parameter is the host mode of the launch screen.
class X11Resources : public X11HostTest, public testing::WithParamInterface<std::int32_t> {
 protected:
  // Presents a launch screen with an indicator. Waits until the launch screen has ended and the
  // main queue is empty.
  void presentUntilEnd() {
    events.clear();
    hasIndicator = true;
    const auto childrenBefore = client.children(game);
    present(0.1, GetParam());
    EXPECT_TRUE(runUntil([&] {
      return !events.empty() && client.children(game) == childrenBefore && player->isKeyWindow() &&
             dispatch_get_main_queue().pendingWorkCount() == 0;
    }));
    EXPECT_THAT(events, ElementsAre("launch_end"));
    launchScreen->deactivate();
    launchScreen = nullptr;
  }
  // The number of the host's X resources, by resource type.
  std::map<std::string, unsigned> resourceCounts() {
    while (NSRunLoop::mainRunLoop().pump()) {
    }
    return client.clientResourceCounts(idOf(ownWindow->handle()));
  }

  // A window that the host creates. `clientResourceCounts` identifies the host by this window.
  Strong<NSWindow> ownWindow = NSWindow::initWithContentRectStyleMask(CGRectMake(0, 0, 10, 10), 0);
};

TEST_P(X11Resources, ALaunchScreenLeavesNoResourcesOnTheServer) {
  // `ownWindow` has no X window until it is shown.
  ownWindow->makeKeyAndOrderFront();
  ASSERT_TRUE(runUntil([this] { return ownWindow->isKeyWindow(); }));
  // `player` is the window that the launch screens cover.
  player->makeKeyWindow();
  ASSERT_TRUE(runUntil([this] { return player->isKeyWindow(); }));
  const auto countsBefore = resourceCounts();
  ASSERT_FALSE(countsBefore.empty());
  presentUntilEnd();
  presentUntilEnd();
  EXPECT_EQ(resourceCounts(), countsBefore);
  // Each presentation logs its host mode and nothing else.
  EXPECT_THAT(log, ElementsAre(HasSubstr("mode: "), HasSubstr("mode: ")));
}

std::string nameOfMode(const testing::TestParamInfo<std::int32_t>& testInfo) {
  constexpr std::array<const char*, 3> kNames{"Embedded", "Sheet", "Modal"};
  return kNames.at(static_cast<std::size_t>(testInfo.param));
}

INSTANTIATE_TEST_SUITE_P(X11, X11Resources, testing::Values(0, 1, 2), nameOfMode);

}  // namespace
}  // namespace vel::test
