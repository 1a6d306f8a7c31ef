#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/Process.h"

namespace vel::test {

/// An X server that tests use: an Xvfb server with a screen of 1280 by 960 pixels, on a free
/// display number, or a server that another program has started.
class XServer : NonCopyable {
 public:
  /// `arguments` are additional arguments of Xvfb.
  explicit XServer(const std::vector<std::string>& arguments = {});
  /// Returns the server of this display. Another program has started the server and ends it.
  static XServer ofDisplay(std::string display);
  ~XServer();

  [[nodiscard]] const std::string& display() const { return display_; }
  /// Starts a program on the display. The program does not read the user's settings.
  [[nodiscard]] Process start(const std::vector<std::string>& arguments) const;
  /// Kills the server with SIGKILL, like a crash. Does nothing to a server that another program has
  /// started.
  void kill() { process_.kill(); }

 private:
  struct NoProcess {};
  XServer(NoProcess, std::string display);

  std::filesystem::path settings_;  // the folder with the settings of the window managers
  std::string display_;
  Process process_;
};

}  // namespace vel::test
