#include "Host/Play/Trace/Inspection.h"

#include "Host/Play/Trace/WindowNames.h"
#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"

namespace vel::host {

namespace {

Inspection::Configuration inspectConfiguration() {
  const auto configuration = LaunchScreenConfiguration::defaultConfiguration();
  const Strong<NSString> eventName = configuration->nextEventName();
  return {.hasViewController = configuration->viewController() != nullptr,
          .skipMode = configuration->skipMode(),
          .nextEventName = eventName == nullptr
                               ? std::nullopt
                               : std::optional(std::string(eventName->UTF8String())),
          .expirationTimeInterval = configuration->expirationTimeInterval()};
}

Inspection::Content inspectContent(const LaunchScreenContent& content) {
  Inspection::Content inspection{.state = content.state(),
                                 .error = std::nullopt,
                                 .hasContentRequest = content.contentRequest() != nullptr};
  if (const Strong<NSError> error = content.error()) {
    inspection.error = {.domain = std::string(error->domain()), .code = error->code()};
  }
  return inspection;
}

Inspection::Controller inspectController(LaunchScreenViewController& controller,
                                         WindowNames& names) {
  const auto delegates = controller.delegates();
  // `view` loads a missing view, which would change the inspected state.
  const auto window = controller.isViewLoaded() ? controller.view()->window() : nullptr;
  return {.presentationMode = controller.presentationMode(),
          .appWindow = names.nameOf(controller.appWindow()),
          .appWindowStyleMask = controller.appWindowStyleMask(),
          .delegateCount = delegates == nullptr ? std::nullopt : std::optional(delegates->count()),
          .hasActivityIndicator = controller.activityIndicator() != nullptr,
          .window = names.nameOf(window),
          .presentedControllerCount = controller.presentedViewControllers().size()};
}

Inspection::Application inspectApplication(const NSApplication& application, WindowNames& names) {
  Inspection::Application inspection{.keyWindow = names.nameOf(application.keyWindow()),
                                     .mainWindow = names.nameOf(application.mainWindow()),
                                     .orderedWindows = {},
                                     .modalWindow = names.nameOf(application.modalWindow()),
                                     .styleMasks = {}};
  for (const Strong<NSWindow>& window : application.orderedWindows()) {
    const std::string name = names.nameOf(*window);
    inspection.orderedWindows.push_back(name);
    inspection.styleMasks[name] = window->styleMask();
  }
  return inspection;
}

}  // namespace

Inspection inspect(const LaunchScreenManager& manager, WindowNames& names) {
  Inspection inspection;
  inspection.manager = {
      .hasContent = manager.content() != nullptr,
      .hasTempContent = manager.tempContent() != nullptr,
      .appIsUnfocused = manager.appIsUnfocused(),
      .eventWasSended = manager.eventWasSended(),
      .hasLaunchScreenExpirationTimer = manager.launchScreenExpirationTimer() != nullptr,
      .launchScreenExpirationTimeLeft = manager.launchScreenExpirationTimeLeft(),
      .launchScreenExpired = manager.launchScreenExpired(),
      .launchShouldBeClosed = manager.launchShouldBeClosed(),
  };
  inspection.configuration = inspectConfiguration();
  if (const Strong<LaunchScreenContent> content = manager.content()) {
    inspection.content = inspectContent(*content);
    if (const auto controller = as<LaunchScreenViewController>(content->viewController())) {
      inspection.controller = inspectController(*controller, names);
    }
  }
  inspection.application = inspectApplication(*NSApp, names);
  return inspection;
}

}  // namespace vel::host
