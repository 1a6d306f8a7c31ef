// Declarations that all commands of `launchscreen` use.
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
  kExitFailure = 1,      ///< the command failed
  kExitBadUsage = 2,     ///< the command line is invalid or names an unusable file
  kExitSignalBase = 128  ///< 128 + N: signal N stopped the command
};

/// Thrown if the command line is invalid or names an unusable file. `what` returns one line for the
/// user.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Runs a command with its parsed options and returns the exit status.
using CommandFunction = std::function<int()>;

}  // namespace vel::host
