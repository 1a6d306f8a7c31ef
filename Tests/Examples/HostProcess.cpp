#include "Tests/Examples/HostProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace vel::test {

HostProcess::HostProcess(const std::vector<std::string>& arguments, const std::string& display) {
  std::array<int, 2> pipeEnds{};
  if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  process_ = Process(arguments, display, {.output = pipeEnds[1], .errors = STDERR_FILENO});
  close(pipeEnds[1]);
  outputDescriptor_ = pipeEnds[0];
}

HostProcess::~HostProcess() {
  process_.kill();
  close(outputDescriptor_);
}

const std::vector<std::string>& HostProcess::lines() {
  pollfd pollEntry{outputDescriptor_, POLLIN, 0};
  while (poll(&pollEntry, 1, 0) > 0 && readOutput()) {
  }
  return lines_;
}

bool HostProcess::hasPrinted(std::string_view beginning) {
  return std::ranges::any_of(
      lines(), [beginning](const std::string& line) { return line.starts_with(beginning); });
}

int HostProcess::wait() {
  while (readOutput()) {
  }
  return process_.wait();
}

bool HostProcess::readOutput() {
  std::array<char, 4096> buffer{};
  const ssize_t size = read(outputDescriptor_, buffer.data(), buffer.size());
  if (size <= 0) {
    return false;
  }
  incompleteLine_.append(buffer.data(), static_cast<std::size_t>(size));
  for (std::size_t end = 0; (end = incompleteLine_.find('\n')) != std::string::npos;) {
    lines_.push_back(incompleteLine_.substr(0, end));
    incompleteLine_.erase(0, end + 1);
  }
  return true;
}

std::string examplePath(std::string_view name) {
  return std::string(VEL_EXAMPLE_PROGRAMS "/").append(name);
}

std::string nameOfExample(const testing::TestParamInfo<const char*>& testInfo) {
  std::string name = testInfo.param;
  std::erase(name, '-');
  return name;
}

std::vector<std::string> pythonHostCommand(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{VEL_PYTHON, VEL_EXAMPLE_SOURCES "/python-host/host.py"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  command.emplace_back(VEL_LIBRARY);
  return command;
}

}  // namespace vel::test
