#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Foundation/Geometry.h"

namespace vel::host {

/// The options of `launchscreen show`, with their defaults. The values for the content request stay
/// strings, because the library checks the strings.
struct ShowOptions {
  std::string display = "auto";
  std::string mode = "forced";
  std::string event = "launch_end";
  std::string duration = "5";
  /// "embedded", "modal" or "sheet".
  std::string presentation = "embedded";
  bool hasContentController = false;
  bool hasIndicator = false;
  CGSize size{1280, 720};
  /// The id of another program's window to cover. Without a value, the command opens its own
  /// window.
  std::optional<std::uint64_t> window;
  /// The path of the file for a screenshot. If the path is empty, the command takes no screenshot.
  std::string screenshotPath;
  /// The path of the file for recorded events. If the path is empty, the command writes no file.
  std::string eventsPath;
  /// The time after which the command dismisses the launch screen, in seconds.
  std::optional<double> skipAfter;

  [[nodiscard]] bool canSkip() const { return mode == "skip"; }
};

}  // namespace vel::host
