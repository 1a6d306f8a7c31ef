// `launchscreen play`: plays a scenario and prints what happened.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "Host/Command.h"

namespace vel::host {

/// What the process answers when the play broke off.
inline constexpr int kExitPlayAborted = 3;

struct PlayOptions {
  /// The scenario's file; "-" is standard input.
  std::string file;
  /// The file that a picture of the play is written to, if there is to be one.
  std::optional<std::string> timelinePath = std::nullopt;
};

/// Plays the scenario, writes the trace to `out` and answers the exit status. A scenario that
/// cannot be read, or a picture that cannot be written, is a UsageError; nothing has been written
/// to `out` then.
int play(const PlayOptions& options, std::istream& standardInput, std::ostream& out);

/// Adds the command; see `CommandRun`.
void addPlayCommand(CLI::App& program, CommandRun& chosen);

}  // namespace vel::host
