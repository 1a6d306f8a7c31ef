#include "Tests/Support/Wayland/Weston.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

namespace {

constexpr std::uint32_t kDesktopColor = 0x203020;

constexpr std::string_view kConfiguration =
    "[core]\n"
    "idle-time=0\n"
    "[shell]\n"
    "panel-position=none\n"
    "background-color=0xff203020\n"
    "animation=none\n"
    "close-animation=none\n"
    "startup-animation=none\n"
    "focus-animation=none\n"
    "locking=false\n";

/// Sends a command to the module that weston loads from `WESTON_CONTROL`. Returns true if the
/// command has succeeded.
bool sendCommand(const std::filesystem::path& socketPath, const std::string& command) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketPath.string().copy(static_cast<char*>(address.sun_path), sizeof(address.sun_path) - 1);
  const int connection = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  std::array<char, 16> reply{};
  const bool hasSucceeded =
      connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
      send(connection, command.data(), command.size(), MSG_NOSIGNAL) > 0 &&
      recv(connection, reply.data(), reply.size() - 1, 0) > 0 &&
      std::string_view(reply.data()) == "ok";
  close(connection);
  return hasSucceeded;
}

}  // namespace

Weston::Weston(const Options& options) {
  const std::filesystem::path configuration = folder() / "config";
  std::ofstream(configuration) << kConfiguration;
  std::vector<std::string> command{"env",
                                   "-u",
                                   "WAYLAND_DISPLAY",
                                   "XDG_RUNTIME_DIR=" + folder().string(),
                                   "HOME=" + folder().string(),
                                   "weston",
                                   "--backend=x11-backend.so",
                                   "--use-pixman",
                                   "--width=1024",
                                   "--height=768",
                                   "--socket=wayland-1",
                                   "--config=" + configuration.string(),
                                   "--log=" + (folder() / "log").string(),
                                   "--modules=" WESTON_CONTROL};
  if (options.hasXwayland) {
    command.emplace_back("--xwayland");
  }
  // weston may miss the position of a pointer that is inside weston's window during the start.
  user().movePointer(1200, 900);
  start(std::move(command));
  const bool hasStarted = eventually([this] {
    return sendCommand(folder() / "control", "check") &&
           picture(PixelRect{200, 200, 600, 400}).isAll(kDesktopColor);
  });
  if (!hasStarted) {
    throw std::runtime_error("weston does not start");
  }
  // weston gives a client the keyboard focus only while weston's X window has the X input focus.
  user().focus(user().findWindow("Weston Compositor"));
  hidePointer();
  // weston may handle the first command before the focus event, but not the second command.
  run("check");
  run("check");
}

void Weston::click(int x, int y) {
  Compositor::click(x, y);
  hidePointer();  // pictures of the screen would contain the pointer
}

void Weston::hidePointer() { user().movePointer(1023, 767); }

void Weston::run(const std::string& command) const {
  if (!eventually([&] { return sendCommand(folder() / "control", command); })) {
    throw std::runtime_error("weston refuses: " + command);
  }
}

void Weston::resizeWindow(const std::string& title, int width, int height) const {
  run("resize " + std::to_string(width) + " " + std::to_string(height) + " " + title);
}

void Weston::moveWindow(const std::string& title, int x, int y) const {
  run("move " + std::to_string(x) + " " + std::to_string(y) + " " + title);
}

std::string Weston::xwaylandDisplay() const {
  constexpr std::string_view kMessage = "xserver listening on display ";
  std::string name;
  const bool hasName = eventually([&] {
    std::ifstream log(folder() / "log");
    // `!log.eof()` skips a last line without a newline: weston is still writing this line.
    for (std::string line; name.empty() && std::getline(log, line) && !log.eof();) {
      if (const std::size_t position = line.find(kMessage); position != std::string::npos) {
        name = line.substr(position + kMessage.size());
      }
    }
    return !name.empty();
  });
  if (!hasName) {
    throw std::runtime_error("weston has no Xwayland");
  }
  return name;
}

void Weston::touch(int x, int y) const {
  run("touch " + std::to_string(x) + " " + std::to_string(y));
}

}  // namespace vel::test
