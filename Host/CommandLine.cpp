#include "Host/CommandLine.h"

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <string>

#include "Host/Command.h"
#include "Host/Play/PlayCommand.h"
#include "Host/Show/ShowCommand.h"

namespace vel::host {

namespace {

// Where a standard stream is closed, the next file to be opened would take its place, and its input
// or output.
void occupyStandardDescriptors() {
  int lowest = open("/dev/null", O_RDWR);
  while (lowest >= 0 && lowest <= STDERR_FILENO) {
    lowest = open("/dev/null", O_RDWR);
  }
  close(lowest);
}

int badUsage(std::string message) {
  // One line, whatever the arguments that it quotes contain.
  std::ranges::replace(message, '\n', ' ');
  std::cerr << "launchscreen: " << message << std::endl;
  return kExitBadUsage;
}

void addCommonFlags(CLI::App& app) {
  app.set_help_flag("--help", "Print this help and exit");
  app.set_version_flag("--version", "launchscreen " VEL_VERSION, "Print the version and exit");
}

}  // namespace

int runCommandLine(int argc, const char* const* argv) {
  occupyStandardDescriptors();
  CLI::App program("Shows a launch screen over a game's window while the game loads.",
                   "launchscreen");
  program.require_subcommand(0, 1);
  CommandRun chosen;
  addShowCommand(program, chosen);
  addPlayCommand(program, chosen);
  addCommonFlags(program);
  for (CLI::App* const command : program.get_subcommands({})) {
    addCommonFlags(*command);
  }

  try {
    program.parse(argc, argv);
    if (!chosen) {
      throw UsageError("which command? See launchscreen --help");
    }
    return chosen();
  } catch (const CLI::Success& wish) {  // help, version
    return program.exit(wish);
  } catch (const CLI::Error& error) {
    return badUsage(error.what());
  } catch (const UsageError& error) {
    return badUsage(error.what());
  } catch (const std::exception& error) {
    std::cerr << "launchscreen: " << error.what() << std::endl;
    return kExitFailure;
  }
}

}  // namespace vel::host
