// The command `launchscreen play` plays a scenario and prints a trace. A host is a program that
// uses the library. A scenario is a JSON file that describes what a host and its user do. A trace
// has one line of JSON for each event.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "Host/Command.h"

namespace vel::host {

/// The exit status if a collection is changed while it is being enumerated. The scenario then stops
/// early. In a real host, this error would end the process.
inline constexpr int kExitPlayAborted = 3;

struct PlayOptions {
  /// The file with the scenario, or "-" for standard input.
  std::string file;
  /// The file for the timeline. The timeline is an SVG picture of what happens in the scenario.
  /// Without a value, no timeline is drawn.
  std::optional<std::string> timelinePath = std::nullopt;
};

/// Plays the scenario, writes the trace to `out` and returns the exit status. Throws a UsageError
/// if the scenario cannot be read or is invalid, or if the file for the timeline cannot be opened.
/// Nothing has been written to `out` when a UsageError is thrown. Throws a std::runtime_error if
/// the trace or the timeline cannot be written.
int play(const PlayOptions& options, std::istream& standardInput, std::ostream& out);

/// Adds the command `play` to the parser `program`. If the command line contains this command, the
/// parser sets `selectedCommand` to the function that runs it.
void addPlayCommand(CLI::App& program, CommandFunction& selectedCommand);

}  // namespace vel::host
