#pragma once

#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/NSString.h"

namespace vel {

class LaunchScreenViewControllerProtocol;

/// What the launch screen is to do, as the latest content request has it. There is one default
/// configuration at a time, shared by everything and kept until the process ends. Nothing is
/// locked: one thread at a time.
class VEL_EXPORT LaunchScreenConfiguration final
    : public Class<LaunchScreenConfiguration, "LaunchScreenConfiguration"> {
 public:
  static Strong<LaunchScreenConfiguration> init();

  /// The default configuration; never none. Made on first use.
  static Strong<LaunchScreenConfiguration> defaultConfiguration();
  static Strong<LaunchScreenConfiguration> getDefaultConfiguration();
  /// Replaces the default configuration. None is refused with a log line.
  static void setDefaultConfiguration(Strong<LaunchScreenConfiguration> configuration);

  /// A view controller of the host's to use instead of the library's own. It has to be an
  /// NSViewController that adopts LaunchScreenPresenter too.
  [[nodiscard]] Strong<LaunchScreenViewControllerProtocol> viewController() const {
    return viewController_;
  }
  void setViewController(Strong<LaunchScreenViewControllerProtocol> controller) {
    viewController_ = std::move(controller);
  }

  /// Whether the host may close the launch screen at any time; then no event is recorded.
  [[nodiscard]] bool skipMode() const { return skipMode_; }
  void setSkipMode(bool skipMode) { skipMode_ = skipMode; }

  /// The analytics event to record when the launch screen has ended.
  [[nodiscard]] Strong<NSString> nextEventName() const { return nextEventName_; }
  void setNextEventName(Strong<NSString> name) { nextEventName_ = std::move(name); }

  /// The longest time the launch screen stays up, in seconds.
  [[nodiscard]] double expirationTimeInterval() const { return expirationTimeInterval_; }
  void setExpirationTimeInterval(double seconds) { expirationTimeInterval_ = seconds; }

 private:
  Strong<LaunchScreenViewControllerProtocol> viewController_;
  bool skipMode_ = false;
  Strong<NSString> nextEventName_;
  double expirationTimeInterval_ = 0.0;
};

/// The default configuration; none until it is first asked for.
VEL_EXPORT extern Strong<LaunchScreenConfiguration> sDefaultConfiguration;

}  // namespace vel
