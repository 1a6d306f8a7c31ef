// `launchscreen show`: plays the host of a launch screen.
#pragma once

#include "Host/Command.h"

namespace vel::host {

/// Adds the command; see `CommandRun`.
void addShowCommand(CLI::App& program, CommandRun& chosen);

}  // namespace vel::host
