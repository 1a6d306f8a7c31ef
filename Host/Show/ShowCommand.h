// The command `launchscreen show`. It acts as the host of a launch screen.
#pragma once

#include "Host/Command.h"

namespace vel::host {

/// Adds the command to the program; see `CommandRun`.
void addShowCommand(CLI::App& program, CommandRun& chosenRun);

}  // namespace vel::host
