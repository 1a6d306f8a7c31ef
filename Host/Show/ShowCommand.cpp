#include "Host/Show/ShowCommand.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "Host/Show/Console.h"
#include "Host/Show/EventsFile.h"
#include "Host/Show/HostLoop.h"
#include "Host/Show/ShowSession.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace vel::host {

namespace {

constexpr std::size_t kUsualColumns = 80;
constexpr int kLargestSide = 32767;  // what window systems can do

std::size_t terminalColumns() {
  winsize size{};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kUsualColumns;
}

std::shared_ptr<Console> makeConsole(const ShowOptions& options) {
  if (isatty(STDOUT_FILENO) == 0) {
    return std::make_shared<LineConsole>(std::cout);
  }
  auto console = std::make_shared<LiveConsole>(std::cout, terminalColumns,
                                               options.canSkip() ? "press Enter to dismiss" : "");
  // Log lines are likely to go to the same terminal.
  setNSLogSink([console](std::string_view line) {
    console->makeWay();
    writeLogLine(line);
  });
  return console;
}

int failed(const std::string& failure) {
  if (!failure.empty()) {
    std::cerr << "launchscreen: " << failure << std::endl;
  }
  return kExitRefused;
}

int show(const ShowOptions& options) {
  auto events =
      options.eventsPath.empty() ? nullptr : std::make_unique<EventsFile>(options.eventsPath);
  std::string error;
  auto windowSystem = makeWindowSystem(options.display, {}, error);
  if (windowSystem == nullptr) {
    return failed(error);
  }

  HostLoop loop;
  NSApplication::start(std::move(windowSystem));
  auto console = makeConsole(options);
  auto session = make<ShowSession>(options, console, std::move(events));
  session->start();
  if (options.canSkip()) {
    loop.onEnter([&session] { session->skip(); });
  }
  const int signal = loop.runUntil([&session] { return session->passEnded(); });
  session->giveBack();
  NSApplication::stop();
  setNSLogSink(nullptr);
  console->finish();

  if (signal != 0) {
    return kExitSignalled + signal;
  }
  const ShowOutcome outcome = session->outcome().value_or(ShowOutcome());
  return outcome.status == kExitEnded ? kExitEnded : failed(outcome.failure);
}

// "1280x720", say; both sides positive.
CGSize sizeFrom(const std::string& text) {
  int width = 0;
  int height = 0;
  const char* const end = text.data() + text.size();
  const auto [cross, widthError] = std::from_chars(text.data(), end, width);
  if (widthError == std::errc() && cross != end && *cross == 'x') {
    const auto [rest, heightError] = std::from_chars(cross + 1, end, height);
    if (heightError == std::errc() && rest == end && width > 0 && height > 0 &&
        width <= kLargestSide && height <= kLargestSide) {
      return {static_cast<double>(width), static_cast<double>(height)};
    }
  }
  throw CLI::ValidationError("--size", "'" + text + "' is not WIDTHxHEIGHT, each from 1 to " +
                                           std::to_string(kLargestSide));
}

}  // namespace

void addShowCommand(CLI::App& program, CommandRun& chosen) {
  auto options = std::make_shared<ShowOptions>();
  ShowOptions& wanted = *options;
  CLI::App* const command = program.add_subcommand(
      "show", "Play host: show a launch screen over a player window, from request to event");

  command
      ->add_option("--display", wanted.display, "The window system; auto takes the best there is")
      ->check(CLI::IsMember({"auto", "headless"}))
      ->type_name("NAME")
      ->capture_default_str();
  command->add_option("--mode", wanted.mode, "Whether the launch screen may be closed early")
      ->check(CLI::IsMember({"forced", "skip"}))
      ->type_name("MODE")
      ->capture_default_str();
  command->add_option("--event", wanted.event, "The event to record at the end")
      ->type_name("NAME")
      ->capture_default_str();
  command->add_option("--duration", wanted.duration, "How long it stays up while it is in front")
      ->type_name("SECONDS")
      ->capture_default_str();
  command->add_option("--present", wanted.presentation, "How it is presented")
      ->check(CLI::IsMember({"embedded", "modal", "sheet"}))
      ->type_name("HOW")
      ->capture_default_str();
  command->add_flag("--content-controller", wanted.contentController,
                    "Give the player window a content view controller");
  command->add_flag("--indicator", wanted.indicator, "Let an indicator spin on the launch screen");
  command
      ->add_option_function<std::string>(
          "--size", [options](const std::string& text) { options->size = sizeFrom(text); },
          "The size of the player window")
      ->type_name("WIDTHxHEIGHT")
      ->default_str("1280x720");
  command->add_option("--events", wanted.eventsPath, "Append recorded events, a line of JSON each")
      ->type_name("FILE");
  command
      ->add_option_function<double>(
          "--skip-after",
          [options](double seconds) {
            if (!std::isfinite(seconds) || seconds < 0) {
              throw CLI::ValidationError("--skip-after", "not a number of seconds from 0 up");
            }
            options->skipAfter = seconds;
          },
          "In skip mode: dismiss it then, unless Enter comes first")
      ->type_name("SECONDS");
  command->final_callback([options, &chosen] {
    if (options->skipAfter && !options->canSkip()) {
      throw CLI::ValidationError("--skip-after", "needs --mode skip");
    }
    chosen = [options] { return show(*options); };
  });
}

}  // namespace vel::host
