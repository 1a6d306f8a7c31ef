#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <system_error>

#include "Platform/Foundation/Clock.h"

namespace vel {

namespace {

/// A file descriptor that is closed at the end.
class Descriptor {
 public:
  Descriptor(int descriptor, const char* what) : descriptor_(descriptor) {
    if (descriptor < 0) {
      throw std::system_error(errno, std::generic_category(), what);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor(Descriptor&&) = delete;
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() { close(descriptor_); }

  [[nodiscard]] int get() const { return descriptor_; }

 private:
  int descriptor_;
};

// What other threads have to know of the loop.
constexpr unsigned kIdle = 1;       // between passes: a wake-up has to be signalled
constexpr unsigned kWoken = 2;      // one came since the pass began
constexpr unsigned kSignalled = 4;  // there is something to read, or about to be

/// One epoll descriptor over three: the wake-ups of other threads, the timer armed for the next
/// deadline, and the window system's connection. The loop waits on it, and so can a host.
class RealClock final : public Clock {
 public:
  RealClock()
      : epoll_(epoll_create1(EPOLL_CLOEXEC), "epoll_create1"),
        wakeUps_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd"),
        timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK), "timerfd_create") {
    control(EPOLL_CTL_ADD, wakeUps_.get());
    control(EPOLL_CTL_ADD, timer_.get());
  }

  [[nodiscard]] Nanoseconds now() const override {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  }

  void waitUntil(Nanoseconds deadline) override {
    passEnded(deadline);
    epoll_event event{};
    // An interrupted wait (a signal) returns like any other: the loop looks what there is to do.
    epoll_wait(epoll_.get(), &event, 1, -1);
  }
  [[nodiscard]] bool canWaitForEver() const override { return true; }

  void wake() override {
    if ((state_.fetch_or(kWoken) & kIdle) != 0) {
      signal();
    }
  }

  void passBegan() override {
    if ((state_.fetch_and(kSignalled) & kSignalled) != 0) {
      // Where the signal is still on its way the mark stays, and a later pass takes both back.
      std::uint64_t count = 0;
      if (read(wakeUps_.get(), &count, sizeof count) > 0) {
        state_.fetch_and(~kSignalled);
      }
    }
  }

  [[nodiscard]] bool isPolled() const override { return polled_; }

  void passEnded(Nanoseconds deadline) override {
    arm(deadline);
    // A wake-up that came before we were idle has not been signalled.
    if ((state_.fetch_or(kIdle) & kWoken) != 0) {
      signal();
    }
  }

  [[nodiscard]] int descriptor() override {
    if (!polled_) {
      polled_ = true;
      signal();  // the pass that this asks for brings it up to date
    }
    return epoll_.get();
  }

  void watch(int descriptor) override {
    if (watched_ >= 0) {
      // Fails where the descriptor has been closed, which took it out already.
      epoll_event none{};
      epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, watched_, &none);
    }
    watched_ = descriptor;
    if (watched_ >= 0) {
      control(EPOLL_CTL_ADD, watched_);
    }
  }

 private:
  void control(int operation, int descriptor) const {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    if (epoll_ctl(epoll_.get(), operation, descriptor, &event) < 0) {
      throw std::system_error(errno, std::generic_category(), "epoll_ctl");
    }
  }

  void signal() {
    // Marked first: the loop, which the write makes run, has to find the mark.
    if ((state_.fetch_or(kSignalled) & kSignalled) == 0) {
      const std::uint64_t one = 1;
      [[maybe_unused]] const auto size = write(wakeUps_.get(), &one, sizeof one);
    }
  }

  void arm(Nanoseconds deadline) {
    if (deadline == armed_) {
      return;
    }
    armed_ = deadline;
    itimerspec when{};
    if (deadline != kNever) {
      // 0 would disarm the timer; the past is as good as 1 ns.
      const Nanoseconds moment = deadline > 0 ? deadline : 1;
      when.it_value.tv_sec = moment / kNanosecondsPerSecond;
      when.it_value.tv_nsec = moment % kNanosecondsPerSecond;
    }
    timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME, &when, nullptr);
  }

  Descriptor epoll_;
  Descriptor wakeUps_;
  Descriptor timer_;
  int watched_ = -1;
  Nanoseconds armed_ = kNever;
  bool polled_ = false;
  std::atomic<unsigned> state_ = 0;
};

}  // namespace

std::unique_ptr<Clock> makeRealClock() { return std::make_unique<RealClock>(); }

}  // namespace vel
