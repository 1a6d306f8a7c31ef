#include "Tests/Support/Cocoa/AppKitEnvironment.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace vel::test {

namespace {

// Returns the ID of a process's parent. `folder` is the folder /proc/<id> of the process. The file
// `stat` contains the ID of the process, its name in parentheses, its state, and the parent's ID.
pid_t parentOf(const std::filesystem::path& folder) {
  std::ifstream file(folder / "stat");
  std::string line;
  std::getline(file, line);
  const std::size_t nameEnd = line.rfind(')');
  // Skips the parenthesis, a space, the one letter of the state, and a space.
  return nameEnd == std::string::npos ? 0 : std::atoi(line.c_str() + nameEnd + 4);
}

std::vector<pid_t> childrenOfThisProcess() {
  std::vector<pid_t> children;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
    const std::string name = entry.path().filename().string();
    if (std::isdigit(static_cast<unsigned char>(name.front())) != 0 &&
        parentOf(entry.path()) == getpid()) {
      children.push_back(std::atoi(name.c_str()));
    }
  }
  return children;
}

}  // namespace

AppKitEnvironment::AppKitEnvironment() {
  std::string name = (std::filesystem::temp_directory_path() / "appkit-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  }
  folder_ = name;
  setenv("HOME", name.c_str(), 1);
  // GNUstep ignores HOME when it chooses the folders for the user's settings and services. A
  // configuration file names these folders. GNUSTEP_USER_CONFIG_FILE would name a file in the
  // user's home folder that overrides the configuration.
  const std::filesystem::path configuration = folder_ / "GNUstep.conf";
  std::ifstream installed(VEL_GNUSTEP_CONFIG_FILE);
  std::ofstream copy(configuration);
  copy << installed.rdbuf() << "\nGNUSTEP_USER_CONFIG_FILE=''\nGNUSTEP_USER_DEFAULTS_DIR=" << name
       << "\nGNUSTEP_USER_DIR_LIBRARY=" << name << std::endl;
  if (!copy) {
    throw std::runtime_error("cannot copy " VEL_GNUSTEP_CONFIG_FILE);
  }
  setenv("GNUSTEP_CONFIG_FILE", configuration.c_str(), 1);
  // A GNUstep program starts a daemon. Programs with the same TEMP share one daemon, but tests that
  // run at the same time must not.
  setenv("TEMP", name.c_str(), 1);
  // The daemon detaches from its parent. With this setting, the daemon becomes a child of this
  // process, and the destructor finds the daemon.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

AppKitEnvironment::~AppKitEnvironment() {
  // The children of a killed process become children of this process. The loop kills them too.
  for (std::vector<pid_t> children = childrenOfThisProcess(); !children.empty();
       children = childrenOfThisProcess()) {
    for (const pid_t child : children) {
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
  }
  unsetenv("TEMP");
  unsetenv("GNUSTEP_CONFIG_FILE");
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

}  // namespace vel::test
