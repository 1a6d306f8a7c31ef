// The host loop on POSIX systems.
#include "Host/Show/HostLoop.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "Platform/Foundation/NSRunLoop.h"

namespace vel::host {

namespace {

constexpr std::array kTerminationSignals = {SIGINT, SIGTERM, SIGHUP};

// Global, because the signal handler needs the descriptor.
std::atomic<int> signalPipeWriteEnd = -1;
static_assert(std::atomic<int>::is_always_lock_free);  // a signal handler must not take a lock

extern "C" void writeSignalToPipe(int signal) {
  const int previousError = errno;
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const auto size = write(signalPipeWriteEnd, &byte, 1);
  errno = previousError;
}

}  // namespace

/// A pipe to which the signal handler writes the number of each termination signal. The constructor
/// installs the handler, unblocks these signals and ignores SIGPIPE. The destructor restores the
/// previous signal actions and the previous signal mask.
class HostLoop::SignalPipe : private NonCopyable {
 public:
  SignalPipe() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) < 0) {
      throw std::system_error(errno, std::generic_category(), "pipe");
    }
    for (const int end : ends) {
      fcntl(end, F_SETFD, FD_CLOEXEC);
      fcntl(end, F_SETFL, O_NONBLOCK);
    }
    readEnd_ = ends[0];
    signalPipeWriteEnd = ends[1];

    sigset_t handledSignals{};
    sigemptyset(&handledSignals);
    for (std::size_t index = 0; index < kTerminationSignals.size(); ++index) {
      const int signal = kTerminationSignals[index];
      sigaction(signal, nullptr, &previousActions_[index]);
      // A program that `nohup` has started must keep ignoring SIGHUP.
      if (signal != SIGHUP || previousActions_[index].sa_handler != SIG_IGN) {
        setHandler(signal, writeSignalToPipe);
        sigaddset(&handledSignals, signal);
      }
    }
    pthread_sigmask(SIG_UNBLOCK, &handledSignals, &previousMask_);
    // Writing to a program that has exited raises SIGPIPE. The signal would end this process before
    // it restores the window under the launch screen.
    sigaction(SIGPIPE, nullptr, &previousSigpipeAction_);
    setHandler(SIGPIPE, SIG_IGN);
  }

  ~SignalPipe() {
    sigaction(SIGPIPE, &previousSigpipeAction_, nullptr);
    pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
    for (std::size_t index = 0; index < kTerminationSignals.size(); ++index) {
      sigaction(kTerminationSignals[index], &previousActions_[index], nullptr);
    }
    close(signalPipeWriteEnd.exchange(-1));
    // A signal that `runUntil` has not read must not be lost: the restored action handles it.
    while (const int signal = readSignal()) {
      raise(signal);
    }
    close(readEnd_);
  }

  /// The descriptor that becomes readable after a signal.
  [[nodiscard]] int readEnd() const { return readEnd_; }

  /// Returns the number of the oldest unread signal. Returns 0 if no signal is unread.
  [[nodiscard]] int readSignal() const {
    unsigned char signal = 0;
    return read(readEnd_, &signal, 1) == 1 ? signal : 0;
  }

 private:
  static void setHandler(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
  }

  int readEnd_ = -1;
  std::array<struct sigaction, kTerminationSignals.size()> previousActions_{};
  struct sigaction previousSigpipeAction_ {};
  sigset_t previousMask_{};
};

HostLoop::HostLoop() : signalPipe_(std::make_unique<SignalPipe>()) {}

HostLoop::~HostLoop() = default;

int HostLoop::runUntil(const std::function<bool()>& isDone) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (;;) {
    loop.pump();
    if (isDone()) {
      return 0;
    }
    // Without a handler, the loop must not read the input. `poll` ignores a negative descriptor.
    std::array<pollfd, 3> sources{{{loop.waitHandle().descriptor(), POLLIN, 0},
                                   {signalPipe_->readEnd(), POLLIN, 0},
                                   {enterHandler_ ? STDIN_FILENO : -1, POLLIN, 0}}};
    if (poll(sources.data(), sources.size(), -1) < 0) {
      continue;  // interrupted by a signal
    }
    if (sources[1].revents != 0) {
      if (const int signal = signalPipe_->readSignal()) {
        return signal;
      }
    }
    if (sources[2].revents != 0) {
      readInput();
    }
  }
}

void HostLoop::readInput() {
  // Reading the terminal from a background job would suspend the process. If the input is not our
  // controlling terminal, `tcgetpgrp` returns a negative value.
  const pid_t foregroundGroup = tcgetpgrp(STDIN_FILENO);
  if (foregroundGroup >= 0 && foregroundGroup != getpgrp()) {
    enterHandler_ = nullptr;  // stops reading the input
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
