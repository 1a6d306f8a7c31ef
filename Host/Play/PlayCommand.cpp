#include "Host/Play/PlayCommand.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "Host/Play/Player.h"
#include "Host/Play/ScenarioReader.h"

namespace vel::host {

namespace {

std::string readAll(std::istream& in) {
  std::string text;
  char part[1 << 14];
  while (in.read(part, sizeof part) || in.gcount() > 0) {
    text.append(part, static_cast<std::size_t>(in.gcount()));
  }
  return text;
}

std::string readFile(const std::string& name) {
  errno = 0;
  std::ifstream file(name, std::ios::binary);
  std::string text = readAll(file);
  if (!file.eof() || file.bad()) {  // it could not be opened, or not be read to its end
    throw UsageError(inOneLine(name) + ": cannot be read: " + std::strerror(errno));
  }
  return text;
}

/// Writes each line as it comes.
class TracePrinter final : public PlayListener {
 public:
  explicit TracePrinter(std::ostream& out) : out_(out) {}
  void happened(const TraceLine& line) override { out_ << traceText(line) << '\n'; }
  void settled(const PlayState& /*state*/) override {}

 private:
  std::ostream& out_;
};

}  // namespace

int play(const PlayOptions& options, std::istream& standardInput, std::ostream& out) {
  const bool piped = options.file == "-";
  const std::string name = piped ? "standard input" : inOneLine(options.file);
  Scenario scenario;
  try {
    scenario = readScenario(piped ? readAll(standardInput) : readFile(options.file));
  } catch (const ScenarioError& error) {
    throw UsageError(name + ": " + error.what());
  }
  TracePrinter printer(out);
  const PlayOutcome outcome = Player(scenario, printer).play();
  if (!out.flush()) {
    throw std::runtime_error("the trace cannot be written");
  }
  return outcome == PlayOutcome::Ended ? kExitEnded : kExitPlayBrokeOff;
}

void addPlayCommand(CLI::App& program, CommandRun& chosen) {
  CLI::App* const command = program.add_subcommand(
      "play", "Plays a host's script in virtual time and prints what happened");
  auto options = std::make_shared<PlayOptions>();
  command->add_option("FILE", options->file, "The scenario, a JSON file; - is standard input")
      ->required();
  command->callback(
      [options, &chosen] { chosen = [options] { return play(*options, std::cin, std::cout); }; });
}

}  // namespace vel::host
