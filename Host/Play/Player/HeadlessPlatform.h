#pragma once

#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::host {

/// Where a play takes place: the platform with the headless window system and virtual time that
/// starts at 0, and the library as a process finds it. One at a time. With it ends everything that
/// is open or scheduled. Main thread.
class HeadlessPlatform {
 public:
  explicit HeadlessPlatform(NSOperatingSystemVersion version);
  HeadlessPlatform(const HeadlessPlatform&) = delete;
  HeadlessPlatform& operator=(const HeadlessPlatform&) = delete;
  ~HeadlessPlatform();

  /// What a user does with windows.
  [[nodiscard]] HeadlessWindowSystem& user() { return *windowSystem_; }

 private:
  HeadlessWindowSystem* windowSystem_ = nullptr;  // the application's
  NSOperatingSystemVersion formerVersion_;
};

}  // namespace vel::host
