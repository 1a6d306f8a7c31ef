#pragma once

#include <filesystem>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// Keeps the free AppKit of GNUstep away from the user's settings, and kills the daemon that AppKit
/// starts. Create this object before this process or a child process starts AppKit.
class AppKitEnvironment : NonCopyable {
 public:
  /// Sets the home folder and the temporary folder of this process and its children to a new
  /// folder.
  AppKitEnvironment();
  /// Kills all descendants of this process and deletes the folder. Does not restore the previous
  /// folders.
  ~AppKitEnvironment();

 private:
  std::filesystem::path home_;
};

}  // namespace vel::test
