#pragma once

#include <compare>
#include <cstdint>

#include "Platform/Foundation/Export.h"

namespace vel {

struct NSOperatingSystemVersion {
  std::int64_t majorVersion = 0;
  std::int64_t minorVersion = 0;
  std::int64_t patchVersion = 0;
  auto operator<=>(const NSOperatingSystemVersion&) const = default;
};

/// Holds the version of macOS whose behaviour the library follows. This is not the version of the
/// running system. Only the main thread may use this class.
class VEL_EXPORT NSProcessInfo {
 public:
  /// The default is 15.0.0.
  static NSOperatingSystemVersion operatingSystemVersion();
  static void setOperatingSystemVersion(NSOperatingSystemVersion version);

  static bool isOperatingSystemAtLeastVersion(NSOperatingSystemVersion version) {
    return operatingSystemVersion() >= version;
  }
};

}  // namespace vel
