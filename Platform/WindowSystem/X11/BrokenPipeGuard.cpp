#include "Platform/WindowSystem/X11/BrokenPipeGuard.h"

#include <csignal>
#include <ctime>

namespace vel::x11 {

namespace {

sigset_t brokenPipeSignalSet() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  return signals;
}

}  // namespace

BrokenPipeGuard::BrokenPipeGuard() {
  const sigset_t signals = brokenPipeSignalSet();
  sigset_t previousMask;
  pthread_sigmask(SIG_BLOCK, &signals, &previousMask);
  hasBlockedSignal_ = sigismember(&previousMask, SIGPIPE) == 0;
}

// Does nothing if SIGPIPE was already blocked before the guard: a pending SIGPIPE may then come
// from other code of this process.
BrokenPipeGuard::~BrokenPipeGuard() {
  if (hasBlockedSignal_) {
    const sigset_t signals = brokenPipeSignalSet();
    constexpr timespec kNoWait{};
    // Removes a pending SIGPIPE, which would end the process when the signal is unblocked.
    sigtimedwait(&signals, nullptr, &kNoWait);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  }
}

}  // namespace vel::x11
