// Tests `HostLoop`, the event loop of `launchscreen show`. It runs the library's main run loop,
// reads the Enter key and receives signals.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string_view>

#include "Host/Show/HostLoop.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::host {
namespace {

bool hasDefaultAction(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL;
}

// The last signal that the test's signal handler received.
int handledSignal = 0;

/// Replaces the standard input of the process with a pipe that the test writes to.
class StandardInputPipe : private NonCopyable {
 public:
  StandardInputPipe() : previousInput_(dup(STDIN_FILENO)) {
    EXPECT_EQ(pipe(pipe_.data()), 0);
    dup2(pipe_[0], STDIN_FILENO);
    close(pipe_[0]);
  }
  ~StandardInputPipe() {
    closeWriteEnd();
    dup2(previousInput_, STDIN_FILENO);
    close(previousInput_);
  }

  void write(std::string_view text) const {
    EXPECT_EQ(::write(pipe_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void closeWriteEnd() {
    if (pipe_[1] >= 0) {
      close(pipe_[1]);
    }
    pipe_[1] = -1;
  }

 private:
  int previousInput_;
  std::array<int, 2> pipe_{-1, -1};
};

// `HostLoop` waits for descriptors, so these tests run in real time.
class HostLoopTest : public testing::Test {
 protected:
  HostLoopTest() { NSRunLoop::mainRunLoop().useRealTime(); }
  ~HostLoopTest() override { dispatch_get_main_queue().removeAll(); }

  // Returns a condition that ends the loop after `count` passes. Each call of the condition queues
  // work, which makes the loop run another pass.
  std::function<bool()> afterPasses(int count) {
    return [count]() mutable {
      dispatch_async(dispatch_get_main_queue(), [] {});
      return --count <= 0;
    };
  }

  static bool never() { return false; }
};

TEST_F(HostLoopTest, RunsTheMainQueueUntilTheConditionIsTrue) {
  HostLoop loop;
  bool isWorkDone = false;
  dispatch_async(dispatch_get_main_queue(), [&isWorkDone] {
    dispatch_async(dispatch_get_main_queue(), [&isWorkDone] { isWorkDone = true; });
  });
  EXPECT_EQ(loop.runUntil([&isWorkDone] { return isWorkDone; }), 0);
}

class HostLoopSignalTest : public HostLoopTest, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Termination, HostLoopSignalTest, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_P(HostLoopSignalTest, PendingSignalEndsRunUntil) {
  HostLoop loop;
  ASSERT_EQ(raise(GetParam()), 0);
  EXPECT_EQ(loop.runUntil(never), GetParam());
}

TEST_F(HostLoopTest, SignalDuringAPassEndsRunUntil) {
  HostLoop loop;
  dispatch_async(dispatch_get_main_queue(), [] { raise(SIGTERM); });
  EXPECT_EQ(loop.runUntil(never), SIGTERM);
}

TEST_F(HostLoopTest, ABlockedSignalEndsRunUntilAndIsBlockedAgainAfterTheLoop) {
  sigset_t blockedSignals{};
  sigemptyset(&blockedSignals);
  sigaddset(&blockedSignals, SIGTERM);
  sigset_t previousMask{};
  pthread_sigmask(SIG_BLOCK, &blockedSignals, &previousMask);
  {
    HostLoop loop;
    raise(SIGTERM);
    EXPECT_EQ(loop.runUntil(never), SIGTERM);
  }
  sigset_t maskAfterLoop{};
  pthread_sigmask(SIG_SETMASK, &previousMask, &maskAfterLoop);
  EXPECT_EQ(sigismember(&maskAfterLoop, SIGTERM), 1);
}

TEST_F(HostLoopTest, SignalActionsAreRestored) {
  {
    const HostLoop loop;
    EXPECT_FALSE(hasDefaultAction(SIGINT));
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    EXPECT_TRUE(hasDefaultAction(signal)) << signal;
  }
}

TEST_F(HostLoopTest, DestructorRaisesASignalAgainIfTheLoopDidNotRun) {
  struct sigaction previousAction {};
  struct sigaction handlingAction {};
  handlingAction.sa_handler = [](int signal) { handledSignal = signal; };
  sigaction(SIGTERM, &handlingAction, &previousAction);
  {
    const HostLoop loop;
    raise(SIGTERM);
    EXPECT_EQ(handledSignal, 0);
  }
  EXPECT_EQ(handledSignal, SIGTERM);
  sigaction(SIGTERM, &previousAction, nullptr);
}

TEST_F(HostLoopTest, IgnoredHangUpSignalStaysIgnored) {
  struct sigaction previousAction {};
  struct sigaction ignoreAction {};
  ignoreAction.sa_handler = SIG_IGN;
  sigaction(SIGHUP, &ignoreAction, &previousAction);
  {
    HostLoop loop;
    raise(SIGHUP);
    EXPECT_EQ(loop.runUntil(afterPasses(3)), 0);
  }
  sigaction(SIGHUP, &previousAction, nullptr);
}

TEST_F(HostLoopTest, WriteToAClosedPipeDoesNotEndTheProcess) {
  std::array<int, 2> pipeEnds{};
  ASSERT_EQ(pipe(pipeEnds.data()), 0);
  close(pipeEnds[0]);
  const HostLoop loop;
  EXPECT_EQ(write(pipeEnds[1], "x", 1), -1);
  close(pipeEnds[1]);
}

TEST_F(HostLoopTest, EnterCallsTheHandler) {
  const StandardInputPipe input;
  HostLoop loop;
  bool wasHandlerCalled = false;
  loop.setEnterHandler([&wasHandlerCalled] { wasHandlerCalled = true; });
  input.write("\n");
  EXPECT_EQ(loop.runUntil([&wasHandlerCalled] { return wasHandlerCalled; }), 0);
}

TEST_F(HostLoopTest, InputWithoutALineFeedDoesNotCallTheEnterHandler) {
  const StandardInputPipe input;
  HostLoop loop;
  int enterCount = 0;
  loop.setEnterHandler([&enterCount] { ++enterCount; });
  input.write("q");
  EXPECT_EQ(loop.runUntil(afterPasses(5)), 0);
  EXPECT_EQ(enterCount, 0);
  input.write("\n");
  EXPECT_EQ(loop.runUntil(afterPasses(5)), 0);
  EXPECT_EQ(enterCount, 1);
}

TEST_F(HostLoopTest, ClosedInputDoesNotKeepTheLoopBusy) {
  StandardInputPipe input;
  HostLoop loop;
  bool wasHandlerCalled = false;
  loop.setEnterHandler([&wasHandlerCalled] { wasHandlerCalled = true; });
  input.closeWriteEnd();
  bool isTimeUp = false;
  int passCount = 0;
  dispatch_after(dispatch_time(kDispatchTimeNow, kNanosecondsPerSecond / 100),
                 dispatch_get_main_queue(), [&isTimeUp] { isTimeUp = true; });
  EXPECT_EQ(loop.runUntil([&] {
    ++passCount;
    return isTimeUp;
  }),
            0);
  EXPECT_FALSE(wasHandlerCalled);
  EXPECT_LE(passCount, 5);
}

TEST_F(HostLoopTest, InputIsNotReadWithoutAnEnterHandler) {
  const StandardInputPipe input;
  input.write("x\n");
  HostLoop loop;
  EXPECT_EQ(loop.runUntil(afterPasses(5)), 0);
  std::array<char, 8> unreadInput{};
  EXPECT_EQ(read(STDIN_FILENO, unreadInput.data(), unreadInput.size()), 2);
}

}  // namespace
}  // namespace vel::host
