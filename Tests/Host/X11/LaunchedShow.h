#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/XServer.h"

namespace vel::test {

/// The program `launchscreen show`, started by a test on a display. Reads its standard output and
/// errors. The destructor ends the program.
class LaunchedShow : NonCopyable {
 public:
  /// `arguments` follow `show --display x11`.
  LaunchedShow(const XServer& server, std::vector<std::string> arguments);
  ~LaunchedShow();

  /// Waits until the program has printed `text`. Returns false if the program ends before, or after
  /// 30 seconds without output.
  bool waitForOutput(std::string_view text);
  void pressEnter() const;
  void signal(int number) const { process_.signal(number); }
  /// Waits until the program ends. Returns its exit status, or -1 after a signal.
  int wait();

  /// The output so far.
  [[nodiscard]] const std::string& output() const { return output_; }
  /// The time, in seconds, at the start of the first line that ends with `ending`; -1 if there is
  /// no such line.
  [[nodiscard]] double timeOf(std::string_view ending) const;

 private:
  bool read(int milliseconds);

  int writer_ = -1;
  int reader_ = -1;
  Process process_;
  std::string output_;
};

}  // namespace vel::test
