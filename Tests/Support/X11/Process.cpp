#include "Tests/Support/X11/Process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

namespace {

[[noreturn]] void execute(std::vector<std::string> arguments, const std::string& display,
                          const Process::Streams& streams) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  setenv("DISPLAY", display.c_str(), 1);
  unsetenv("WAYLAND_DISPLAY");  // the program would prefer Wayland to `display`
  setenv("LC_ALL", "C", 1);
  const int nullDevice = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(streams.input < 0 ? nullDevice : streams.input, STDIN_FILENO);
  dup2(streams.output < 0 ? nullDevice : streams.output, STDOUT_FILENO);
  dup2(streams.errors < 0 ? nullDevice : streams.errors, STDERR_FILENO);
  std::vector<char*> argumentPointers;
  argumentPointers.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    argumentPointers.push_back(argument.data());
  }
  argumentPointers.push_back(nullptr);
  execvp(argumentPointers[0], argumentPointers.data());
  _exit(127);
}

}  // namespace

Process::Process(std::vector<std::string> arguments, const std::string& display, Streams streams)
    : id_(fork()) {
  if (id_ < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (id_ == 0) {
    execute(std::move(arguments), display, streams);
  }
}

Process::Process(Process&& other) noexcept : id_(std::exchange(other.id_, 0)) {}

Process& Process::operator=(Process&& other) noexcept {
  if (this != &other) {
    end();
    id_ = std::exchange(other.id_, 0);
  }
  return *this;
}

bool Process::isRunning() {
  if (id_ != 0 && waitpid(id_, nullptr, WNOHANG) == id_) {
    id_ = 0;
  }
  return id_ != 0;
}

void Process::signal(int number) const {
  if (id_ != 0) {  // `::kill(0, ...)` signals the process group of the test
    ::kill(id_, number);
  }
}

void Process::end() {
  if (id_ == 0) {
    return;
  }
  signal(SIGTERM);
  const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, id_, 0));
  if (descriptor < 0) {  // a sandbox may forbid this system call
    wait();
    return;
  }
  // The descriptor becomes readable when the program ends.
  waitForInput(descriptor, steadyNow() + kTimeout);
  close(descriptor);
  kill();  // reaps the program, even if it has already ended
}

void Process::kill() {
  if (id_ != 0) {
    signal(SIGKILL);
    waitpid(std::exchange(id_, 0), nullptr, 0);
  }
}

int Process::wait() {
  int status = 0;
  waitpid(std::exchange(id_, 0), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string runProgram(const std::vector<std::string>& arguments, const std::string& display) {
  std::array<int, 2> pipeEnds{};
  if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  Process process(arguments, display, {.output = pipeEnds[1]});
  close(pipeEnds[1]);
  std::string output;
  std::array<char, 4096> buffer{};
  for (ssize_t size = 0; (size = read(pipeEnds[0], buffer.data(), buffer.size())) > 0;) {
    output.append(buffer.data(), static_cast<std::size_t>(size));
  }
  close(pipeEnds[0]);
  process.wait();
  return output;
}

}  // namespace vel::test
