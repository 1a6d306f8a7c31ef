#include "Host/Play/Player/HeadlessPlatform.h"

#include <memory>
#include <utility>

#include "LaunchScreen/LaunchScreen.h"
#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/ReleasePool.h"

namespace vel::host {

HeadlessPlatform::HeadlessPlatform(NSOperatingSystemVersion version)
    : formerVersion_(NSProcessInfo::operatingSystemVersion()) {
  NSProcessInfo::setOperatingSystemVersion(version);
  NSRunLoop::mainRunLoop().setClock(std::make_unique<VirtualClock>());
  auto windowSystem = std::make_unique<HeadlessWindowSystem>();
  windowSystem_ = windowSystem.get();
  NSApplication::start(std::move(windowSystem));
}

HeadlessPlatform::~HeadlessPlatform() {
  NSApplication::stop();
  send(embedded_cover::selfController, &LaunchScreenViewController::deactivate);
  embedded_cover::release();
  ReleasePool::current().drainTo(0);
  sDefaultConfiguration = nullptr;
  NSProcessInfo::setOperatingSystemVersion(formerVersion_);
}

}  // namespace vel::host
