#pragma once

#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::host {

/// Runs the application on the headless window system in virtual time, which starts at 0. The
/// library is in its initial state. The destructor closes all windows and removes all scheduled
/// work. Only one may exist at a time. Main thread.
class HeadlessPlatform : private NonCopyable {
 public:
  explicit HeadlessPlatform(NSOperatingSystemVersion version);
  ~HeadlessPlatform();

  /// The window system, which also simulates what a user does with windows.
  [[nodiscard]] HeadlessWindowSystem& user() { return *windowSystem_; }

 private:
  HeadlessWindowSystem* windowSystem_ = nullptr;  // owned by the application
  NSOperatingSystemVersion previousVersion_;
};

}  // namespace vel::host
