// The command line of `launchscreen`: its commands, and what they all have in common.
#pragma once

#include <functional>
#include <stdexcept>

namespace CLI {  // NOLINT(readability-identifier-naming): CLI11's own name
class App;
}

namespace vel::host {

/// What the process answers.
enum ExitStatus : int {
  kExitEnded = 0,       ///< ended as it should
  kExitRefused = 1,     ///< it could not be done
  kExitBadUsage = 2,    ///< the command line makes no sense
  kExitSignalled = 128  ///< plus the number of the signal
};

/// Thrown by a command that finds its command line wrong; `what` is one line for the user.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Runs a command whose command line has been understood, and answers the exit status. A command's
/// folder has one function `add…Command(CLI::App& program, CommandRun& chosen)`: it adds the
/// command to the program and, once the user has named it, sets what to run.
using CommandRun = std::function<int()>;

/// Reads the command line and runs its command; answers the exit status. Bad usage is told in one
/// line on standard error.
int runCommandLine(int argc, const char* const* argv);

}  // namespace vel::host
