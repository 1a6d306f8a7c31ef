#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSDictionary.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// The reason for a failure: a domain, a code within the domain, and more information.
class VEL_EXPORT NSError final : public Class<NSError, "NSError"> {
 public:
  NSError(std::string_view domain, std::int64_t code, Strong<NSDictionary> userInfo)
      : domain_(domain), code_(code), userInfo_(std::move(userInfo)) {}

  static Strong<NSError> errorWithDomainCodeUserInfo(std::string_view domain, std::int64_t code,
                                                     Strong<NSDictionary> userInfo) {
    return make<NSError>(domain, code, std::move(userInfo));
  }

  [[nodiscard]] std::string_view domain() const { return domain_; }
  [[nodiscard]] std::int64_t code() const { return code_; }
  /// More information about the failure, or null.
  [[nodiscard]] Strong<NSDictionary> userInfo() const { return userInfo_; }

 private:
  std::string domain_;
  std::int64_t code_;
  Strong<NSDictionary> userInfo_;
};

}  // namespace vel
