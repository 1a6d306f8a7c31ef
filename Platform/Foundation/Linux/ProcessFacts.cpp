// The functions of ProcessFacts.h on Linux.
#include "Platform/Foundation/ProcessFacts.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace vel {

std::string_view programName() { return program_invocation_short_name; }

std::uint64_t processId() { return static_cast<std::uint64_t>(getpid()); }

std::uint64_t threadId() { return static_cast<std::uint64_t>(syscall(SYS_gettid)); }

}  // namespace vel
