#include "Platform/WindowSystem/X11/BrokenPipeGuard.h"

#include <csignal>
#include <ctime>

namespace vel::x11 {

namespace {

sigset_t brokenPipeSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  return signals;
}

}  // namespace

BrokenPipeGuard::BrokenPipeGuard() {
  const sigset_t signals = brokenPipeSignal();
  sigset_t previousMask;
  pthread_sigmask(SIG_BLOCK, &signals, &previousMask);
  hasBlockedSignal_ = sigismember(&previousMask, SIGPIPE) == 0;
}

// A pending SIGPIPE must be removed before the signal is unblocked, or it would end the process. If
// the signal was blocked before this guard existed, the host may have raised the pending SIGPIPE.
// The guard then leaves the signal pending.
BrokenPipeGuard::~BrokenPipeGuard() {
  if (hasBlockedSignal_) {
    const sigset_t signals = brokenPipeSignal();
    constexpr timespec kNoWait{};
    sigtimedwait(&signals, nullptr, &kNoWait);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  }
}

}  // namespace vel::x11
