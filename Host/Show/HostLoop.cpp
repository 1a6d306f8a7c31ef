#include "Host/Show/HostLoop.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "Platform/Foundation/NSRunLoop.h"

namespace vel::host {

namespace {

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

HostLoop::HostLoop() {
  sigemptyset(&receivedSignals_);
  sigaddset(&receivedSignals_, SIGINT);
  sigaddset(&receivedSignals_, SIGTERM);
  if (!isIgnored(SIGHUP)) {  // nohup makes its command ignore SIGHUP
    sigaddset(&receivedSignals_, SIGHUP);
  }
  pthread_sigmask(SIG_BLOCK, &receivedSignals_, &previousMask_);
  signalDescriptor_ = signalfd(-1, &receivedSignals_, SFD_CLOEXEC | SFD_NONBLOCK);
  if (signalDescriptor_ < 0) {
    const int reason = errno;
    pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
    throw std::system_error(reason, std::generic_category(), "signalfd");
  }
  // The program that reads our output may exit. SIGPIPE must not end our process before the window
  // is restored.
  struct sigaction ignoreAction {};
  ignoreAction.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignoreAction, &previousPipeAction_);
}

HostLoop::~HostLoop() {
  sigaction(SIGPIPE, &previousPipeAction_, nullptr);
  close(signalDescriptor_);
  pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
}

int HostLoop::runUntil(const std::function<bool()>& isDone) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (;;) {
    loop.pump();
    if (isDone()) {
      return 0;
    }
    // `poll` ignores a negative descriptor.
    std::array<pollfd, 3> sources{{{loop.descriptor(), POLLIN, 0},
                                   {signalDescriptor_, POLLIN, 0},
                                   {enterHandler_ ? STDIN_FILENO : -1, POLLIN, 0}}};
    if (poll(sources.data(), sources.size(), -1) < 0) {
      continue;  // interrupted by a signal
    }
    signalfd_siginfo signal{};
    if (sources[1].revents != 0 &&
        read(signalDescriptor_, &signal, sizeof signal) == sizeof signal) {
      return static_cast<int>(signal.ssi_signo);
    }
    if (sources[2].revents != 0) {
      readInput();
    }
  }
}

void HostLoop::readInput() {
  // Reading the terminal from a background job would stop the process. `tcgetpgrp` returns a
  // negative value if the input is not our controlling terminal.
  const pid_t foregroundGroup = tcgetpgrp(STDIN_FILENO);
  if (foregroundGroup >= 0 && foregroundGroup != getpgrp()) {
    enterHandler_ = nullptr;
    return;
  }
  std::array<char, 256> input{};
  const ssize_t size = read(STDIN_FILENO, input.data(), input.size());
  if (size <= 0) {  // end of input, or an error
    enterHandler_ = nullptr;
    return;
  }
  if (std::find(input.data(), input.data() + size, '\n') != input.data() + size) {
    enterHandler_();
  }
}

}  // namespace vel::host
