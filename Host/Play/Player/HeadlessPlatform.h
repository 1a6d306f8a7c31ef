#pragma once

#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::host {

/// Runs the platform layer without a display. The constructor starts `NSApp` on a headless window
/// system and gives the main run loop a virtual clock, which starts at 0. The destructor shuts down
/// the platform layer and resets the default LaunchScreenConfiguration. Only one HeadlessPlatform
/// may exist at a time. Use it only on the main thread.
class HeadlessPlatform : private NonCopyable {
 public:
  /// Sets the operating system version of NSProcessInfo to `version`. The destructor restores the
  /// previous version.
  explicit HeadlessPlatform(NSOperatingSystemVersion version);
  ~HeadlessPlatform();

  /// Returns the window system. Some of its functions simulate actions of the user.
  [[nodiscard]] HeadlessWindowSystem& windowSystem() { return *windowSystem_; }

 private:
  HeadlessWindowSystem* windowSystem_ = nullptr;  // owned by `NSApp`
  NSOperatingSystemVersion previousVersion_;
};

}  // namespace vel::host
