#include "Host/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <string>

#include "Host/Command.h"
#include "Host/Play/PlayCommand.h"
#include "Host/Show/ShowCommand.h"
#include "Host/Terminal.h"

namespace vel::host {

namespace {

int reportBadUsage(std::string message) {
  // The message can quote arguments that contain line feeds.
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
  // If standard output is closed, the next file that the program opens would become standard
  // output.
  openClosedStandardStreams();
  CLI::App program("Show a launch screen over a game's window while the game loads.",
                   "launchscreen");
  program.require_subcommand(0, 1);  // 0, because the code below reports a missing command
  CommandFunction selectedCommand;
  addShowCommand(program, selectedCommand);
  addPlayCommand(program, selectedCommand);
  addCommonFlags(program);
  for (CLI::App* const command : program.get_subcommands({})) {
    addCommonFlags(*command);
  }

  try {
    program.parse(argc, argv);
    if (!selectedCommand) {
      throw UsageError("a command is missing; see launchscreen --help");
    }
    return selectedCommand();
  } catch (const CLI::Success& helpOrVersion) {
    return program.exit(helpOrVersion);
  } catch (const CLI::Error& error) {
    return reportBadUsage(error.what());
  } catch (const UsageError& error) {
    return reportBadUsage(error.what());
  } catch (const std::exception& error) {
    std::cerr << "launchscreen: " << error.what() << std::endl;
    return kExitFailure;
  }
}

}  // namespace vel::host
