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
#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace vel::host {

namespace {

constexpr std::size_t kUsualColumns = 80;
constexpr int kLargestSide = 32767;  // what window systems can do
constexpr Nanoseconds kTimeForThePlayer = kNanosecondsPerSecond;

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
  return kExitFailure;
}

int show(const ShowOptions& options) {
  auto events =
      options.eventsPath.empty() ? nullptr : std::make_unique<EventsFile>(options.eventsPath);
  std::string error;
  auto windowSystem = makeWindowSystem(options.display, {}, error);
  if (windowSystem == nullptr) {
    return failed(error);
  }
  // The display in memory has nothing to wait for, and nobody who looks at it.
  const bool isSeen = windowSystem->waitHandle().isValid();

  HostLoop loop;
  NSApplication::start(std::move(windowSystem));
  auto console = makeConsole(options);
  auto session = make<ShowSession>(options, console, std::move(events));
  session->start();
  if (options.canSkip()) {
    loop.onEnter([&session] { session->skip(); });
  }
  int signal = loop.runUntil([&session] { return session->passEnded(); });
  if (signal == 0 && isSeen && !options.window && session->outcome()->status == kExitSuccess) {
    // The user is to see the player come back. Its pictures keep the loop going.
    NSRunLoop& runLoop = NSRunLoop::mainRunLoop();
    const Nanoseconds end = runLoop.now() + kTimeForThePlayer;
    signal = loop.runUntil([&runLoop, &session, end] {
      return runLoop.now() >= end || session->outcome()->status != kExitSuccess;
    });
  }
  session->giveBack();
  NSApplication::stop();
  setNSLogSink(nullptr);
  console->finish();

  if (signal != 0) {
    return kExitSignalBase + signal;
  }
  const ShowOutcome outcome = session->outcome().value_or(ShowOutcome());
  return outcome.status == kExitSuccess ? kExitSuccess : failed(outcome.failure);
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

// "41943045" or "0x2800005", say.
std::uint64_t windowFrom(const std::string& text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  const char* const start = text.data() + (hexadecimal ? 2 : 0);
  const char* const end = text.data() + text.size();
  std::uint64_t window = 0;
  const auto [rest, error] = std::from_chars(start, end, window, hexadecimal ? 16 : 10);
  if (error != std::errc() || rest != end) {
    throw CLI::ValidationError("--window", "'" + text + "' is not a window's id");
  }
  return window;
}

}  // namespace

void addShowCommand(CLI::App& program, CommandRun& chosen) {
  auto options = std::make_shared<ShowOptions>();
  ShowOptions& wanted = *options;
  CLI::App* const command = program.add_subcommand(
      "show", "Play host: show a launch screen over a game's window, from request to event");

  command
      ->add_option("--display", wanted.display, "The window system; auto takes the best there is")
      ->check(CLI::IsMember({"auto", "headless", "x11"}))
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
  CLI::Option* const size =
      command
          ->add_option_function<std::string>(
              "--size", [options](const std::string& text) { options->size = sizeFrom(text); },
              "The size of the player window")
          ->type_name("WIDTHxHEIGHT")
          ->default_str("1280x720");
  command
      ->add_option_function<std::string>(
          "--window", [options](const std::string& text) { options->window = windowFrom(text); },
          "Cover this window of another program instead of a player window (x11)")
      ->type_name("ID")
      ->excludes(size);
  command
      ->add_option("--screenshot", wanted.screenshotPath,
                   "Save the window as a PNG file when half the time is over (x11)")
      ->type_name("FILE.png");
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
    // Only there is another program's window, or anything to be seen.
    const bool needsScreen = options->window || !options->screenshotPath.empty();
    if (needsScreen && options->display == "headless") {
      throw CLI::ValidationError(options->window ? "--window" : "--screenshot",
                                 "needs --display x11");
    }
    if (needsScreen) {
      options->display = "x11";
    }
    chosen = [options] { return show(*options); };
  });
}

}  // namespace vel::host
