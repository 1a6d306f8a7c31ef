#pragma once

namespace vel {

/// A file descriptor that a thread can poll, for example of the connection to a display
/// server. Does not own the descriptor.
class WaitHandle {
 public:
  /// Makes an invalid handle.
  WaitHandle() = default;
  explicit WaitHandle(int descriptor) : descriptor_(descriptor) {}

  [[nodiscard]] bool isValid() const { return descriptor_ >= 0; }
  /// The file descriptor, or -1 if the handle is invalid.
  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

}  // namespace vel
