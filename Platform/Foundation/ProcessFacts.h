// Facts about the process, for log lines. Each operating system has its own implementation. Any
// thread may call these functions.
#pragma once

#include <cstdint>
#include <string_view>

namespace vel {

/// The file name of the program, without its folder. Valid until the process ends.
[[nodiscard]] std::string_view programName();
[[nodiscard]] std::uint64_t processId();
/// The system's id of the calling thread.
[[nodiscard]] std::uint64_t threadId();

}  // namespace vel
