// `launchscreen play`: plays a scenario and prints what happened.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "Host/Command.h"

namespace vel::host {

/// The exit status if a scenario ends in an error that would end the process of a host.
inline constexpr int kExitPlayAborted = 3;

struct PlayOptions {
  /// The file with the scenario, or "-" for standard input.
  std::string file;
  /// The file for a picture of the play, if the user wants one.
  std::optional<std::string> timelinePath = std::nullopt;
};

/// Plays the scenario, writes the trace to `out` and returns the exit status. Throws a UsageError,
/// before it writes to `out`, if the scenario cannot be read or the file for the picture cannot be
/// opened.
int play(const PlayOptions& options, std::istream& standardInput, std::ostream& out);

/// Adds the command to the program; see `CommandRun`.
void addPlayCommand(CLI::App& program, CommandRun& chosenRun);

}  // namespace vel::host
