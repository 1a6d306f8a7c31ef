#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Foundation/Geometry.h"

namespace vel::host {

/// The options of `show`, with their defaults. The values for the content request stay text,
/// because the library checks them.
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
  /// The id of another program's window to cover. If it has no value, `show` opens a window of its
  /// own.
  std::optional<std::uint64_t> window;
  /// The file for a screenshot. If it is empty, `show` takes no screenshot.
  std::string screenshotPath;
  /// The file for recorded events. If it is empty, `show` writes no file.
  std::string eventsPath;
  /// The time after which to dismiss the launch screen, in seconds.
  std::optional<double> skipAfter;

  [[nodiscard]] bool canSkip() const { return mode == "skip"; }
};

}  // namespace vel::host
