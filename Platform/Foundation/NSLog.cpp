#include "Platform/Foundation/NSLog.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <utility>

#include "Platform/Foundation/ProcessFacts.h"

namespace vel {

namespace {

struct Log {
  std::mutex mutex;
  NSLogSink sink;
};

Log& theLog() {
  // Never destroyed: other threads may log while the process exits.
  static auto& log = *new Log();
  return log;
}

std::string textOf(const NSLogArgument& argument) {
  if (const auto* number = std::get_if<std::uint32_t>(&argument)) {
    return std::to_string(*number);
  }
  return std::string(std::get<std::string_view>(argument));
}

}  // namespace

std::string formatLogLine(std::string_view format, std::initializer_list<NSLogArgument> arguments) {
  std::string line;
  const auto* nextArgument = arguments.begin();
  for (std::size_t index = 0; index < format.size(); ++index) {
    const char nextCharacter = index + 1 < format.size() ? format[index + 1] : '\0';
    if (format[index] != '%') {
      line += format[index];
    } else if (nextCharacter == '%') {
      line += '%';
      ++index;
    } else if ((nextCharacter == '@' || nextCharacter == 's' || nextCharacter == 'u') &&
               nextArgument != arguments.end()) {
      line += textOf(*nextArgument++);
      ++index;
    } else {
      line += '%';
    }
  }
  return line;
}

NSLogSink setNSLogSink(NSLogSink sink) {
  const std::scoped_lock lock(theLog().mutex);
  return std::exchange(theLog().sink, std::move(sink));
}

void writeToStandardSink(std::string_view line) {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm localTime{};
  localtime_r(&seconds, &localTime);
  char prefix[64];
  std::size_t length = std::strftime(prefix, sizeof prefix, "%Y-%m-%d %H:%M:%S", &localTime);
  length += static_cast<std::size_t>(std::snprintf(prefix + length, sizeof prefix - length,
                                                   ".%03d ", static_cast<int>(milliseconds)));
  std::string output(prefix, length);
  output += programName();
  output += '[' + std::to_string(processId()) + ':' + std::to_string(threadId()) + "] ";
  output += line;
  output += '\n';
  // Write the line in one call, so that lines from different threads do not mix.
  std::fwrite(output.data(), 1, output.size(), stderr);
}

void detail::log(std::string_view line) {
  NSLogSink sink;
  {
    const std::scoped_lock lock(theLog().mutex);
    sink = theLog().sink;
  }
  if (sink) {
    sink(line);
  } else {
    writeToStandardSink(line);
  }
}

}  // namespace vel
