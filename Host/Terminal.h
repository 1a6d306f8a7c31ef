// The terminal that the program writes to. CMake chooses the source file for the operating system.
#pragma once

#include <cstddef>
#include <optional>

namespace vel::host {

/// Opens the null device for each standard stream that is closed. Otherwise the next file that the
/// program opens would become a standard stream.
void openClosedStandardStreams();

/// Returns true if the standard output is a terminal.
[[nodiscard]] bool isOutputTerminal();

/// The width of the terminal, or no value if the standard output is not a terminal or has no known
/// width.
[[nodiscard]] std::optional<std::size_t> terminalColumns();

}  // namespace vel::host
