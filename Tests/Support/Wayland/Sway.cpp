#include "Tests/Support/Wayland/Sway.h"

#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

namespace {

constexpr uid_t kNobody = 65534;

constexpr std::string_view kConfiguration =
    "default_border none\n"
    "default_floating_border none\n"
    "for_window [title=\".*\"] floating enable\n"
    "focus_follows_mouse no\n"
    "focus_on_window_activation focus\n"
    "output * bg #203020 solid_color\n"
    "seat * hide_cursor 0\n";
constexpr std::string_view kNoXwayland = "xwayland disable\n";
// In an `exec` command, DISPLAY is the display of Xwayland. Xwayland accepts only clients of its
// own user. If the test runs as root, Xwayland runs as nobody. `xhost +local:` admits all local
// users.
constexpr std::string_view kXwayland =
    "xwayland enable\n"
    "exec xhost +local: && echo $DISPLAY > $XDG_RUNTIME_DIR/x-display\n";

// The arguments of the X server that `Compositor` starts. Two outputs need a wider X screen.
std::vector<std::string> serverArguments(const Sway::Options& options) {
  return options.outputCount == 1 ? std::vector<std::string>()
                                  : std::vector<std::string>{"-screen", "0", "2048x768x24"};
}

}  // namespace

Sway::Sway(const Options& options) : Compositor(serverArguments(options)) {
  const std::filesystem::path configuration = folder() / "config";
  const std::filesystem::path socket = folder() / "ipc";
  std::ofstream(configuration) << kConfiguration << (options.hasXwayland ? kXwayland : kNoXwayland);
  std::vector<std::string> command;
  if (getuid() == 0) {
    if (chown(folder().c_str(), kNobody, kNobody) != 0) {
      throw std::system_error(errno, std::generic_category(), "chown");
    }
    command = {"setpriv",        "--reuid=65534", "--regid=65534",
               "--clear-groups", "--pdeathsig",   "KILL"};
  }
  command.insert(command.end(),
                 {"env", "-u", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR=" + folder().string(),
                  "HOME=" + folder().string(), "SWAYSOCK=" + socket.string(), "WLR_BACKENDS=x11",
                  "WLR_RENDERER=pixman", "WLR_LIBINPUT_NO_DEVICES=1",
                  "WLR_X11_OUTPUTS=" + std::to_string(options.outputCount), "sway", "--config",
                  configuration.string()});
  start(std::move(command));
  const bool hasStarted = eventually([&] {
    return runProgram({"swaymsg", "-s", socket.string(), "-t", "get_outputs"}, server().display())
                   .find("\"rect\"") != std::string::npos &&
           std::filesystem::exists(display());  // the Wayland socket
  });
  if (!hasStarted) {
    throw std::runtime_error("sway does not start");
  }
  if (options.outputCount > 1) {
    placeSecondOutput();
  }
}

// Each output is a window of the X server. No window manager runs, so both windows are at the same
// place. The window of the second output is newer, so it is above the window of the first output.
// `children` returns the topmost window last.
void Sway::placeSecondOutput() {
  std::vector<xcb_window_t> windows;
  const bool hasWindows = eventually([&] {
    windows = user().children(user().root());
    return windows.size() == 2;
  });
  if (!hasWindows) {
    throw std::runtime_error("sway has no second output");
  }
  user().configure(windows.back(), {1024, 0, 1024, 768});
}

std::string Sway::xwaylandDisplay() const {
  std::string name;
  if (!eventually([&] { return bool(std::ifstream(folder() / "x-display") >> name); })) {
    throw std::runtime_error("sway has no Xwayland");
  }
  return name;
}

void Sway::run(const std::string& command) const {
  const std::string socket = (folder() / "ipc").string();
  const bool hasSucceeded = eventually([&] {
    return runProgram({"swaymsg", "-s", socket, "--raw", "--", command}, server().display())
               .find("\"success\": true") != std::string::npos;
  });
  if (!hasSucceeded) {
    throw std::runtime_error("sway refuses: " + command);
  }
}

void Sway::resizeWindow(const std::string& title, int width, int height) const {
  run(selectorOf(title) + "resize set " + std::to_string(width) + " px " + std::to_string(height) +
      " px");
}

void Sway::moveWindow(const std::string& title, int x, int y) const {
  run(selectorOf(title) + "move absolute position " + std::to_string(x) + " px " +
      std::to_string(y) + " px");
}

}  // namespace vel::test
