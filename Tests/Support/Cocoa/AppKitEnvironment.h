#pragma once

#include <filesystem>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// Keeps the child processes' AppKit, that of GNUstep, away from the user's settings, and kills the
/// daemons that it starts. Create this object before a child process starts. It does not change the
/// AppKit of this process: GNUstep copied the environment when the process started.
class AppKitEnvironment : NonCopyable {
 public:
  /// Creates a folder. Sets the environment variables HOME and TEMP to it, and
  /// GNUSTEP_CONFIG_FILE to a file that makes GNUstep keep the user's settings in it.
  AppKitEnvironment();
  /// Kills all descendants of this process and deletes the folder. Unsets TEMP and
  /// GNUSTEP_CONFIG_FILE. Does not restore HOME.
  ~AppKitEnvironment();

 private:
  std::filesystem::path folder_;
};

}  // namespace vel::test
