// Linux implementations of macOS functions.
#include "Tests/OtherSystems/MacOS/ProcessFunctions.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

const char* getprogname() { return program_invocation_short_name; }

int pthread_threadid_np(pthread_t /*thread*/, std::uint64_t* id) {
  *id = static_cast<std::uint64_t>(syscall(SYS_gettid));
  return 0;
}
