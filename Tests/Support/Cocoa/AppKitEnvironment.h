#pragma once

#include <filesystem>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// The environment of child processes that use GNUstep's AppKit. They read and write settings in a
/// temporary folder instead of the user's settings. Create this object before a child process
/// starts. It does not affect GNUstep in this process, because GNUstep copied the environment when
/// this process started.
class AppKitEnvironment : NonCopyable {
 public:
  /// Creates the folder and sets the environment variables HOME and TEMP to its path. Sets
  /// GNUSTEP_CONFIG_FILE to a file that makes GNUstep keep settings in this folder.
  AppKitEnvironment();
  /// Kills all descendants of this process, including GNUstep's daemons. Deletes the folder. Unsets
  /// TEMP and GNUSTEP_CONFIG_FILE. Does not restore HOME.
  ~AppKitEnvironment();

 private:
  std::filesystem::path folder_;
};

}  // namespace vel::test
