#pragma once

namespace vel {

/// Identifies an event source that a thread can wait for, such as the connection to a display
/// server. On POSIX systems the handle contains a file descriptor, which it does not own.
class WaitHandle {
 public:
  /// An invalid handle: there is nothing to wait for.
  WaitHandle() = default;
  explicit WaitHandle(int descriptor) : descriptor_(descriptor) {}

  [[nodiscard]] bool isValid() const { return descriptor_ >= 0; }
  /// The file descriptor, or -1 if the handle is invalid.
  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

}  // namespace vel
