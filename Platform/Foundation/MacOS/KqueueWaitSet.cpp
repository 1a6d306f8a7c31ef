#include <fcntl.h>
#include <poll.h>
#include <sys/event.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <system_error>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Posix/FileDescriptor.h"
#include "Platform/Foundation/WaitSet.h"

namespace vel {

namespace {

Nanoseconds steadyTime() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// A pipe with non-blocking ends. Both ends are closed on exec.
class Pipe : NonCopyable {
 public:
  Pipe() : Pipe(make()) {}

  [[nodiscard]] int readEnd() const { return readEnd_.get(); }
  [[nodiscard]] int writeEnd() const { return writeEnd_.get(); }

 private:
  struct Ends {
    std::array<int, 2> descriptors;
    int result;  // the return value of `pipe`
  };

  static Ends make() {
    Ends ends{};
    ends.result = pipe(ends.descriptors.data());
    if (ends.result == 0) {
      for (const int descriptor : ends.descriptors) {
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
        fcntl(descriptor, F_SETFL, O_NONBLOCK);
      }
    }
    return ends;
  }
  // If `pipe` has failed, the constructor of `readEnd_` receives -1 and throws.
  explicit Pipe(const Ends& ends)
      : readEnd_(ends.result < 0 ? -1 : ends.descriptors[0], "pipe"),
        writeEnd_(ends.descriptors[1], "pipe") {}

  FileDescriptor readEnd_;
  FileDescriptor writeEnd_;
};

/// A kqueue that waits for three sources: a pipe for wake-ups, a timer for the deadline, and the
/// watched handle. The kqueue is readable while it contains an event. `wait` takes no events from
/// the kqueue, so that it stays readable after the deadline. An event ends when the pipe is empty,
/// when the handle has no input left, or when `setDeadline` deletes the timer.
class KqueueWaitSet final : public WaitSet {
 public:
  KqueueWaitSet() : kqueue_(kqueue(), "kqueue") {
    fcntl(kqueue_.get(), F_SETFD, FD_CLOEXEC);
    addDescriptor(pipe_.readEnd());
  }

  void watch(WaitHandle handle) override {
    if (watchedHandle_.isValid()) {
      // If the descriptor is already closed, this call fails, which does no harm: `close` has
      // already removed the descriptor from the kqueue.
      change(kqueue_.get(), watchedHandle_.descriptor(), EVFILT_READ, EV_DELETE);
    }
    watchedHandle_ = handle;
    if (watchedHandle_.isValid()) {
      addDescriptor(watchedHandle_.descriptor());
    }
  }

  void setDeadline(Nanoseconds deadline) override {
    if (deadline == deadline_) {
      return;
    }
    if (deadline_ != kNever) {
      change(kqueue_.get(), kTimer, EVFILT_TIMER, EV_DELETE);
    }
    deadline_ = deadline;
    if (deadline_ != kNever) {
      const Nanoseconds now = steadyTime();
      const Nanoseconds timeLeft = deadline_ > now ? deadline_ - now : 1;
      // Without NOTE_CRITICAL, the system may delay the timer to save energy.
      change(kqueue_.get(), kTimer, EVFILT_TIMER, EV_ADD | EV_ONESHOT,
             NOTE_NSECONDS | NOTE_CRITICAL, timeLeft);
    }
  }

  void wait() override {
    pollfd polled{kqueue_.get(), POLLIN, 0};
    poll(&polled, 1, -1);
  }

  void wake() override {
    // Sets `isSignalled_` before the write. In the other order, `acknowledgeWakeUps` could run
    // between the two steps and skip its read. The byte would then also end the next wait.
    if (!isSignalled_.exchange(true)) {
      const char byte = 0;
      [[maybe_unused]] const auto size = write(pipe_.writeEnd(), &byte, 1);
    }
  }

  void acknowledgeWakeUps() override {
    if (isSignalled_) {
      // The read fails if another thread has set `isSignalled_` but has not written yet. Then
      // `isSignalled_` stays true, and a later call reads again.
      char byte = 0;
      if (read(pipe_.readEnd(), &byte, 1) > 0) {
        isSignalled_ = false;
      }
    }
  }

  [[nodiscard]] WaitHandle handle() const override { return WaitHandle(kqueue_.get()); }

 private:
  static constexpr int kTimer = 0;  // the id of the only timer in the kqueue

  // Returns false if the change fails.
  static bool change(int kqueue, int source, std::int16_t filter, std::uint16_t flags,
                     std::uint32_t filterFlags = 0, Nanoseconds data = 0) {
    struct kevent event {};
    event.ident = static_cast<std::uintptr_t>(source);
    event.filter = filter;
    event.flags = flags;
    event.fflags = filterFlags;
    event.data = static_cast<std::intptr_t>(data);
    return kevent(kqueue, &event, 1, nullptr, 0, nullptr) == 0;
  }
  void addDescriptor(int descriptor) const {
    if (!change(kqueue_.get(), descriptor, EVFILT_READ, EV_ADD)) {
      throw std::system_error(errno, std::generic_category(), "kevent");
    }
  }

  FileDescriptor kqueue_;
  Pipe pipe_;
  WaitHandle watchedHandle_;
  Nanoseconds deadline_ = kNever;
  std::atomic<bool> isSignalled_ = false;
};

}  // namespace

std::unique_ptr<WaitSet> makeWaitSet() { return std::make_unique<KqueueWaitSet>(); }

}  // namespace vel
