#include "Host/Show/ShowCommand.h"

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
#include "Host/Terminal.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace vel::host {

namespace {

constexpr std::size_t kDefaultColumns = 80;
constexpr int kMaximumSide = 32767;  // the maximum width and height of an X11 window
// The player window is the window that the launch screen covers. If this command has opened the
// player window, the window stays open for this time after the end of the launch screen.
constexpr Nanoseconds kPlayerWindowTimeAfterEnd = kNanosecondsPerSecond;

std::shared_ptr<Console> makeConsole(const ShowOptions& options) {
  if (!isOutputTerminal()) {
    return std::make_shared<LineConsole>(std::cout);
  }
  auto console = std::make_shared<LiveConsole>(
      std::cout, [] { return terminalColumns().value_or(kDefaultColumns); },
      options.canSkip() ? "press Enter to dismiss" : "");
  // The console erases its unfinished line, because a log line usually goes to the same terminal.
  setNSLogSink([console](std::string_view line) {
    console->clearLine();
    writeToStandardSink(line);
  });
  return console;
}

// Returns the exit status. `failure` is empty if the library has logged the reason.
int reportFailure(const std::string& failure) {
  if (!failure.empty()) {
    std::cerr << "launchscreen: " << failure << std::endl;
  }
  return kExitFailure;
}

int show(const ShowOptions& options) {
  auto events =
      options.eventsPath.empty() ? nullptr : std::make_unique<EventsFile>(options.eventsPath);
  std::string error;
  auto windowSystem = makeWindowSystem(options.display, /*displayName=*/{}, error);
  if (windowSystem == nullptr) {
    return reportFailure(error);
  }
  // A window system with a screen has a descriptor or a deadline. The headless window system
  // has neither.
  const bool hasScreen =
      windowSystem->waitHandle().isValid() || windowSystem->nextDeadline() != kNever;

  HostLoop loop;
  NSApplication::start(std::move(windowSystem));
  auto console = makeConsole(options);
  auto session = make<ShowSession>(options, console, std::move(events));
  session->start();
  if (options.canSkip()) {
    loop.setEnterHandler([&session] { session->skip(); });
  }
  // `update` returns true when the session has an outcome.
  int signal = loop.runUntil([&session] { return session->update(); });
  const bool hasOpenedWindow = !options.window;
  if (signal == 0 && hasScreen && hasOpenedWindow && session->outcome()->status == kExitSuccess) {
    // The animation in the player window wakes the loop, so this wait needs no timer. If the
    // display is lost during the wait, the outcome becomes a failure.
    NSRunLoop& runLoop = NSRunLoop::mainRunLoop();
    const Nanoseconds end = runLoop.now() + kPlayerWindowTimeAfterEnd;
    signal = loop.runUntil([&runLoop, &session, end] {
      return runLoop.now() >= end || session->outcome()->status != kExitSuccess;
    });
  }
  session->shutDown();
  NSApplication::stop();
  setNSLogSink(nullptr);
  console->finish();

  if (signal != 0) {
    return kExitSignalBase + signal;
  }
  const ShowOutcome outcome = *session->outcome();
  return outcome.status == kExitSuccess ? kExitSuccess : reportFailure(outcome.failure);
}

// Parses a size such as "1280x720".
CGSize parseSize(const std::string& text) {
  int width = 0;
  int height = 0;
  const char* const end = text.data() + text.size();
  const auto [separator, widthError] = std::from_chars(text.data(), end, width);
  if (widthError == std::errc() && separator != end && *separator == 'x') {
    const auto [rest, heightError] = std::from_chars(separator + 1, end, height);
    if (heightError == std::errc() && rest == end && width > 0 && height > 0 &&
        width <= kMaximumSide && height <= kMaximumSide) {
      return {static_cast<double>(width), static_cast<double>(height)};
    }
  }
  throw CLI::ValidationError("--size", "'" + text + "' is not WIDTHxHEIGHT, each from 1 to " +
                                           std::to_string(kMaximumSide));
}

// Parses a window id such as "41943045" or "0x2800005".
std::uint64_t parseWindow(const std::string& text) {
  const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
  const char* const start = text.data() + (isHexadecimal ? 2 : 0);
  const char* const end = text.data() + text.size();
  std::uint64_t window = 0;
  const auto [rest, error] = std::from_chars(start, end, window, isHexadecimal ? 16 : 10);
  if (error != std::errc() || rest != end) {
    throw CLI::ValidationError("--window", "'" + text + "' is not a window's id");
  }
  return window;
}

void addLaunchScreenOptions(CLI::App& command, ShowOptions& options) {
  command.add_option("--mode", options.mode, "Whether the launch screen may be closed early")
      ->check(CLI::IsMember({"forced", "skip"}))
      ->type_name("MODE")
      ->capture_default_str();
  command.add_option("--event", options.event, "The event to record at the end")
      ->type_name("NAME")
      ->capture_default_str();
  command
      .add_option("--duration", options.duration,
                  "The time that the launch screen stays, counted while it is in front")
      ->type_name("SECONDS")
      ->capture_default_str();
  command.add_option("--present", options.presentation, "How to present the launch screen")
      ->check(CLI::IsMember({"embedded", "modal", "sheet"}))
      ->type_name("HOW")
      ->capture_default_str();
}

void addWindowOptions(CLI::App& command, ShowOptions& options) {
  command
      .add_option(
          "--display", options.display,
          "The window system; auto tries wayland, then cocoa (on macOS) or x11 (elsewhere), "
          "then headless")
      ->check(CLI::IsMember({"auto", "cocoa", "headless", "wayland", "x11"}))
      ->type_name("NAME")
      ->capture_default_str();
  command.add_flag("--content-controller", options.hasContentController,
                   "Give the player window a content view controller");
  command.add_flag("--indicator", options.hasIndicator, "Show an indicator on the launch screen");
  CLI::Option* const size =
      command
          .add_option_function<std::string>(
              "--size", [&options](const std::string& text) { options.size = parseSize(text); },
              "The size of the player window")
          ->type_name("WIDTHxHEIGHT")
          ->default_str("1280x720");
  command
      .add_option_function<std::string>(
          "--window", [&options](const std::string& text) { options.window = parseWindow(text); },
          "Cover this window of another program instead of a player window (x11)")
      ->type_name("ID")
      ->excludes(size);
}

void addFileAndSkipOptions(CLI::App& command, ShowOptions& options) {
  command
      .add_option("--screenshot", options.screenshotPath,
                  "Save the window as a PNG file when half of --duration has passed (x11)")
      ->type_name("FILE.png");
  command
      .add_option("--events", options.eventsPath,
                  "Append each recorded event to a file, as a line of JSON")
      ->type_name("FILE");
  command
      .add_option_function<double>(
          "--skip-after",
          [&options](double seconds) {
            if (!std::isfinite(seconds) || seconds < 0) {
              throw CLI::ValidationError("--skip-after",
                                         "needs a number of seconds that is 0 or more");
            }
            options.skipAfter = seconds;
          },
          "In skip mode: dismiss the launch screen after this time, or earlier on Enter")
      ->type_name("SECONDS");
}

// Checks the options that depend on other options. Replaces the display "auto" with "x11" if an
// option needs X11.
void checkOptions(ShowOptions& options) {
  if (options.skipAfter && !options.canSkip()) {
    throw CLI::ValidationError("--skip-after", "needs --mode skip");
  }
  const bool needsX11 = options.window || !options.screenshotPath.empty();
  if (needsX11 && options.display != "auto" && options.display != "x11") {
    throw CLI::ValidationError(options.window ? "--window" : "--screenshot", "needs --display x11");
  }
  if (needsX11) {
    options.display = "x11";
  }
}

}  // namespace

void addShowCommand(CLI::App& program, CommandFunction& selectedCommand) {
  // The options must outlive this function, because CLI11 writes to the options when it parses the
  // command line.
  auto options = std::make_shared<ShowOptions>();
  CLI::App* const command = program.add_subcommand(
      "show", "Show a launch screen over a game's window, and record an event when it ends");
  addLaunchScreenOptions(*command, *options);
  addWindowOptions(*command, *options);
  addFileAndSkipOptions(*command, *options);
  command->final_callback([options, &selectedCommand] {
    checkOptions(*options);
    selectedCommand = [options] { return show(*options); };
  });
}

}  // namespace vel::host
