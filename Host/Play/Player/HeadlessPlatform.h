#pragma once

#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::host {

/// The constructor starts `NSApp` on the headless window system and sets the main run loop to
/// virtual time, which starts at 0. The destructor closes all windows, removes all scheduled work
/// and resets the configuration of the library. Only one HeadlessPlatform may exist at a time. Use
/// it only on the main thread.
class HeadlessPlatform : private NonCopyable {
 public:
  explicit HeadlessPlatform(NSOperatingSystemVersion version);
  ~HeadlessPlatform();

  /// Returns the window system, whose functions also simulate the user.
  [[nodiscard]] HeadlessWindowSystem& windowSystem() { return *windowSystem_; }

 private:
  HeadlessWindowSystem* windowSystem_ = nullptr;  // owned by the application
  NSOperatingSystemVersion previousVersion_;
};

}  // namespace vel::host
