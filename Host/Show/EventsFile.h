#pragma once

#include <fstream>
#include <string>
#include <string_view>

namespace vel::host {

/// A file that recorded events are appended to, a line of JSON each.
class EventsFile {
 public:
  /// Opens the file, which need not exist yet. Throws UsageError where it cannot be written to.
  explicit EventsFile(std::string path);

  /// Appends an event: its name, the time of day in UTC, and `time`, the seconds since the
  /// beginning. False where that failed, on a full disk for instance.
  [[nodiscard]] bool append(std::string_view event, double time);

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::ofstream file_;
};

}  // namespace vel::host
