#pragma once

namespace vel::host {

/// Parses the command line of the program `launchscreen`, runs the selected command and returns the
/// exit status. Reports bad usage in one line on standard error.
int runCommandLine(int argc, const char* const* argv);

}  // namespace vel::host
