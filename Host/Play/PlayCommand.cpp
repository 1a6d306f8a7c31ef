#include "Host/Play/PlayCommand.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "Host/Play/Player/Player.h"
#include "Host/Play/Scenario/ScenarioReader.h"
#include "Host/Play/Timeline/TimelineSvg.h"

namespace vel::host {

namespace {

std::string readAll(std::istream& in) {
  std::string text;
  char buffer[1 << 14];
  while (in.read(buffer, sizeof buffer) || in.gcount() > 0) {
    text.append(buffer, static_cast<std::size_t>(in.gcount()));
  }
  return text;
}

std::string readFile(const std::string& name) {
  errno = 0;
  std::ifstream file(name, std::ios::binary);
  std::string text = readAll(file);
  if (!file.eof() || file.bad()) {  // the file was not opened, or was not read to its end
    throw UsageError(escapeControlCharacters(name) + ": cannot be read: " + std::strerror(errno));
  }
  return text;
}

/// Prints each trace line. Also passes each call to `timeline`, which may be null.
class TracePrinter final : public PlayListener {
 public:
  TracePrinter(std::ostream& out, Timeline* timeline) : out_(out), timeline_(timeline) {}
  void traceLineAdded(const TraceLine& line) override {
    out_ << traceText(line) << '\n';
    if (timeline_ != nullptr) {
      timeline_->traceLineAdded(line);
    }
  }
  void stateReached(const PlayState& state) override {
    if (timeline_ != nullptr) {
      timeline_->stateReached(state);
    }
  }

 private:
  std::ostream& out_;
  Timeline* timeline_;
};

/// The SVG file that the option `--timeline` names. Construct this object before the scenario is
/// played, so that no trace is printed if the file cannot be opened.
class TimelineFile {
 public:
  /// Throws a UsageError if the file cannot be opened.
  explicit TimelineFile(const std::string& path) : path_(path), file_(path, std::ios::binary) {
    if (!file_) {
      throw UsageError("--timeline: " + escapeControlCharacters(path_) + ": " +
                       std::strerror(errno));
    }
  }

  Timeline& timeline() { return timeline_; }
  void write(const std::string& title) {
    if (!(file_ << timelineSvg(timeline_, title) << std::flush)) {
      throw std::runtime_error("--timeline: " + escapeControlCharacters(path_) +
                               ": cannot be written");
    }
  }

 private:
  std::string path_;
  std::ofstream file_;
  Timeline timeline_;
};

}  // namespace

int play(const PlayOptions& options, std::istream& standardInput, std::ostream& out) {
  const bool isStandardInput = options.file == "-";
  const std::string inputName =
      isStandardInput ? "standard input" : escapeControlCharacters(options.file);
  Scenario scenario;
  try {
    scenario = readScenario(isStandardInput ? readAll(standardInput) : readFile(options.file));
  } catch (const ScenarioError& error) {
    throw UsageError(inputName + ": " + error.what());
  }
  std::optional<TimelineFile> timelineFile;
  if (options.timelinePath) {
    timelineFile.emplace(*options.timelinePath);
  }
  TracePrinter printer(out, timelineFile ? &timelineFile->timeline() : nullptr);
  const PlayOutcome outcome = Player(scenario, printer).play();
  if (!out.flush()) {
    throw std::runtime_error("the trace cannot be written");
  }
  if (timelineFile) {
    timelineFile->write(isStandardInput ? inputName
                                        : std::filesystem::path(options.file).stem().string());
  }
  return outcome == PlayOutcome::PlayedToEnd ? kExitSuccess : kExitPlayAborted;
}

void addPlayCommand(CLI::App& program, CommandFunction& selectedCommand) {
  CLI::App* const command =
      program.add_subcommand("play", "Play a scenario in virtual time and print what happened");
  auto options = std::make_shared<PlayOptions>();
  command->add_option("FILE", options->file, "The scenario, a JSON file, or - for standard input")
      ->required();
  command->add_option("--timeline", options->timelinePath, "Draw the play into this file, as SVG")
      ->type_name("FILE");
  command->callback([options, &selectedCommand] {
    selectedCommand = [options] { return play(*options, std::cin, std::cout); };
  });
}

}  // namespace vel::host
