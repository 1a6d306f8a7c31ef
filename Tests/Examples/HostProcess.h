#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Tests/WindowSystem/X11/Support/Process.h"

namespace vel::test {

/// An example that runs; what it prints can be read line by line.
class HostProcess {
 public:
  /// Starts it on a display, or on none.
  explicit HostProcess(const std::vector<std::string>& arguments, const std::string& display = "");
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;
  HostProcess(HostProcess&&) = delete;
  HostProcess& operator=(HostProcess&&) = delete;
  ~HostProcess();

  /// What it has printed by now, with the lines that it has ended; waits for nothing.
  const std::vector<std::string>& lines();
  /// Whether it has printed a line by now that begins so.
  bool hasPrinted(std::string_view beginning);
  /// Waits for its own end; answers its exit status.
  int wait();

 private:
  // False at the end of the output.
  bool readSome();

  Process process_;
  int output_ = -1;
  std::string unended_;
  std::vector<std::string> lines_;
};

/// An example as the build has it.
std::string exampleFile(std::string_view name);
/// Its name in those of tests.
std::string nameOfExample(const testing::TestParamInfo<const char*>& info);
/// What runs the example in Python with the library that has been built.
std::vector<std::string> pythonHost(const std::vector<std::string>& arguments);

}  // namespace vel::test
