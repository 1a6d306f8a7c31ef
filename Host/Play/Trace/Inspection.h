#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {
class LaunchScreenManager;
}

namespace vel::host {

class WindowNames;

/// The state of a LaunchScreenManager and of the application at one moment. A window is represented
/// by the name that WindowNames gives it. Times are in seconds.
struct Inspection {
  struct Manager {
    bool hasContent = false;
    bool hasTempContent = false;
    bool appIsUnfocused = false;
    bool eventWasSended = false;
    bool hasLaunchScreenExpirationTimer = false;
    double launchScreenExpirationTimeLeft = 0;
    bool launchScreenExpired = false;
    bool launchShouldBeClosed = false;
  };
  /// The default LaunchScreenConfiguration.
  struct Configuration {
    bool hasViewController = false;
    bool skipMode = false;
    std::optional<std::string> nextEventName;
    double expirationTimeInterval = 0;
  };
  struct Error {
    std::string domain;
    std::int64_t code = 0;
  };
  /// The content that `LaunchScreenManager::content` returns.
  struct Content {
    std::uint64_t state = 0;
    std::optional<Error> error;
    bool hasContentRequest = false;
  };
  /// The view controller of this content.
  struct Controller {
    std::int32_t presentationMode = 0;
    /// The host window whose style the controller overrides.
    std::optional<std::string> appWindow;
    /// The style mask that the controller saved before it overrode the style of `appWindow`. All
    /// bits are set if the controller has saved no mask.
    NSWindowStyleMask appWindowStyleMask = 0;
    /// The number of delegates, or `std::nullopt` if the list of delegates does not exist.
    std::optional<std::size_t> delegateCount;
    bool hasActivityIndicator = false;
    /// The window that shows the controller's view.
    std::optional<std::string> window;
    /// The number of view controllers that this controller presents.
    std::size_t presentedControllerCount = 0;
  };
  struct Application {
    std::optional<std::string> keyWindow;
    std::optional<std::string> mainWindow;
    /// The windows on screen, front to back.
    std::vector<std::string> orderedWindows;
    std::optional<std::string> modalWindow;
    /// The style masks of the windows on screen, by window name.
    std::map<std::string, NSWindowStyleMask> styleMasks;
  };

  Manager manager;
  Configuration configuration;
  std::optional<Content> content;
  std::optional<Controller> controller;
  Application application;
};

/// Reads the current state without changing it.
[[nodiscard]] Inspection inspect(const LaunchScreenManager& manager, WindowNames& names);

}  // namespace vel::host
