// The command `launchscreen show`, which shows a launch screen over a window.
#pragma once

#include "Host/Command.h"

namespace vel::host {

/// Adds the command `show` to the program. If the command line contains `show`, the parser sets
/// `selectedCommand` to the function that runs the command. `selectedCommand` must exist until the
/// command line has been parsed.
void addShowCommand(CLI::App& program, CommandFunction& selectedCommand);

}  // namespace vel::host
