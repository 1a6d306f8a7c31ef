#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Foundation/Geometry.h"

namespace vel::host {

/// What the user asked `show` for; the values here are what stands where nothing was said. What
/// goes into the content request is kept as text: it is the library's to judge.
struct ShowOptions {
  std::string display = "auto";
  std::string mode = "forced";
  std::string event = "launch_end";
  std::string duration = "5";
  /// "embedded", "modal" or "sheet".
  std::string presentation = "embedded";
  bool contentController = false;
  bool indicator = false;
  CGSize size{1280, 720};
  /// The window system's id of another program's window to cover, instead of one of our own.
  std::optional<std::uint64_t> window;
  /// Empty for none.
  std::string screenshotPath;
  /// Empty for none.
  std::string eventsPath;
  /// Seconds.
  std::optional<double> skipAfter;

  [[nodiscard]] bool canSkip() const { return mode == "skip"; }
};

}  // namespace vel::host
