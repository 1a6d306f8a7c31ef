#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

#include "Platform/Foundation/Export.h"

namespace vel {

/// A value for one place of a log format: a text for %@ and %s, a 32-bit number for %u.
using NSLogArgument = std::variant<std::string_view, std::uint32_t>;

/// The text of a log line: each %@, %s and %u of the format replaced by the next argument, %% by a
/// percent sign. A place without an argument stays as it is.
[[nodiscard]] VEL_EXPORT std::string formatLogLine(std::string_view format,
                                                   std::initializer_list<NSLogArgument> arguments);

/// Takes a log line, without date or process.
using NSLogSink = std::function<void(std::string_view line)>;

/// Replaces where log lines go and answers the sink that stood before; an empty one stands for the
/// standard one, which writes "date time process[pid:thread] line" to standard error. Any thread.
VEL_EXPORT NSLogSink setNSLogSink(NSLogSink sink);

/// Writes a line to the standard sink, whatever sink is set.
VEL_EXPORT void writeLogLine(std::string_view line);

namespace detail {

VEL_EXPORT void log(std::string_view line);

}  // namespace detail

/// Logs one line. Any thread.
template <class... Arguments>
void NSLog(std::string_view format, const Arguments&... arguments) {
  detail::log(formatLogLine(format, {NSLogArgument(arguments)...}));
}

}  // namespace vel
