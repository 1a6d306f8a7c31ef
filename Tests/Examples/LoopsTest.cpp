// Examples that run without a display.
#include <gmock/gmock.h>

#include "Tests/Examples/HostProcess.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

class LoopExample : public testing::TestWithParam<const char*> {};

TEST_P(LoopExample, RunsTheLaunchScreenUntilTheEventIsRecorded) {
  HostProcess host({examplePath(GetParam())});
  EXPECT_EQ(host.wait(), 0);
  EXPECT_THAT(host.lines(), ElementsAre("will appear", "did disappear", "event launch_end"));
}

INSTANTIATE_TEST_SUITE_P(Examples, LoopExample, testing::Values("poll-loop", "glib", "sdl2"),
                         nameOfExample);

#ifdef VEL_PYTHON_CAN_LOAD_LIBRARY

TEST(PythonHost, PrintsEachCallbackWithoutADisplay) {
  HostProcess host(pythonHostCommand({"--seconds", "0.3"}));
  EXPECT_EQ(host.wait(), 0);
  // "state_changed 3" reports VEL_STATE_LOADED. "ended 1" reports VEL_END_TIME_USED_UP.
  EXPECT_THAT(host.lines(), ElementsAre("state_changed 3 None",
                                        "log_line LaunchScreenContent (-[LaunchScreenContent "
                                        "presentForWindow:withPresentationMode:]) mode: 0",
                                        "will_appear", "may_disappear", "did_disappear",
                                        "record_event launch_end", "ended 1"));
}

TEST(PythonHost, ExitsWithStatus1IfItsRequestIsRefused) {
  HostProcess host(pythonHostCommand({"--seconds", "0"}));
  EXPECT_EQ(host.wait(), 1);
}

#endif

}  // namespace
}  // namespace vel::test
