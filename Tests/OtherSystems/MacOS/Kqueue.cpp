// Simulates a kqueue of macOS with epoll. Supports only what KqueueWaitSet.cpp needs: a call of
// `kevent` adds or removes one descriptor or timer. It returns no events: KqueueWaitSet.cpp calls
// `poll` to wait until the kqueue is readable.
#include <sys/epoll.h>
#include <sys/event.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <mutex>

namespace {

constexpr std::intptr_t kNanosecondsPerSecond = 1'000'000'000;

int fail(int error) {
  errno = error;
  return -1;
}

int add(int kqueue, int descriptor) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = descriptor;
  return epoll_ctl(kqueue, EPOLL_CTL_ADD, descriptor, &event);
}

int remove(int kqueue, int descriptor) {
  epoll_event unused{};
  return epoll_ctl(kqueue, EPOLL_CTL_DEL, descriptor, &unused);
}

/// The timers of all kqueues. A kqueue has at most one timer, which is a timerfd.
class Timers {
 public:
  int set(int kqueue, const struct kevent& change) {
    if (change.ident != 0 || (change.flags & EV_ONESHOT) == 0 ||
        (change.fflags & NOTE_NSECONDS) == 0 || change.data <= 0) {
      return fail(EINVAL);
    }
    const std::scoped_lock lock(mutex_);
    const auto [entry, isNew] = timers_.try_emplace(kqueue, -1);
    if (isNew) {
      entry->second = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
      add(kqueue, entry->second);
    }
    itimerspec setting{};
    setting.it_value.tv_sec = change.data / kNanosecondsPerSecond;
    setting.it_value.tv_nsec = change.data % kNanosecondsPerSecond;
    return timerfd_settime(entry->second, 0, &setting, nullptr);
  }

  int erase(int kqueue) {
    const std::scoped_lock lock(mutex_);
    const auto entry = timers_.find(kqueue);
    if (entry == timers_.end()) {
      return fail(ENOENT);
    }
    close(entry->second);
    timers_.erase(entry);
    return 0;
  }

 private:
  std::mutex mutex_;
  std::map<int, int> timers_;  // the timerfd of each kqueue that has a timer
};

Timers timers;

}  // namespace

int kqueue() {
  const int descriptor = epoll_create1(0);
  timers.erase(descriptor);  // the timer of a closed kqueue that had the same descriptor
  return descriptor;
}

int kevent(int kqueue, const struct kevent* changes, int changeCount, struct kevent* /*events*/,
           int eventCount, const timespec* /*timeout*/) {
  if (changeCount != 1 || eventCount != 0) {
    return fail(EINVAL);
  }
  const bool isAdded = (changes->flags & EV_ADD) != 0;
  if (changes->filter == EVFILT_TIMER) {
    return isAdded ? timers.set(kqueue, *changes) : timers.erase(kqueue);
  }
  if (changes->filter == EVFILT_READ) {
    const int descriptor = static_cast<int>(changes->ident);
    return isAdded ? add(kqueue, descriptor) : remove(kqueue, descriptor);
  }
  return fail(EINVAL);
}
