#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

#include "Platform/Foundation/Export.h"

namespace vel {

/// An argument of a log format: a string for %@ and %s, a 32-bit number for %u.
using NSLogArgument = std::variant<std::string_view, std::uint32_t>;

/// Formats a log line: replaces each %@, %s and %u by the next argument, and %% by a percent sign.
/// A specifier that has no argument stays in the line.
[[nodiscard]] VEL_EXPORT std::string formatLogLine(std::string_view format,
                                                   std::initializer_list<NSLogArgument> arguments);

/// Receives each log line. The line does not include the date, process or thread.
using NSLogSink = std::function<void(std::string_view line)>;

/// Replaces the sink for log lines and returns the previous sink. An empty sink means the
/// standard sink, which writes "date time process[pid:thread] line" to standard error. Any thread
/// may call this function.
VEL_EXPORT NSLogSink setNSLogSink(NSLogSink sink);

/// Writes a line to the standard sink, even if another sink is set.
VEL_EXPORT void writeToStandardSink(std::string_view line);

namespace detail {

VEL_EXPORT void log(std::string_view line);

}  // namespace detail

/// Formats a line and passes it to the sink. Any thread may call this function.
template <class... Arguments>
void NSLog(std::string_view format, const Arguments&... arguments) {
  detail::log(formatLogLine(format, {NSLogArgument(arguments)...}));
}

}  // namespace vel
