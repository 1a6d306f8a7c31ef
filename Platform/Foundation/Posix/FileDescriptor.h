#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Platform/Foundation/NonCopyable.h"

namespace vel {

/// Owns a file descriptor.
class FileDescriptor : NonCopyable {
 public:
  /// `descriptor` is the result of the system call named `call`. Throws `std::system_error` if
  /// the call has failed.
  FileDescriptor(int descriptor, const char* call) : descriptor_(descriptor) {
    if (descriptor < 0) {
      throw std::system_error(errno, std::generic_category(), call);
    }
  }
  ~FileDescriptor() { close(descriptor_); }

  [[nodiscard]] int get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace vel
