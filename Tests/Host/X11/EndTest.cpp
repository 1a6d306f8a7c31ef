// Without `--window`, `launchscreen show` opens a player window. The player window stays open for
// one second after the launch screen has closed. The test kills the X server during this second.
#include <gmock/gmock.h>

#include "Tests/Host/X11/ShowProcess.h"

namespace vel::test {
namespace {

TEST(X11ShowEnd, ShowPrintsOneLineIfTheDisplayIsLostAfterTheLaunchScreenHasClosed) {
  XServer server;
  ShowProcess show(server, {"--duration", "0.3", "--content-controller"});
  ASSERT_TRUE(show.waitForOutput("event recorded: launch_end\n")) << show.output();
  server.kill();
  EXPECT_EQ(show.wait(), 1);
  EXPECT_THAT(
      show.output(),
      testing::EndsWith(
          "launch_end\nlaunchscreen: the display is lost: the X11 display does not answer any "
          "more\n"));
}

}  // namespace
}  // namespace vel::test
