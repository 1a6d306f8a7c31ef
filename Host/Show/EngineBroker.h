#pragma once

#include <map>
#include <string>

#include "HostInterfaces/ContentBroker.h"

namespace vel::host {

/// Stores each registered content resolver under the names of the engines that it supports, for
/// example "launch_screen". A later registration for an engine replaces the earlier registration.
/// Holds only weak references to the resolvers.
class EngineBroker final : public Class<EngineBroker, "EngineBroker", NSObject, ContentBroker> {
 public:
  /// `resolver` must not be null. Always returns true.
  bool registerContentResolver(const Strong<ContentResolver>& resolver) override {
    for (const Strong<NSString>& engine : resolver->supportedEngines()) {
      resolvers_[std::string(engine->UTF8String())] = resolver;
    }
    return true;
  }

  /// Returns the resolver of the engine. Returns null if no resolver is registered for the engine
  /// or if the resolver no longer exists.
  [[nodiscard]] Strong<ContentResolver> resolverForEngine(std::string_view engine) const {
    const auto entry = resolvers_.find(engine);
    return entry == resolvers_.end() ? nullptr : entry->second.lock();
  }

 private:
  std::map<std::string, Weak<ContentResolver>, std::less<>> resolvers_;
};

}  // namespace vel::host
