// A complete run leaves no resources on the X server.
#include <gmock/gmock.h>

#include <array>
#include <map>

#include "Platform/Dispatch/Dispatch.h"
#include "Tests/LaunchScreen/X11/X11HostTest.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class X11Resources : public X11HostTest, public testing::WithParamInterface<std::int32_t> {
 protected:
  /// Requests and presents a launch screen with an indicator, and waits until it has ended and the
  /// main queue is empty.
  void runOnce() {
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
  std::map<std::string, unsigned> resources() {
    while (NSRunLoop::mainRunLoop().pump()) {
    }
    return client.clientResourceCounts(idOf(ownWindow->handle()));
  }

  // A window of the host. `clientResourceCounts` finds the host's connection by this window.
  Strong<NSWindow> ownWindow = NSWindow::initWithContentRectStyleMask(CGRectMake(0, 0, 10, 10), 0);
};

TEST_P(X11Resources, ARunLeavesNoResourcesOnTheServer) {
  // The X window of `ownWindow` exists only after `ownWindow` is shown.
  ownWindow->makeKeyAndOrderFront();
  ASSERT_TRUE(runUntil([this] { return ownWindow->isKeyWindow(); }));
  player->makeKeyWindow();
  ASSERT_TRUE(runUntil([this] { return player->isKeyWindow(); }));
  const auto resourcesBefore = resources();
  ASSERT_FALSE(resourcesBefore.empty());
  runOnce();
  runOnce();
  EXPECT_EQ(resources(), resourcesBefore);
  // The log contains only the host mode of each presentation.
  EXPECT_THAT(log, ElementsAre(HasSubstr("mode: "), HasSubstr("mode: ")));
}

std::string nameOfMode(const testing::TestParamInfo<std::int32_t>& testInfo) {
  constexpr std::array<const char*, 3> kNames{"Embedded", "Sheet", "Modal"};
  return kNames.at(static_cast<std::size_t>(testInfo.param));
}

INSTANTIATE_TEST_SUITE_P(X11, X11Resources, testing::Values(0, 1, 2), nameOfMode);

}  // namespace
}  // namespace vel::test
