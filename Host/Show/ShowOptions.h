#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Foundation/Geometry.h"

namespace vel::host {

/// The options of `launchscreen show`, with their defaults. The values for the content request
/// (`mode`, `event` and `duration`) are strings, because the library checks them.
struct ShowOptions {
  /// "auto", "cocoa", "headless", "wayland" or "x11".
  std::string display = "auto";
  /// "forced" or "skip".
  std::string mode = "forced";
  /// The name of the analytics event that the library records when the launch screen has ended.
  /// In the mode "skip", the library records no event.
  std::string event = "launch_end";
  /// How long the launch screen is shown, in seconds. Counted while the launch screen is in front.
  std::string duration = "5";
  /// "embedded", "modal" or "sheet".
  std::string presentation = "embedded";
  /// True if the player window has a content view controller.
  bool hasContentController = false;
  /// True if the launch screen shows an activity indicator.
  bool hasIndicator = false;
  /// The size of the window that the command opens, in points.
  CGSize size{1280, 720};
  /// The id of another program's window to cover. Without a value, the command opens its own
  /// window.
  std::optional<std::uint64_t> window;
  /// The path of the file for a screenshot. If the path is empty, the command takes no screenshot.
  std::string screenshotPath;
  /// The path of the file for recorded events. If the path is empty, the command writes no file.
  std::string eventsPath;
  /// The time from the presentation of the launch screen until the command dismisses it, in
  /// seconds. Needs the mode "skip".
  std::optional<double> skipAfter;

  [[nodiscard]] bool canSkip() const { return mode == "skip"; }
};

}  // namespace vel::host
