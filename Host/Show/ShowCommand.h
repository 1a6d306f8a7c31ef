// The command `launchscreen show`. It acts as the host of a launch screen.
#pragma once

#include "Host/Command.h"

namespace vel::host {

/// Adds the command to the program. When the program parses the command `show`, the parser sets
/// `selectedCommand` to the function that runs the command.
void addShowCommand(CLI::App& program, CommandFunction& selectedCommand);

}  // namespace vel::host
