#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "Platform/Foundation/Posix/FileDescriptor.h"
#include "Platform/Foundation/WaitSet.h"

namespace vel {

namespace {

/// Waits with epoll for three descriptors: an eventfd for wake-ups, a timerfd for the deadline, and
/// the descriptor of the watched handle.
class EpollWaitSet final : public WaitSet {
 public:
  EpollWaitSet()
      : epoll_(epoll_create1(EPOLL_CLOEXEC), "epoll_create1"),
        eventfd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd"),
        timerfd_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK), "timerfd_create") {
    add(eventfd_.get());
    add(timerfd_.get());
  }

  void watch(WaitHandle handle) override {
    if (watchedHandle_.isValid()) {
      // Ignores the error for a closed descriptor: `close` has removed it from the epoll set.
      epoll_event unused{};
      epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, watchedHandle_.descriptor(), &unused);
    }
    watchedHandle_ = handle;
    if (watchedHandle_.isValid()) {
      add(watchedHandle_.descriptor());
    }
  }

  void setDeadline(Nanoseconds deadline) override {
    if (deadline == deadline_) {
      return;
    }
    deadline_ = deadline;
    itimerspec setting{};
    if (deadline != kNever) {
      // 0 would disarm the timer. Any time in the past makes the timer expire immediately.
      const Nanoseconds expiry = deadline > 0 ? deadline : 1;
      setting.it_value.tv_sec = expiry / kNanosecondsPerSecond;
      setting.it_value.tv_nsec = expiry % kNanosecondsPerSecond;
    }
    timerfd_settime(timerfd_.get(), TFD_TIMER_ABSTIME, &setting, nullptr);
  }

  void wait() override {
    epoll_event event{};
    epoll_wait(epoll_.get(), &event, 1, -1);
  }

  void wake() override {
    // Sets `isSignalled_` before the write. In the other order, `acknowledgeWakeUps` could see the
    // old value after the write and leave the eventfd readable.
    if (!isSignalled_.exchange(true)) {
      const std::uint64_t one = 1;
      [[maybe_unused]] const auto size = write(eventfd_.get(), &one, sizeof one);
    }
  }

  void acknowledgeWakeUps() override {
    if (isSignalled_) {
      // The read fails if another thread has set `isSignalled_` but has not written yet. Then
      // `isSignalled_` stays true, and a later call reads again.
      std::uint64_t count = 0;
      if (read(eventfd_.get(), &count, sizeof count) > 0) {
        isSignalled_ = false;
      }
    }
  }

  [[nodiscard]] WaitHandle handle() const override { return WaitHandle(epoll_.get()); }

 private:
  void add(int descriptor) const {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    if (epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, descriptor, &event) < 0) {
      throw std::system_error(errno, std::generic_category(), "epoll_ctl");
    }
  }

  FileDescriptor epoll_;
  FileDescriptor eventfd_;
  FileDescriptor timerfd_;
  WaitHandle watchedHandle_;
  Nanoseconds deadline_ = kNever;
  std::atomic<bool> isSignalled_ = false;
};

}  // namespace

std::unique_ptr<WaitSet> makeWaitSet() { return std::make_unique<EpollWaitSet>(); }

}  // namespace vel
