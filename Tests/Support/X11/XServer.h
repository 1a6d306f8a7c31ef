#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/Process.h"

namespace vel::test {

/// An Xvfb server with a screen of 1280 by 960 pixels, on a free display number.
class XServer : NonCopyable {
 public:
  /// `arguments` are additional arguments of Xvfb.
  explicit XServer(const std::vector<std::string>& arguments = {});
  ~XServer();

  [[nodiscard]] const std::string& display() const { return display_; }
  /// Starts a program on the display. The program does not read the user's settings.
  [[nodiscard]] Process start(const std::vector<std::string>& arguments) const;
  /// Kills the server with SIGKILL, like a crash.
  void kill() { process_.kill(); }

 private:
  std::filesystem::path settings_;  // the folder with the settings of the window managers
  std::string display_;
  Process process_;
};

}  // namespace vel::test
