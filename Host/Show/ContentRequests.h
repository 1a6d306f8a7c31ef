// The host's own end of the content framework: a broker and a request.
#pragma once

#include <map>
#include <string>
#include <utility>

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

/// A request whose parameters are all text.
class TextRequest final : public Class<TextRequest, "TextRequest", NSObject, ContentRequest> {
 public:
  explicit TextRequest(const std::map<std::string, std::string>& parameters) {
    NSDictionary::Entries entries;
    for (const auto& [key, value] : parameters) {
      entries[key] = NSString::stringWithUTF8String(value);
    }
    parameters_ = NSDictionary::dictionaryWithEntries(std::move(entries));
  }

  [[nodiscard]] Strong<NSDictionary> parameters() const override { return parameters_; }

 private:
  Strong<NSDictionary> parameters_;
};

}  // namespace vel::host
