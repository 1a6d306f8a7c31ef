// The command `launchscreen play` plays a scenario and prints a trace. A host is a program that
// uses the library. A scenario is a JSON file that describes what a host and its user do. A trace
// has one line of JSON for each event.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "Host/Command.h"

namespace vel::host {

/// The exit status if an NSCollectionMutatedError ends the scenario early. In a real host, the
/// error would end the process.
inline constexpr int kExitPlayAborted = 3;

struct PlayOptions {
  /// The file with the scenario, or "-" for standard input.
  std::string file;
  /// The file for the timeline, an SVG picture of what happens in the scenario. With
  /// `std::nullopt`, no timeline is drawn.
  std::optional<std::string> timelinePath = std::nullopt;
};

/// Plays the scenario, writes the trace to `out` and returns the exit status. Throws a UsageError
/// if the scenario cannot be read or is invalid, or if the file for the timeline cannot be opened.
/// Nothing has been written to `out` when a UsageError is thrown. Throws a std::runtime_error if
/// the trace or the timeline cannot be written.
int play(const PlayOptions& options, std::istream& standardInput, std::ostream& out);

/// Adds the command `play` to the parser `program`. If the command line contains this command, the
/// parser sets `selectedCommand` to a function that plays the scenario.
void addPlayCommand(CLI::App& program, CommandFunction& selectedCommand);

}  // namespace vel::host
