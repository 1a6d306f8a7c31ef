#pragma once

#include <string>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// Hides a shared library from the back end in this process, as if it were not installed. The
/// linker replaces `dlopen` in the test program.
class HiddenLibrary : NonCopyable {
 public:
  explicit HiddenLibrary(const std::string& name);
  ~HiddenLibrary();

  /// The number of calls that have tried to load the library.
  [[nodiscard]] static int loadAttemptCount();
};

}  // namespace vel::test
