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
  unsetenv("WAYLAND_DISPLAY");  // programs prefer Wayland
  setenv("LC_ALL", "C", 1);
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(streams.input < 0 ? null : streams.input, STDIN_FILENO);
  dup2(streams.output < 0 ? null : streams.output, STDOUT_FILENO);
  dup2(streams.errors < 0 ? null : streams.errors, STDERR_FILENO);
  std::vector<char*> words;
  words.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    words.push_back(argument.data());
  }
  words.push_back(nullptr);
  execvp(words[0], words.data());
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
  if (id_ != 0) {  // 0 would be the process group of the test
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
  waitForInput(descriptor, steadyNow() + kTimeout);  // readable when the program has ended
  close(descriptor);
  kill();  // also reaps a program that has ended
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
  std::array<char, 4096> part{};
  for (ssize_t size = 0; (size = read(pipeEnds[0], part.data(), part.size())) > 0;) {
    output.append(part.data(), static_cast<std::size_t>(size));
  }
  close(pipeEnds[0]);
  process.wait();
  return output;
}

}  // namespace vel::test
