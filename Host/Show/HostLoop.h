#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::host {

/// The event loop of `launchscreen show`. It waits for the descriptor of the library's main run
/// loop, for signals and for the standard input. Before each wait, it calls `pump` of the main run
/// loop.
///
/// While this object exists, it receives SIGINT, SIGTERM and SIGHUP. If the process already ignores
/// SIGHUP, SIGHUP stays ignored. The destructor raises each received signal that `runUntil` has not
/// returned. SIGPIPE is ignored while this object exists. A process can have one HostLoop at a
/// time, on the main thread. Each kind of operating system has its own implementation.
class HostLoop : private NonCopyable {
 public:
  HostLoop();
  ~HostLoop();

  /// Calls `handler` whenever the user presses Enter. The loop stops reading the standard input
  /// when the input ends, or when the user types while the process is a background job.
  void setEnterHandler(std::function<void()> handler) { enterHandler_ = std::move(handler); }

  /// Runs until `isDone` returns true or a signal arrives. Calls `isDone` after each `pump`.
  /// Returns the number of the signal, or 0 if `isDone` returned true.
  int runUntil(const std::function<bool()>& isDone);

 private:
  class SignalPipe;

  void readInput();

  std::unique_ptr<SignalPipe> signalPipe_;
  std::function<void()> enterHandler_;  // if null, the loop does not read the standard input
};

}  // namespace vel::host
