// The host's own end of the content framework: a broker.
#pragma once

#include <map>
#include <string>

#include "HostInterfaces/ContentBroker.h"

namespace vel::host {

/// Routes requests by engine name to the resolvers that registered for it, the latest for each.
class EngineBroker final : public Class<EngineBroker, "EngineBroker", NSObject, ContentBroker> {
 public:
  bool registerContentResolver(const Strong<ContentResolver>& resolver) override {
    for (const Strong<NSString>& engine : resolver->supportedEngines()) {
      resolvers_[std::string(engine->UTF8String())] = resolver;
    }
    return true;
  }

  /// None for an engine that nobody serves, or nobody any more.
  [[nodiscard]] Strong<ContentResolver> resolverForEngine(std::string_view engine) const {
    const auto found = resolvers_.find(engine);
    return found == resolvers_.end() ? nullptr : found->second.lock();
  }

 private:
  std::map<std::string, Weak<ContentResolver>, std::less<>> resolvers_;
};

}  // namespace vel::host
