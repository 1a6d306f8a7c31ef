#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/XServer.h"

namespace vel::test {

/// Runs the program `launchscreen show` and reads its standard output and standard error. The
/// destructor ends the program.
class ShowProcess : NonCopyable {
 public:
  /// Starts `launchscreen show --display x11` with the additional `arguments`.
  ShowProcess(const XServer& server, std::vector<std::string> arguments)
      : ShowProcess(server.display(), std::move(arguments)) {}
  ShowProcess(const std::string& display, std::vector<std::string> arguments);
  ~ShowProcess();

  /// Waits until the program has printed `text`. Returns false if the program ends first, or prints
  /// nothing for 30 seconds.
  bool waitForOutput(std::string_view text);
  void pressEnter() const;
  void sendSignal(int number) const { process_.signal(number); }
  /// Waits until the program ends. Returns the exit status, or -1 if a signal ended the program.
  int wait();

  /// The output so far.
  [[nodiscard]] const std::string& output() const { return output_; }
  /// Finds the first line that ends with `ending`. Returns the time, in seconds, with which the
  /// line begins. Returns -1 if there is no such line.
  [[nodiscard]] double timeOf(std::string_view ending) const;

 private:
  /// Waits up to `milliseconds` for output and appends it to `output_`. Returns false if the
  /// program prints nothing in this time or has closed its output.
  bool readOutput(int milliseconds);

  int inputDescriptor_ = -1;
  int outputDescriptor_ = -1;
  Process process_;
  std::string output_;
};

}  // namespace vel::test
