// `launchscreen show` without `--window` keeps its player window open for a while after the launch
// screen. The display is lost during this time.
#include <gmock/gmock.h>

#include "Tests/Host/X11/ShowProcess.h"

namespace vel::test {
namespace {

TEST(X11ShowEnd, ADisplayLostAfterTheEventPrintsOneLine) {
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
