#include "Platform/Foundation/NSProcessInfo.h"

namespace vel {

namespace {

NSOperatingSystemVersion systemVersion{15, 0, 0};

}  // namespace

NSOperatingSystemVersion NSProcessInfo::operatingSystemVersion() { return systemVersion; }

void NSProcessInfo::setOperatingSystemVersion(NSOperatingSystemVersion version) {
  systemVersion = version;
}

}  // namespace vel
