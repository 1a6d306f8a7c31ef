#include "Tests/Support/Wayland/RecordingCompositor.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "Tests/Support/Wayland/RecordingServer.h"

namespace vel::test {

namespace {

// wp_fractional_scale_v1 sends the scale multiplied by this number.
constexpr double kScaleUnit = 120;

[[noreturn]] void runServerProcess(const std::filesystem::path& folder, int controlSocket) {
  try {
    runRecordingServer(folder, controlSocket);
  } catch (const std::exception& exception) {
    std::cerr << "RecordingCompositor: " << exception.what() << std::endl;
  }
  _exit(0);
}

template <class... Values>
std::string makeCommand(const Values&... values) {
  std::ostringstream text;
  ((text << values << ' '), ...);
  return text.str();
}

}  // namespace

CGSize SurfaceRecord::size() const {
  return destination == CGSize()
             ? CGSize{bufferSize.width / bufferScale, bufferSize.height / bufferScale}
             : destination;
}

RecordingCompositor::RecordingCompositor() {
  std::string folder = (std::filesystem::temp_directory_path() / "wayland-test-XXXXXX").string();
  std::array<int, 2> sockets{};
  if (mkdtemp(folder.data()) == nullptr ||
      socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "RecordingCompositor");
  }
  folder_ = folder;
  control_ = sockets[0];
  process_ = fork();
  if (process_ == 0) {
    close(sockets[0]);
    runServerProcess(folder_, sockets[1]);
  }
  close(sockets[1]);
  for (const char* const interface : {"wl_compositor", "wl_subcompositor", "wl_shm"}) {
    addGlobal(interface);
  }
}

RecordingCompositor::~RecordingCompositor() {
  close(control_);
  waitpid(process_, nullptr, 0);
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string RecordingCompositor::execute(const std::string& command) {
  std::string reply(1U << 16U, '\0');
  const bool isSent = send(control_, command.data(), command.size(), MSG_NOSIGNAL) > 0;
  const ssize_t size = isSent ? recv(control_, reply.data(), reply.size(), 0) : 0;
  if (size <= 0) {
    throw std::runtime_error("the compositor does not execute: " + command);
  }
  return reply.substr(0, static_cast<std::size_t>(size));
}

int RecordingCompositor::addGlobal(const std::string& interface) {
  return std::stoi(execute(makeCommand("add", interface, 0)));  // 0: no output scale
}

int RecordingCompositor::addOutput(int scale) {
  return std::stoi(execute(makeCommand("add", "wl_output", scale)));
}

void RecordingCompositor::removeGlobal(int global) { execute(makeCommand("remove", global)); }

void RecordingCompositor::setOutputScale(int output, int scale) {
  execute(makeCommand("output-scale", output, scale));
}

void RecordingCompositor::enterOutput(std::uint32_t surface, int output) {
  execute(makeCommand("enter-output", output, surface));
}

void RecordingCompositor::leaveOutput(std::uint32_t surface, int output) {
  execute(makeCommand("leave-output", output, surface));
}

void RecordingCompositor::setScale(std::uint32_t surface, double scale) {
  execute(makeCommand("scale", surface, std::lround(scale * kScaleUnit)));
}

void RecordingCompositor::enterKeyboard(int seat, std::uint32_t surface) {
  execute(makeCommand("enter-keyboard", seat, surface));
}

void RecordingCompositor::leaveKeyboard(int seat, std::uint32_t surface) {
  execute(makeCommand("leave-keyboard", seat, surface));
}

void RecordingCompositor::pressButton(int seat, std::uint32_t surface) {
  execute(makeCommand("press", seat, surface));
}

void RecordingCompositor::configure(std::uint32_t surface, CGSize size) {
  execute(makeCommand("configure", surface, size.width, size.height));
}

void RecordingCompositor::configureMaximised(std::uint32_t surface, CGSize size) {
  execute(makeCommand("configure-maximised", surface, size.width, size.height));
}

void RecordingCompositor::configureFullscreen(std::uint32_t surface, CGSize size) {
  execute(makeCommand("configure-fullscreen", surface, size.width, size.height));
}

void RecordingCompositor::requestClose(std::uint32_t surface) {
  execute(makeCommand("close", surface));
}

void RecordingCompositor::refusePools() { execute("refuse-pools"); }

std::vector<SurfaceRecord> RecordingCompositor::surfaces() {
  std::vector<SurfaceRecord> surfaces;
  std::istringstream text(execute("surfaces"));
  SurfaceRecord surface;
  while (text >> surface.id >> surface.parent >> surface.position.x >> surface.position.y >>
         surface.bufferSize.width >> surface.bufferSize.height >> surface.bufferScale >>
         surface.destination.width >> surface.destination.height >> surface.commitCount >>
         surface.isModal >> surface.titleLength) {
    surfaces.push_back(surface);
  }
  return surfaces;
}

SurfaceRecord RecordingCompositor::surface(std::uint32_t id) {
  const std::vector<SurfaceRecord> all = surfaces();
  const auto record = std::ranges::find(all, id, &SurfaceRecord::id);
  if (record == all.end()) {
    throw std::runtime_error("no surface " + std::to_string(id));
  }
  return *record;
}

std::vector<SurfaceRecord> RecordingCompositor::children(std::uint32_t parent) {
  std::vector<SurfaceRecord> children = surfaces();
  std::erase_if(children,
                [parent](const SurfaceRecord& surface) { return surface.parent != parent; });
  return children;
}

std::map<std::string, int> RecordingCompositor::objects() {
  std::map<std::string, int> counts;
  std::istringstream text(execute("objects"));
  std::string interface;
  while (text >> interface) {
    ++counts[interface];
  }
  return counts;
}

std::vector<std::string> RecordingCompositor::takeRequests(const std::string& prefix) {
  std::vector<std::string> requests;
  std::istringstream text(execute("requests " + prefix));
  std::string request;
  while (text >> request) {
    requests.push_back(request);
  }
  return requests;
}

}  // namespace vel::test
