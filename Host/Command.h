// What the commands of `launchscreen` have in common.
#pragma once

#include <functional>
#include <stdexcept>

namespace CLI {  // NOLINT(readability-identifier-naming): CLI11's own name
class App;
}

namespace vel::host {

/// The exit status of the process.
enum ExitStatus : int {
  kExitSuccess = 0,
  kExitFailure = 1,      ///< the command could not do its work
  kExitBadUsage = 2,     ///< the command line, or a file that it names, is wrong
  kExitSignalBase = 128  ///< plus the number of the signal that ended the command
};

/// Thrown by a command if its command line is wrong; `what` is one line for the user.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Runs a command and returns the exit status. Each command has a function
/// `add…Command(CLI::App& program, CommandRun& chosenRun)`. It adds the command to the program. If
/// the user names the command, parsing the command line sets `chosenRun`.
using CommandRun = std::function<int()>;

}  // namespace vel::host
