#pragma once

#include <string>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// While an object of this class exists, the test program cannot load the shared library `name`
/// with `dlopen`, as if the library were not installed.
class HiddenLibrary : NonCopyable {
 public:
  explicit HiddenLibrary(const std::string& name);
  ~HiddenLibrary();

  /// How many times the test program has tried to load the library while it is hidden.
  [[nodiscard]] static int loadAttemptCount();
};

}  // namespace vel::test
