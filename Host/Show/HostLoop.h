#pragma once

#include <csignal>
#include <functional>
#include <utility>

namespace vel::host {

/// Drives the main run loop the way a program with a loop of its own does: it waits on the loop's
/// descriptor together with what else concerns it, here the signals that end the program and the
/// user's Enter, and calls `pump` when there is something to do. Nothing is polled for.
///
/// From its making to its end, SIGINT, SIGTERM and SIGHUP are taken by the loop, and writing to a
/// closed pipe does not end the process. Main thread, and before any other is started.
class HostLoop {
 public:
  HostLoop();
  HostLoop(const HostLoop&) = delete;
  HostLoop& operator=(const HostLoop&) = delete;
  HostLoop(HostLoop&&) = delete;
  HostLoop& operator=(HostLoop&&) = delete;
  ~HostLoop();

  /// Has `entered` called at each Enter on the standard input, as long as that can be read.
  void onEnter(std::function<void()> entered) { entered_ = std::move(entered); }

  /// Runs until `done`, asked after each pass, answers true, or until a signal arrives. Answers the
  /// signal's number, else 0.
  int runUntil(const std::function<bool()>& done);

 private:
  void readInput();

  sigset_t taken_{};
  sigset_t before_{};
  struct sigaction pipeBefore_ {};
  int signals_ = -1;
  std::function<void()> entered_;
};

}  // namespace vel::host
