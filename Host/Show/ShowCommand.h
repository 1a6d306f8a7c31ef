// `launchscreen show`: shows a launch screen as a host does.
#pragma once

#include "Host/Command.h"

namespace vel::host {

/// Adds the command to the program; see `CommandRun`.
void addShowCommand(CLI::App& program, CommandRun& chosenRun);

}  // namespace vel::host
