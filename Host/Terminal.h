// The program's standard streams and terminal. CMake chooses the implementation for the operating
// system.
#pragma once

#include <cstddef>
#include <optional>

namespace vel::host {

/// Opens the null device for each standard stream that is closed. Otherwise the next file that the
/// program opens would become a standard stream.
void openClosedStandardStreams();

/// Returns true if the standard output is a terminal.
[[nodiscard]] bool isOutputTerminal();

/// Returns the width of the terminal in columns. Returns no value if the standard output is not a
/// terminal or if the width is unknown.
[[nodiscard]] std::optional<std::size_t> terminalColumns();

}  // namespace vel::host
