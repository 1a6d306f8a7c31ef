#include "Tests/Support/X11/XServer.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace vel::test {

namespace {

// Metacity must not composite: a compositor updates the screen later, and it draws shadows.
constexpr std::string_view kMetacityAndMarcoSettings =
    "[org/gnome/metacity]\ncompositor='none'\n"
    "[org/gnome/desktop/wm/preferences]\nbutton-layout=':minimize,maximize,close'\n"
    "[org/mate/marco/general]\nbutton-layout=':minimize,maximize,close'\n";
constexpr std::string_view kIceWMSettings = "ShowTaskBar=0\nShowSplash=0\n";
// Fluxbox must not show a toolbar or start a program that draws a background.
constexpr std::string_view kFluxboxSettings =
    "session.screen0.toolbar.visible: false\nsession.styleOverlay: ~/.fluxbox/overlay\n";
constexpr std::string_view kFluxboxOverlay = "background: none\n";

std::filesystem::path makeFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "x11-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  }
  return name;
}

void writeFile(const std::filesystem::path& file, std::string_view text) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file) << text;
}

}  // namespace

XServer::XServer(NoProcess /*tag*/, std::string display)
    : settings_(makeFolder()), display_(std::move(display)) {
  writeFile(settings_ / "glib-2.0/settings/keyfile", kMetacityAndMarcoSettings);
  writeFile(settings_ / ".icewm/preferences", kIceWMSettings);
  writeFile(settings_ / ".fluxbox/init", kFluxboxSettings);
  writeFile(settings_ / ".fluxbox/overlay", kFluxboxOverlay);
}

XServer XServer::ofDisplay(std::string display) { return {NoProcess(), std::move(display)}; }

// Xvfb prints the number of its display when it accepts connections.
XServer::XServer(const std::vector<std::string>& arguments) : XServer(NoProcess(), "") {
  std::array<int, 2> pipeEnds{};
  if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  std::vector<std::string> command{"Xvfb",     "-displayfd",  "1",         "-screen",
                                   "0",        "1280x960x24", "-nolisten", "tcp",
                                   "-noreset", "-dpi",        "96"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  process_ = Process(std::move(command), "", {.output = pipeEnds[1]});
  close(pipeEnds[1]);
  char digit = 0;
  while (read(pipeEnds[0], &digit, 1) == 1 && digit != '\n') {
    display_ += digit;
  }
  close(pipeEnds[0]);
  if (display_.empty()) {
    throw std::runtime_error("Xvfb does not start");
  }
  display_.insert(display_.begin(), ':');
}

XServer::~XServer() {
  process_.end();
  std::error_code ignored;
  std::filesystem::remove_all(settings_, ignored);
}

Process XServer::start(const std::vector<std::string>& arguments) const {
  std::vector<std::string> command{"env", "GSETTINGS_BACKEND=keyfile",
                                   "XDG_CONFIG_HOME=" + settings_.string(),
                                   "HOME=" + settings_.string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return {command, display_};
}

}  // namespace vel::test
