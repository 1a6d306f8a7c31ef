#include "Tests/Exploration/StateFingerprint.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <type_traits>
#include <utility>

#include "Host/Play/Trace/Inspection.h"
#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"

namespace vel::exploration {

namespace {

// Appends each value to the state fingerprint as bytes.
class StateFingerprintBuilder {
 public:
  template <class Value>
    requires std::is_arithmetic_v<Value> || std::is_enum_v<Value>
  StateFingerprintBuilder& operator<<(Value value) {
    const auto bytes = std::bit_cast<std::array<char, sizeof value>>(value);
    text_.append(bytes.data(), bytes.size());
    return *this;
  }
  StateFingerprintBuilder& operator<<(const std::string& text) {
    text_ += text;
    text_ += '\0';
    return *this;
  }
  template <class Value>
  StateFingerprintBuilder& operator<<(const std::optional<Value>& value) {
    *this << value.has_value();
    return value ? *this << *value : *this;
  }

  [[nodiscard]] std::string text() && { return std::move(text_); }

 private:
  std::string text_;
};

void addInspection(StateFingerprintBuilder& fingerprint, const ObservedPlay& play) {
  const auto [manager, configuration, content, controller, application] =
      host::inspect(*play.manager(), play.names());
  fingerprint << manager.hasContent << manager.hasTempContent << manager.appIsUnfocused
              << manager.eventWasSended << manager.hasLaunchScreenExpirationTimer
              << manager.launchScreenExpirationTimeLeft << manager.launchScreenExpired
              << manager.launchShouldBeClosed;
  fingerprint << configuration.hasViewController << configuration.skipMode
              << configuration.nextEventName << configuration.expirationTimeInterval;
  fingerprint << content.has_value() << controller.has_value();
  if (content) {
    fingerprint << content->state << content->error.has_value() << content->hasContentRequest;
  }
  fingerprint << application.keyWindow << application.mainWindow << application.modalWindow;
  for (const auto& window : application.orderedWindows) {
    fingerprint << window << application.styleMasks.at(window);
  }
}

using Controllers = std::vector<Strong<LaunchScreenViewController>>;

// Returns the index of the controller in the list, or the size of the list if the list does not
// contain the controller.
template <class T>
std::size_t indexOf(const T* controller, const Controllers& controllers) {
  return static_cast<std::size_t>(
      std::ranges::find(controllers, controller, [](const auto& entry) { return entry.get(); }) -
      controllers.begin());
}

void addPendingWork(StateFingerprintBuilder& fingerprint) {
  for (const DispatchQueue::PendingWork& work : dispatch_get_main_queue().pendingWork()) {
    fingerprint << work.deadline - ObservedPlay::time() << std::string(work.label);
  }
  fingerprint << NSRunLoop::mainRunLoop().timerCount() << NSRunLoop::mainRunLoop().mode();
}

void addWindows(StateFingerprintBuilder& fingerprint, const ObservedPlay& play) {
  for (const Strong<NSWindow>& window : play.hostWindows()) {
    fingerprint << window->isVisible() << window->styleMask() << window->sheets().size()
                << window->contentView()->subviews().size();
  }
  for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
    fingerprint << window->isModalPanel();
  }
  for (const std::string& name : play.history().keyOrder) {
    const Strong<NSWindow> window = play.names().window(name);
    if (send(window, &NSWindow::isOnScreen)) {
      fingerprint << name;
    }
  }
}

void addController(StateFingerprintBuilder& fingerprint, const ObservedPlay& play,
                   LaunchScreenViewController& controller) {
  fingerprint << controller.presentationMode() << controller.appWindowStyleMask()
              << play.names().nameOf(controller.appWindow()) << controller.isShown()
              << (controller.parentViewController() != nullptr)
              // A controller presents itself if the host window has no content view controller.
              << (controller.presentingViewController().get() == &controller)
              << (controller.presentingViewController() != nullptr);
  for (const LifeCycleMethod method :
       {LifeCycleMethod::WillAppear, LifeCycleMethod::DidAppear, LifeCycleMethod::WillDisappear,
        LifeCycleMethod::DidDisappear}) {
    fingerprint << controller.wasCalled(method);
  }
  fingerprint << (controller.activityIndicator() != nullptr)
              << controller.presentedViewControllers().size();
  if (const auto delegates = controller.delegates()) {
    fingerprint << delegates->containsObject(play.manager().get())
                << delegates->containsObject(play.mainContent().lock().get());
  }
  if (!controller.isViewLoaded()) {
    return;
  }
  const Strong<NSView> view = controller.view();
  fingerprint << play.names().nameOf(view->window());
  if (const Strong<NSView> superview = view->superview()) {
    const auto& views = superview->subviews();
    fingerprint << std::ranges::find(views, view) - views.begin();
  }
}

void addCovers(StateFingerprintBuilder& fingerprint, const ObservedPlay& play) {
  using namespace embedded_cover;
  const Controllers controllers = play.controllers();
  for (const auto& controller : controllers) {
    addController(fingerprint, play, *controller);
  }
  // EmbeddedCover.h declares the global variables `superView`, `selfView` and `selfController`.
  const auto controllerOfSelfView =
      as<LaunchScreenViewController>(send(selfView, &NSView::viewController));
  const auto windowOfSuperView = send(superView, &NSView::window);
  const auto controllerOfContent =
      send(play.manager()->content(), &LaunchScreenContent::viewController);
  fingerprint << indexOf(selfController.get(), controllers)
              << indexOf(controllerOfSelfView.get(), controllers)
              << play.names().nameOf(windowOfSuperView) << (selfView != nullptr)
              << (superView != nullptr)
              << indexOf(as<LaunchScreenViewController>(controllerOfContent).get(), controllers);
}

void addHistory(StateFingerprintBuilder& fingerprint, const ObservedPlay& play) {
  const History& history = play.history();
  fingerprint << history.hasRequestOutsideSkipMode << history.shouldBeUnfocused
              << history.recordedEventCount;
  // No invariant depends on `sendTime` after an event has been recorded.
  if (history.sendTime && history.recordedEventCount == 0) {
    fingerprint << *history.sendTime - ObservedPlay::time();
  }
  fingerprint << history.knownWrongStyles.to_ulong();
}

}  // namespace

std::string stateFingerprint(const ObservedPlay& play) {
  StateFingerprintBuilder fingerprint;
  addInspection(fingerprint, play);
  if (const Strong<NSTimer> timer = play.manager()->launchScreenExpirationTimer()) {
    fingerprint << timer->isValid() << timer->fireDate() - ObservedPlay::time();
  }
  fingerprint << NSNotificationCenter::defaultCenter().registrationCount(play.manager().get());
  addPendingWork(fingerprint);
  addWindows(fingerprint, play);
  addCovers(fingerprint, play);
  addHistory(fingerprint, play);
  return std::move(fingerprint).text();
}

}  // namespace vel::exploration
