#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/XServer.h"

namespace vel::test {

/// The program `launchscreen show` on a display, run by a test: what it prints, log and faults
/// included, is read as it comes. It does not outlive the test.
class LaunchedShow : NonCopyable {
 public:
  /// `arguments` are those after `show --display x11`.
  LaunchedShow(const XServer& server, std::vector<std::string> arguments);
  ~LaunchedShow();

  /// Waits until it has printed that; false where it ends before, or takes far too long.
  bool prints(std::string_view text);
  void pressEnter() const;
  void signal(int number) const { process_.signal(number); }
  /// Waits for its end; answers its exit status.
  int wait();

  /// What it has printed so far.
  [[nodiscard]] const std::string& output() const { return output_; }
  /// When a line that ends so was printed, by its own account, in seconds; -1 for never.
  [[nodiscard]] double timeOf(std::string_view happening) const;

 private:
  bool read(int milliseconds);

  int writer_ = -1;
  int reader_ = -1;
  Process process_;
  std::string output_;
};

}  // namespace vel::test
