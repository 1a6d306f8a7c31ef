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

/// The state of everything that a host can see, at one moment. Where a member says whether there is
/// an object, that is all that is known of it.
struct Inspection {
  struct Manager {
    bool content = false;
    bool tempContent = false;
    bool appIsUnfocused = false;
    bool eventWasSended = false;
    bool launchScreenExpirationTimer = false;
    double launchScreenExpirationTimeLeft = 0;
    bool launchScreenExpired = false;
    bool launchShouldBeClosed = false;
  };
  struct Configuration {
    bool viewController = false;
    bool skipMode = false;
    std::optional<std::string> nextEventName;
    double expirationTimeInterval = 0;
  };
  struct Error {
    std::string domain;
    std::int64_t code = 0;
  };
  struct Content {
    std::uint64_t state = 0;
    std::optional<Error> error;
    bool contentRequest = false;
  };
  /// The main content's.
  struct Controller {
    std::int32_t presentationMode = 0;
    std::optional<std::string> appWindow;
    NSWindowStyleMask appWindowStyleMask = 0;
    /// How many; nothing where there is no list yet.
    std::optional<std::size_t> delegates;
    bool activityIndicator = false;
    /// The window that shows the controller's view.
    std::optional<std::string> window;
    /// How many controllers it presents.
    std::size_t presented = 0;
  };
  struct Application {
    std::optional<std::string> keyWindow;
    std::optional<std::string> mainWindow;
    std::vector<std::string> orderedWindows;
    std::optional<std::string> modalWindow;
    /// Of the windows on screen, by name.
    std::map<std::string, NSWindowStyleMask> styleMasks;
  };

  Manager manager;
  Configuration configuration;
  std::optional<Content> content;
  std::optional<Controller> controller;
  Application application;
};

/// Looks at everything, and changes nothing.
[[nodiscard]] Inspection inspect(const LaunchScreenManager& manager, WindowNames& names);

}  // namespace vel::host
