#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace vel::test {

/// A program that a test starts and ends, by its process id; it does not outlive the test.
class Process {
 public:
  Process() = default;
  /// What becomes of a program's standard input and output; nothing, unless told otherwise.
  struct Streams {
    int input = -1;
    int output = -1;
    int errors = -1;
  };

  /// Starts `arguments[0]`, found on the path, on the display.
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
