#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace vel::test {

/// A program that a test runs. The destructor ends the program.
class Process {
 public:
  Process() = default;
  /// The descriptors of the standard streams; -1 means `/dev/null`.
  struct Streams {
    int input = -1;
    int output = -1;
    int errors = -1;
  };

  /// Searches `PATH` for `arguments[0]` and starts this program with `DISPLAY` set to `display`.
  Process(std::vector<std::string> arguments, const std::string& display, Streams streams);
  Process(std::vector<std::string> arguments, const std::string& display)
      : Process(std::move(arguments), display, Streams()) {}
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  Process(Process&& other) noexcept;
  Process& operator=(Process&& other) noexcept;
  ~Process() { end(); }

  [[nodiscard]] bool isRunning();
  void signal(int number) const;
  /// Sends SIGTERM, and SIGKILL if the program does not end in time. Waits until the program ends.
  void end();
  /// Sends SIGKILL and waits until the program ends.
  void kill();
  /// Waits without a time limit until the program ends. Returns the exit status, or -1 if a signal
  /// ended the program.
  int wait();

 private:
  pid_t id_ = 0;  // 0 if there is no child process
};

/// Runs a program with `DISPLAY` set to `display`. Returns its standard output when it ends.
std::string runProgram(const std::vector<std::string>& arguments, const std::string& display);

}  // namespace vel::test
