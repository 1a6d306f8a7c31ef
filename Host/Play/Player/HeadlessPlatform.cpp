#include "Host/Play/Player/HeadlessPlatform.h"

#include <memory>
#include <utility>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/Shutdown.h"

namespace vel::host {

HeadlessPlatform::HeadlessPlatform(NSOperatingSystemVersion version)
    : previousVersion_(NSProcessInfo::operatingSystemVersion()) {
  NSProcessInfo::setOperatingSystemVersion(version);
  NSRunLoop::mainRunLoop().setClock(std::make_unique<VirtualClock>());
  auto windowSystem = std::make_unique<HeadlessWindowSystem>();
  windowSystem_ = windowSystem.get();
  NSApplication::start(std::move(windowSystem));
}

HeadlessPlatform::~HeadlessPlatform() {
  shutDown();
  // `shutDown` does not reset the default LaunchScreenConfiguration.
  sDefaultConfiguration = nullptr;
  NSProcessInfo::setOperatingSystemVersion(previousVersion_);
}

}  // namespace vel::host
