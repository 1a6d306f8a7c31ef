#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vel::test {

/// A program that a test starts and ends, by its process id; it does not outlive the test.
class Process {
 public:
  Process() = default;
  /// Starts `arguments[0]`, found on the path, on the display, with nothing of what it prints
  /// shown. `inherited` is a descriptor that it may write to.
  Process(std::vector<std::string> arguments, const std::string& display, int inherited = -1);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  Process(Process&& other) noexcept;
  Process& operator=(Process&& other) noexcept;
  ~Process() { end(); }

  [[nodiscard]] bool isRunning();
  /// Ends it and waits for that.
  void end();
  /// The same without giving it a chance to tidy up.
  void kill();
  /// Waits for its own end; answers its exit status.
  int wait();

 private:
  void signalAndWait(int signal);

  pid_t id_ = 0;
};

/// Runs a program on the display to its end; answers what it printed.
std::string outputOf(const std::vector<std::string>& arguments, const std::string& display);

}  // namespace vel::test
