// Replaces <sys/event.h> of macOS in tests on Linux. Declares only what the library uses.
#pragma once
#pragma GCC system_header  // suppresses a warning: `kevent` is a structure and a function

#include <cstdint>
#include <ctime>

struct kevent {
  std::uintptr_t ident;
  std::int16_t filter;
  std::uint16_t flags;
  std::uint32_t fflags;
  std::intptr_t data;
  void* udata;
};

inline constexpr std::int16_t EVFILT_READ = -1;
inline constexpr std::int16_t EVFILT_TIMER = -7;
inline constexpr std::uint16_t EV_ADD = 1;
inline constexpr std::uint16_t EV_DELETE = 2;
inline constexpr std::uint16_t EV_ONESHOT = 16;
inline constexpr std::uint32_t NOTE_NSECONDS = 4;
inline constexpr std::uint32_t NOTE_CRITICAL = 32;

int kqueue();
int kevent(int queue, const struct kevent* changes, int changeCount, struct kevent* events,
           int eventCount, const timespec* timeout);
