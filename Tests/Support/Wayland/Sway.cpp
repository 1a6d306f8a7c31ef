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
    "xwayland disable\n"
    "default_border none\n"
    "default_floating_border none\n"
    "for_window [title=\".*\"] floating enable\n"
    "focus_follows_mouse no\n"
    "focus_on_window_activation focus\n"
    "output * bg #203020 solid_color\n"
    "seat * hide_cursor 0\n";

std::filesystem::path makeFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "sway-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  }
  return name;
}

}  // namespace

Sway::Sway() : user_(server_.display()), folder_(makeFolder()) {
  const std::filesystem::path configuration = folder_ / "config";
  const std::filesystem::path socket = folder_ / "ipc";
  std::ofstream(configuration) << kConfiguration;
  std::vector<std::string> command;
  if (getuid() == 0) {
    if (chown(folder_.c_str(), kNobody, kNobody) != 0) {
      throw std::system_error(errno, std::generic_category(), "chown");
    }
    command = {"setpriv",        "--reuid=65534", "--regid=65534",
               "--clear-groups", "--pdeathsig",   "KILL"};
  }
  command.insert(command.end(),
                 {"env", "-u", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR=" + folder_.string(),
                  "HOME=" + folder_.string(), "SWAYSOCK=" + socket.string(), "WLR_BACKENDS=x11",
                  "WLR_RENDERER=pixman", "WLR_LIBINPUT_NO_DEVICES=1", "WLR_X11_OUTPUTS=1", "sway",
                  "--config", configuration.string()});
  process_ = Process(std::move(command), server_.display());
  const bool hasStarted = eventually([&] {
    return runProgram({"swaymsg", "-s", socket.string(), "-t", "get_outputs"}, server_.display())
                   .find("\"rect\"") != std::string::npos &&
           std::filesystem::exists(display());
  });
  if (!hasStarted) {
    throw std::runtime_error("sway does not start");
  }
}

Sway::~Sway() {
  process_.end();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void Sway::run(const std::string& command) const {
  const std::string socket = (folder_ / "ipc").string();
  const bool hasSucceeded = eventually([&] {
    return runProgram({"swaymsg", "-s", socket, "--raw", "--", command}, server_.display())
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

void Sway::drag(int fromX, int fromY, int toX, int toY) {
  user_.movePointer(fromX, fromY);
  user_.pressButton();
  user_.movePointer(toX, toY);
  user_.releaseButton();
}

}  // namespace vel::test
