#pragma once

#include <utility>

#include "HostInterfaces/ContentBroker.h"
#include "Platform/Foundation/Export.h"

namespace vel {

/// A ready-made ContentRequest whose parameters are a dictionary that the host supplies.
class VEL_EXPORT DictionaryRequest final
    : public Class<DictionaryRequest, "DictionaryRequest", NSObject, ContentRequest> {
 public:
  /// `parameters` may be null.
  explicit DictionaryRequest(Strong<NSDictionary> parameters)
      : parameters_(std::move(parameters)) {}

  static Strong<DictionaryRequest> requestWithParameters(Strong<NSDictionary> parameters) {
    return make<DictionaryRequest>(std::move(parameters));
  }
  static Strong<DictionaryRequest> requestWithEntries(NSDictionary::Entries entries) {
    return requestWithParameters(NSDictionary::dictionaryWithEntries(std::move(entries)));
  }

  [[nodiscard]] Strong<NSDictionary> parameters() const override { return parameters_; }

 private:
  Strong<NSDictionary> parameters_;
};

}  // namespace vel
