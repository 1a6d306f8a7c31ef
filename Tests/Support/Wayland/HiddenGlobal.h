#pragma once

#include <string>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// Hides a global object of the compositor from the clients in this process, as if the compositor
/// did not have it. Clients that connect while a HiddenGlobal exists never see the global object.
/// The linker replaces `wl_proxy_add_listener` in the test program, so that the listener of each
/// registry is filtered.
class HiddenGlobal : NonCopyable {
 public:
  explicit HiddenGlobal(const std::string& interface);
  ~HiddenGlobal();

  /// The number of registries from which the global object has been hidden.
  [[nodiscard]] static int registryCount();
};

}  // namespace vel::test
