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

/// What the process knows of the system it runs on. Main thread.
class VEL_EXPORT NSProcessInfo {
 public:
  /// The version that the system answers with; off macOS that of a current system, unless set.
  static NSOperatingSystemVersion operatingSystemVersion();
  static void setOperatingSystemVersion(NSOperatingSystemVersion version);

  static bool isOperatingSystemAtLeastVersion(NSOperatingSystemVersion version) {
    return operatingSystemVersion() >= version;
  }
};

}  // namespace vel
