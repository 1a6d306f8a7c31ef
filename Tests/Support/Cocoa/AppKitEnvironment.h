#pragma once

#include <filesystem>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// Keeps the free AppKit of GNUstep away from the user's settings, and kills the daemon that AppKit
/// starts. Create this object before this process or a child process starts AppKit.
class AppKitEnvironment : NonCopyable {
 public:
  /// Creates a folder and sets the environment variables HOME and TEMP to it.
  AppKitEnvironment();
  /// Kills all descendants of this process and deletes the folder. Unsets TEMP and does not
  /// restore HOME.
  ~AppKitEnvironment();

 private:
  std::filesystem::path home_;
};

}  // namespace vel::test
