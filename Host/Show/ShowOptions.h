#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Foundation/Geometry.h"

namespace vel::host {

/// The options of the command `launchscreen show`. The player window is the window that the launch
/// screen covers. `mode`, `event` and `duration` are strings, as in the request to the library.
struct ShowOptions {
  /// "auto", "cocoa", "headless", "wayland" or "x11".
  std::string display = "auto";
  /// "forced" or "skip". In "skip" mode, the user can dismiss the launch screen.
  std::string mode = "forced";
  /// The name of the analytics event that the library records when the launch screen has ended.
  /// In "skip" mode, the library records no event.
  std::string event = "launch_end";
  /// The duration of the launch screen's countdown, in seconds. The countdown pauses while the
  /// launch screen is not in front.
  std::string duration = "5";
  /// "embedded", "modal" or "sheet".
  std::string presentation = "embedded";
  /// True if the command gives the player window a content view controller.
  bool hasContentController = false;
  /// True if the launch screen shows an activity indicator.
  bool hasIndicator = false;
  /// The size of a player window that the command opens, in points.
  CGSize size{1280, 720};
  /// The id of another program's window to use as the player window. Without a value, the command
  /// opens a player window.
  std::optional<std::uint64_t> window;
  /// The path of the file for a screenshot. If the path is empty, the command takes no screenshot.
  std::string screenshotPath;
  /// The path of the file for recorded events. If the path is empty, the command writes no file.
  std::string eventsPath;
  /// If set, the command dismisses the launch screen this number of seconds after presenting it.
  /// Needs "skip" mode.
  std::optional<double> skipAfter;

  [[nodiscard]] bool canSkip() const { return mode == "skip"; }
};

}  // namespace vel::host
