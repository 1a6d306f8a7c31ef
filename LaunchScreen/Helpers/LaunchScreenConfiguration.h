#pragma once

#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/NSString.h"

namespace vel {

class LaunchScreenViewControllerProtocol;

/// The settings of the launch screen, copied from the latest content request. The whole process
/// shares one default configuration, which lives until the process ends. The class has no locks:
/// only one thread may use it at a time.
class VEL_EXPORT LaunchScreenConfiguration final
    : public Class<LaunchScreenConfiguration, "LaunchScreenConfiguration"> {
 public:
  static Strong<LaunchScreenConfiguration> init();

  /// The default configuration. Never null: the first call creates it.
  static Strong<LaunchScreenConfiguration> defaultConfiguration();
  /// Does the same as `defaultConfiguration`.
  static Strong<LaunchScreenConfiguration> getDefaultConfiguration();
  /// Replaces the default configuration. Logs and ignores null.
  static void setDefaultConfiguration(Strong<LaunchScreenConfiguration> configuration);

  /// A view controller that the host supplies. This controller must also be an NSViewController and
  /// a LaunchScreenPresenter. Null if the library makes its own controller.
  [[nodiscard]] Strong<LaunchScreenViewControllerProtocol> viewController() const {
    return viewController_;
  }
  void setViewController(Strong<LaunchScreenViewControllerProtocol> controller) {
    viewController_ = std::move(controller);
  }

  /// True if the host may close the launch screen at any time. No event is recorded in this mode.
  [[nodiscard]] bool skipMode() const { return skipMode_; }
  void setSkipMode(bool skipMode) { skipMode_ = skipMode; }

  /// The name of the analytics event that is recorded when the launch screen has ended.
  [[nodiscard]] Strong<NSString> nextEventName() const { return nextEventName_; }
  void setNextEventName(Strong<NSString> name) { nextEventName_ = std::move(name); }

  /// The maximum time for which the launch screen is shown, in seconds.
  [[nodiscard]] double expirationTimeInterval() const { return expirationTimeInterval_; }
  void setExpirationTimeInterval(double seconds) { expirationTimeInterval_ = seconds; }

 private:
  Strong<LaunchScreenViewControllerProtocol> viewController_;
  bool skipMode_ = false;
  Strong<NSString> nextEventName_;
  double expirationTimeInterval_ = 0.0;
};

/// The default configuration. Null until `defaultConfiguration` is called for the first time.
VEL_EXPORT extern Strong<LaunchScreenConfiguration> sDefaultConfiguration;

}  // namespace vel
