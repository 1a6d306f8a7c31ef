#include "Host/Show/EventsFile.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "Host/Command.h"

namespace vel::host {

namespace {

// Returns the current date and time in UTC, in the format of ISO 8601 with milliseconds.
std::string currentDateAndTime() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
  char text[48];
  std::snprintf(text, sizeof text, "%s.%03dZ", date, static_cast<int>(milliseconds));
  return text;
}

}  // namespace

EventsFile::EventsFile(std::string path)
    : path_(std::move(path)), file_(path_, std::ios::out | std::ios::app) {
  if (!file_) {
    throw UsageError("--events: " + path_ + ": " + std::generic_category().message(errno));
  }
}

bool EventsFile::append(std::string_view event, double seconds) {
  const nlohmann::ordered_json line{{"event", event},
                                    {"time", currentDateAndTime()},
                                    {"seconds", std::round(seconds * 1000) / 1000}};
  // JSON must be UTF-8, so `dump` replaces invalid bytes in the name of the event.
  file_ << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
  return file_.good();
}

}  // namespace vel::host
