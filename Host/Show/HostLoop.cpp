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
  sigemptyset(&taken_);
  sigaddset(&taken_, SIGINT);
  sigaddset(&taken_, SIGTERM);
  if (!isIgnored(SIGHUP)) {  // as under nohup
    sigaddset(&taken_, SIGHUP);
  }
  pthread_sigmask(SIG_BLOCK, &taken_, &before_);
  signals_ = signalfd(-1, &taken_, SFD_CLOEXEC | SFD_NONBLOCK);
  if (signals_ < 0) {
    const int reason = errno;
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    throw std::system_error(reason, std::generic_category(), "signalfd");
  }
  // Whoever reads our output may go; the window has to be given back all the same.
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &pipeBefore_);
}

HostLoop::~HostLoop() {
  sigaction(SIGPIPE, &pipeBefore_, nullptr);
  close(signals_);
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

int HostLoop::runUntil(const std::function<bool()>& done) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (;;) {
    loop.pump();
    if (done()) {
      return 0;
    }
    // A descriptor below 0 is passed over.
    std::array<pollfd, 3> sources{{{loop.descriptor(), POLLIN, 0},
                                   {signals_, POLLIN, 0},
                                   {entered_ ? STDIN_FILENO : -1, POLLIN, 0}}};
    if (poll(sources.data(), sources.size(), -1) < 0) {
      continue;  // interrupted: look again
    }
    signalfd_siginfo signal{};
    if (sources[1].revents != 0 && read(signals_, &signal, sizeof signal) == sizeof signal) {
      return static_cast<int>(signal.ssi_signo);
    }
    if (sources[2].revents != 0) {
      readInput();
    }
  }
}

void HostLoop::readInput() {
  // In the background of a terminal there is nothing for us to read, and to try would stop us.
  const pid_t foreground = tcgetpgrp(STDIN_FILENO);  // below 0 where it is not our terminal
  if (foreground >= 0 && foreground != getpgrp()) {
    entered_ = nullptr;
    return;
  }
  std::array<char, 256> input{};
  const ssize_t size = read(STDIN_FILENO, input.data(), input.size());
  if (size <= 0) {  // its end, or a fault
    entered_ = nullptr;
    return;
  }
  if (std::find(input.data(), input.data() + size, '\n') != input.data() + size) {
    entered_();
  }
}

}  // namespace vel::host
