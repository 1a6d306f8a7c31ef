#pragma once

#include <fstream>
#include <string>
#include <string_view>

namespace vel::host {

/// A file with a line of JSON for each analytics event that the library records.
class EventsFile {
 public:
  /// Opens or creates the file. Throws a UsageError if the file cannot be opened for writing.
  explicit EventsFile(std::string path);

  /// Appends a line with the name of the event, the current date and time, and `seconds`: the time
  /// since `launchscreen show` requested the content of the launch screen. Returns false if writing
  /// fails, for example on a full disk.
  [[nodiscard]] bool append(std::string_view event, double seconds);

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::ofstream file_;
};

}  // namespace vel::host
