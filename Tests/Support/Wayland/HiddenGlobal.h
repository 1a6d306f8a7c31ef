#pragma once

#include <string>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// Hides a global object of the compositor from the clients in this process, as if the compositor
/// did not have the object. A client that connects while a HiddenGlobal exists does not see the
/// object, even after the HiddenGlobal is destroyed. Only one HiddenGlobal may exist at a time.
/// The test program is linked with a `wl_proxy_add_listener` that filters the events of registries.
class HiddenGlobal : NonCopyable {
 public:
  /// `interface` is the interface of the global object, such as "wp_viewporter".
  explicit HiddenGlobal(const std::string& interface);
  ~HiddenGlobal();

  /// The number of registries from which the HiddenGlobal has hidden the object.
  [[nodiscard]] static int registryCount();
};

}  // namespace vel::test
