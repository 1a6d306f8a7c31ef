#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/Process.h"

namespace vel::test {

/// An X server for tests. It is either an Xvfb server that this object starts, or a server that
/// another program has started. The Xvfb server chooses an unused display number. Its screen has
/// 1280 by 960 pixels.
class XServer : NonCopyable {
 public:
  /// Starts Xvfb. `arguments` are additional arguments of Xvfb.
  explicit XServer(const std::vector<std::string>& arguments = {});
  /// Returns the server that another program has started on `display`. The destructor does not end
  /// this server.
  static XServer ofDisplay(std::string display);
  ~XServer();

  [[nodiscard]] const std::string& display() const { return display_; }
  /// Starts a program on the display. The program does not read the user's settings.
  [[nodiscard]] Process start(const std::vector<std::string>& arguments) const;
  /// Kills the server with SIGKILL. Does nothing to a server that another program has started.
  void kill() { process_.kill(); }

 private:
  struct NoProcess {};
  XServer(NoProcess, std::string display);

  std::filesystem::path settings_;  // the home folder of the started programs
  std::string display_;
  Process process_;
};

}  // namespace vel::test
