// The functions of ProcessFacts.h on macOS.
#include "Platform/Foundation/ProcessFacts.h"

#include <pthread.h>
#include <unistd.h>

#include <cstdlib>

namespace vel {

std::string_view programName() { return getprogname(); }

std::uint64_t processId() { return static_cast<std::uint64_t>(getpid()); }

std::uint64_t threadId() {
  std::uint64_t thread = 0;
  pthread_threadid_np(pthread_self(), &thread);
  return thread;
}

}  // namespace vel
