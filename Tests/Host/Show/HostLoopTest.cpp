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

bool isBlocked(int signal) {
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  return sigismember(&blocked, signal) == 1;
}

/// Replaces the standard input of the process by a pipe that the test writes to.
class Input : private NonCopyable {
 public:
  Input() : previousInput_(dup(STDIN_FILENO)) {
    EXPECT_EQ(pipe(pipe_.data()), 0);
    dup2(pipe_[0], STDIN_FILENO);
    close(pipe_[0]);
  }
  ~Input() {
    end();
    dup2(previousInput_, STDIN_FILENO);
    close(previousInput_);
  }

  void write(std::string_view text) const {
    EXPECT_EQ(::write(pipe_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void end() {
    if (pipe_[1] >= 0) {
      close(pipe_[1]);
    }
    pipe_[1] = -1;
  }

 private:
  int previousInput_;
  std::array<int, 2> pipe_{-1, -1};
};

// The loop waits for descriptors, so it runs in real time.
class HostLoopTest : public testing::Test {
 protected:
  HostLoopTest() { NSRunLoop::mainRunLoop().useRealTime(); }
  ~HostLoopTest() override { dispatch_get_main_queue().removeAll(); }

  // Returns a condition that ends the loop after `count` passes. Each call wakes the loop for
  // another pass.
  std::function<bool()> afterPasses(int count) {
    return [count]() mutable {
      dispatch_async(dispatch_get_main_queue(), [] {});
      return --count <= 0;
    };
  }

  static bool never() { return false; }
};

TEST_F(HostLoopTest, RunsTheMainLoopUntilDone) {
  HostLoop loop;
  bool done = false;
  dispatch_async(dispatch_get_main_queue(),
                 [&done] { dispatch_async(dispatch_get_main_queue(), [&done] { done = true; }); });
  EXPECT_EQ(loop.runUntil([&done] { return done; }), 0);
}

class HostLoopSignalTest : public HostLoopTest, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Termination, HostLoopSignalTest, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_P(HostLoopSignalTest, EndsTheLoop) {
  HostLoop loop;
  ASSERT_EQ(raise(GetParam()), 0);
  EXPECT_EQ(loop.runUntil(never), GetParam());
}

TEST_F(HostLoopTest, SignalWhileTheLoopRunsEndsIt) {
  HostLoop loop;
  dispatch_async(dispatch_get_main_queue(), [] { raise(SIGTERM); });
  EXPECT_EQ(loop.runUntil(never), SIGTERM);
}

TEST_F(HostLoopTest, SignalMaskIsRestored) {
  {
    const HostLoop loop;
    EXPECT_TRUE(isBlocked(SIGINT));
  }
  EXPECT_FALSE(isBlocked(SIGINT));
  EXPECT_FALSE(isBlocked(SIGTERM));
  EXPECT_FALSE(isBlocked(SIGHUP));
}

TEST_F(HostLoopTest, IgnoredHangUpSignalStaysIgnored) {
  struct sigaction before {};
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGHUP, &ignore, &before);
  {
    HostLoop loop;
    raise(SIGHUP);
    EXPECT_EQ(loop.runUntil(afterPasses(3)), 0);
  }
  sigaction(SIGHUP, &before, nullptr);
}

TEST_F(HostLoopTest, ClosedPipeDoesNotEndTheProcess) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  close(ends[0]);
  const HostLoop loop;
  EXPECT_EQ(write(ends[1], "x", 1), -1);
  close(ends[1]);
}

TEST_F(HostLoopTest, EnterIsReported) {
  const Input input;
  HostLoop loop;
  bool entered = false;
  loop.onEnter([&entered] { entered = true; });
  input.write("\n");
  EXPECT_EQ(loop.runUntil([&entered] { return entered; }), 0);
}

TEST_F(HostLoopTest, OtherKeysAreNotEnter) {
  const Input input;
  HostLoop loop;
  int entered = 0;
  loop.onEnter([&entered] { ++entered; });
  input.write("q");
  EXPECT_EQ(loop.runUntil(afterPasses(5)), 0);
  EXPECT_EQ(entered, 0);
  input.write("\n");
  EXPECT_EQ(loop.runUntil(afterPasses(5)), 0);
  EXPECT_EQ(entered, 1);
}

TEST_F(HostLoopTest, EndOfInputIsNotEnterAndDoesNotWakeTheLoop) {
  Input input;
  HostLoop loop;
  bool entered = false;
  loop.onEnter([&entered] { entered = true; });
  input.end();
  bool reached = false;
  int passes = 0;
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC / 100), dispatch_get_main_queue(),
                 [&reached] { reached = true; });
  EXPECT_EQ(loop.runUntil([&] {
    ++passes;
    return reached;
  }),
            0);
  EXPECT_FALSE(entered);
  EXPECT_LE(passes, 5);
}

TEST_F(HostLoopTest, InputIsNotReadWithoutAHandler) {
  const Input input;
  input.write("x\n");
  HostLoop loop;
  EXPECT_EQ(loop.runUntil(afterPasses(5)), 0);
  std::array<char, 8> left{};
  EXPECT_EQ(read(STDIN_FILENO, left.data(), left.size()), 2);
}

}  // namespace
}  // namespace vel::host
