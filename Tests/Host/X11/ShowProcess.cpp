#include "Tests/Host/X11/ShowProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <system_error>

namespace vel::test {

namespace {

// The maximum time for which the program may print nothing. Long enough for a busy machine.
constexpr int kTimeoutInMilliseconds = 30'000;

std::array<int, 2> makePipe() {
  std::array<int, 2> pipeEnds{};
  if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  return pipeEnds;
}

}  // namespace

ShowProcess::ShowProcess(const std::string& display, std::vector<std::string> arguments) {
  const auto input = makePipe();
  const auto output = makePipe();
  arguments.insert(arguments.begin(), {LAUNCHSCREEN, "show", "--display", "x11"});
  process_ = Process(std::move(arguments), display,
                     {.input = input[0], .output = output[1], .errors = output[1]});
  close(input[0]);
  close(output[1]);
  inputDescriptor_ = input[1];
  outputDescriptor_ = output[0];
}

ShowProcess::~ShowProcess() {
  process_.end();
  close(inputDescriptor_);
  close(outputDescriptor_);
}

bool ShowProcess::readOutput(int milliseconds) {
  pollfd source{outputDescriptor_, POLLIN, 0};
  if (poll(&source, 1, milliseconds) <= 0) {
    return false;
  }
  std::array<char, 4096> buffer{};
  const ssize_t size = ::read(outputDescriptor_, buffer.data(), buffer.size());
  if (size > 0) {
    output_.append(buffer.data(), static_cast<std::size_t>(size));
  }
  return size > 0;
}

bool ShowProcess::waitForOutput(std::string_view text) {
  while (output_.find(text) == std::string::npos) {
    if (!readOutput(kTimeoutInMilliseconds)) {
      return false;
    }
  }
  return true;
}

void ShowProcess::pressEnter() const {
  if (write(inputDescriptor_, "\n", 1) != 1) {
    throw std::system_error(errno, std::generic_category(), "write");
  }
}

int ShowProcess::wait() {
  // Reads first, because the program blocks while the pipe is full.
  while (readOutput(kTimeoutInMilliseconds)) {
  }
  return process_.wait();
}

double ShowProcess::timeOf(std::string_view ending) const {
  std::istringstream lines(output_);
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with(ending)) {
      // The line begins with the time in seconds.
      return std::strtod(line.c_str(), nullptr);
    }
  }
  return -1;
}

}  // namespace vel::test
