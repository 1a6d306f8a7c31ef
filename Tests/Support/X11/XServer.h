#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/Process.h"

namespace vel::test {

/// An X server with a screen in memory, 1280 by 960 pixels, on a free display of its own.
class XServer : NonCopyable {
 public:
  /// `arguments` are further ones of the server's.
  explicit XServer(const std::vector<std::string>& arguments = {});
  ~XServer();

  [[nodiscard]] const std::string& display() const { return display_; }
  /// Starts a program on the display, with settings of nobody's but these tests'.
  [[nodiscard]] Process start(const std::vector<std::string>& arguments) const;
  /// Ends the server, as a crash would.
  void kill() { process_.kill(); }

 private:
  std::filesystem::path settings_;
  std::string display_;
  Process process_;
};

}  // namespace vel::test
