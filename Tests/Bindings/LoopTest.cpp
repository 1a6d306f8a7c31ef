// Tests of vel_pump, vel_run, vel_poll_descriptor and vel_next_deadline.
#include <poll.h>

#include <chrono>
#include <cmath>
#include <limits>

#include "Tests/Bindings/CScreen.h"

namespace vel::test {
namespace {

/// Creates a launch screen that uses real time instead of virtual time.
class CLoopTest : public CBindingTest {
 protected:
  CLoopTest() {
    VelCreateOptions options = virtualTimeOptions(&callbacks);
    options.time = VEL_TIME_REAL;
    createAgain(options);
    EXPECT_EQ(vel_poll_descriptor(screen, &descriptor), VEL_OK);
  }

  /// Returns true if the descriptor becomes readable within `milliseconds`.
  [[nodiscard]] bool becomesReadable(int milliseconds) const {
    pollfd pollEntry{.fd = descriptor, .events = POLLIN, .revents = 0};
    return poll(&pollEntry, 1, milliseconds) == 1;
  }
  void pumpUntilIdle() const {
    for (int hasDoneWork = 1; hasDoneWork != 0;) {
      ASSERT_EQ(vel_pump(screen, &hasDoneWork), VEL_OK);
    }
  }
  [[nodiscard]] double nextDeadline() const {
    double seconds = -1000;
    EXPECT_EQ(vel_next_deadline(screen, &seconds), VEL_OK);
    return seconds;
  }

  int descriptor = -1;
};

TEST_F(CLoopTest, AnIdleLoopHasNoDeadline) {
  pumpUntilIdle();
  EXPECT_EQ(nextDeadline(), -1);
  EXPECT_FALSE(becomesReadable(0));
}

TEST_F(CLoopTest, ThePollDescriptorBecomesReadableAtTheNextDeadline) {
  present(VEL_PRESENT_EMBEDDED, 60);
  pumpUntilIdle();
  const double deadline = nextDeadline();
  EXPECT_GT(deadline, 0);
  EXPECT_LE(deadline, 0.1);  // the countdown ticks every 0.1 s
  EXPECT_FALSE(becomesReadable(0));
  EXPECT_TRUE(becomesReadable(10'000));
  EXPECT_EQ(nextDeadline(), 0);
  int hasDoneWork = 0;
  EXPECT_EQ(vel_pump(screen, &hasDoneWork), VEL_OK);
  EXPECT_EQ(hasDoneWork, 1);
  EXPECT_LT(secondsLeft(), 60);
}

// A host may poll after vel_present() without calling vel_pump() first.
TEST_F(CLoopTest, VelPresentUpdatesThePollDescriptor) {
  present(VEL_PRESENT_EMBEDDED, 60);
  EXPECT_TRUE(becomesReadable(10'000));
}

TEST_F(CLoopTest, ThePollDescriptorNeverChanges) {
  present(VEL_PRESENT_EMBEDDED, 0.1);
  for (int pass = 0; pass < 10; ++pass) {
    ASSERT_EQ(vel_pump(screen, nullptr), VEL_OK);
    int currentDescriptor = -1;
    ASSERT_EQ(vel_poll_descriptor(screen, &currentDescriptor), VEL_OK);
    EXPECT_EQ(currentDescriptor, descriptor);
  }
}

TEST_F(CLoopTest, AHostLoopWithPollRecordsTheEvent) {
  present(VEL_PRESENT_EMBEDDED, 0.2);
  while (host.callbackLines.back() != "record_event launch_end") {
    ASSERT_TRUE(becomesReadable(10'000));
    ASSERT_EQ(vel_pump(screen, nullptr), VEL_OK);
  }
}

TEST_F(CLoopTest, VelPumpNeverWaits) {
  present(VEL_PRESENT_EMBEDDED, 60);
  const auto startTime = std::chrono::steady_clock::now();
  for (int pass = 0; pass < 100; ++pass) {
    ASSERT_EQ(vel_pump(screen, nullptr), VEL_OK);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - startTime, std::chrono::seconds(1));
  EXPECT_GT(secondsLeft(), 50);
}

TEST_F(CLoopTest, VelRunTakesAtLeastTheGivenTime) {
  const auto startTime = std::chrono::steady_clock::now();
  EXPECT_EQ(vel_run(screen, 0.02), VEL_OK);
  EXPECT_GE(std::chrono::steady_clock::now() - startTime, std::chrono::milliseconds(20));
}

using CVirtualLoopTest = CBindingTest;

TEST_F(CVirtualLoopTest, VirtualTimeHasNoPollDescriptor) {
  int descriptor = 0;
  EXPECT_EQ(vel_poll_descriptor(screen, &descriptor), VEL_OK);
  EXPECT_EQ(descriptor, -1);
}

TEST_F(CVirtualLoopTest, VelPumpDoesNotAdvanceVirtualTime) {
  present(VEL_PRESENT_EMBEDDED, 1);
  for (int pass = 0; pass < 100; ++pass) {
    ASSERT_EQ(vel_pump(screen, nullptr), VEL_OK);
  }
  EXPECT_EQ(secondsLeft(), 1);
  double seconds = -1000;
  EXPECT_EQ(vel_next_deadline(screen, &seconds), VEL_OK);
  EXPECT_EQ(seconds, 0.1);
}

TEST_F(CVirtualLoopTest, VelRunAcceptsZeroToABillionSeconds) {
  for (const double seconds :
       {-1.0, 1.1e9, std::numeric_limits<double>::infinity(), std::nan("")}) {
    EXPECT_EQ(vel_run(screen, seconds), VEL_INVALID_ARGUMENT) << seconds;
  }
  EXPECT_EQ(vel_run(screen, 1e9), VEL_OK);
  EXPECT_EQ(vel_run(screen, 0), VEL_OK);
}

TEST_F(CVirtualLoopTest, VirtualTimeEndsAfterNineBillionSeconds) {
  for (int run = 0; run < 9; ++run) {
    ASSERT_EQ(vel_run(screen, 1e9), VEL_OK) << run;
  }
  EXPECT_EQ(vel_run(screen, 1e9), VEL_INVALID_ARGUMENT);
  EXPECT_STREQ(vel_last_error(), "virtual time ends after 9000000000 seconds");
  EXPECT_EQ(vel_run(screen, 0), VEL_OK);
  // A launch screen can still be shown, but its countdown does not advance.
  present(VEL_PRESENT_MODAL, 1);
  EXPECT_EQ(vel_run(screen, 0.5), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(secondsLeft(), 1);
}

}  // namespace
}  // namespace vel::test
