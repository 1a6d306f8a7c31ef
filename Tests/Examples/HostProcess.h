#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/Process.h"

namespace vel::test {

/// The process of an example program. Each example is a host: a program that uses the library.
/// Collects the output line by line.
class HostProcess : NonCopyable {
 public:
  /// Starts the program `arguments[0]` with DISPLAY set to `display`. If `display` is empty, the
  /// program finds no X display.
  explicit HostProcess(const std::vector<std::string>& arguments, const std::string& display = "");
  /// Kills the example.
  ~HostProcess();

  /// The complete lines that the example has printed so far. Does not wait.
  const std::vector<std::string>& lines();
  /// True if the example has printed a line that starts with `beginning`. Does not wait.
  bool hasPrinted(std::string_view beginning);
  /// Waits until the example exits. Returns its exit status.
  int wait();

 private:
  // Waits for output and stores it. Returns false at the end of the output.
  bool readOutput();

  Process process_;
  int outputDescriptor_ = -1;
  std::string incompleteLine_;
  std::vector<std::string> lines_;
};

/// The path of an example in the build folder.
std::string examplePath(std::string_view name);
/// The name of the example without hyphens, because the name of a test cannot contain hyphens.
std::string nameOfExample(const testing::TestParamInfo<const char*>& testInfo);
/// The command that runs the Python example.
std::vector<std::string> pythonHostCommand(const std::vector<std::string>& arguments);

}  // namespace vel::test
