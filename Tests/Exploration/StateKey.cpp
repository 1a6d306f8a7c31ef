#include "Tests/Exploration/StateKey.h"

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

// Appends each value to the state key as bytes.
class StateKeyBuilder {
 public:
  template <class Value>
    requires std::is_arithmetic_v<Value> || std::is_enum_v<Value>
  StateKeyBuilder& operator<<(Value value) {
    const auto bytes = std::bit_cast<std::array<char, sizeof value>>(value);
    text_.append(bytes.data(), bytes.size());
    return *this;
  }
  StateKeyBuilder& operator<<(const std::string& text) {
    text_ += text;
    text_ += '\0';
    return *this;
  }
  template <class Value>
  StateKeyBuilder& operator<<(const std::optional<Value>& value) {
    *this << value.has_value();
    return value ? *this << *value : *this;
  }

  [[nodiscard]] std::string text() && { return std::move(text_); }

 private:
  std::string text_;
};

void addInspection(StateKeyBuilder& key, const ObservedPlay& play) {
  const auto [manager, configuration, content, controller, application] =
      host::inspect(*play.manager(), play.names());
  key << manager.hasContent << manager.hasTempContent << manager.appIsUnfocused
      << manager.eventWasSended << manager.hasLaunchScreenExpirationTimer
      << manager.launchScreenExpirationTimeLeft << manager.launchScreenExpired
      << manager.launchShouldBeClosed;
  key << configuration.hasViewController << configuration.skipMode << configuration.nextEventName
      << configuration.expirationTimeInterval;
  key << content.has_value() << controller.has_value();
  if (content) {
    key << content->state << content->error.has_value() << content->hasContentRequest;
  }
  key << application.keyWindow << application.mainWindow << application.modalWindow;
  for (const auto& window : application.orderedWindows) {
    key << window << application.styleMasks.at(window);
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

void addPendingWork(StateKeyBuilder& key) {
  for (const DispatchQueue::PendingWork& work : dispatch_get_main_queue().pendingWork()) {
    key << work.deadline - ObservedPlay::time() << std::string(work.label);
  }
  key << NSRunLoop::mainRunLoop().timerCount() << NSRunLoop::mainRunLoop().mode();
}

void addWindows(StateKeyBuilder& key, const ObservedPlay& play) {
  for (const Strong<NSWindow>& window : play.hostWindows()) {
    key << window->isVisible() << window->styleMask() << window->sheets().size()
        << window->contentView()->subviews().size();
  }
  for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
    key << window->isModalPanel();
  }
  for (const std::string& name : play.history().keyOrder) {
    const Strong<NSWindow> window = play.names().window(name);
    if (send(window, &NSWindow::isOnScreen)) {
      key << name;
    }
  }
}

void addController(StateKeyBuilder& key, const ObservedPlay& play,
                   LaunchScreenViewController& controller) {
  key << controller.presentationMode() << controller.appWindowStyleMask()
      << play.names().nameOf(controller.appWindow()) << controller.isShown()
      << (controller.parentViewController() != nullptr)
      // A controller presents itself if the host window has no content view controller.
      << (controller.presentingViewController().get() == &controller)
      << (controller.presentingViewController() != nullptr);
  for (const LifeCycleMethod method :
       {LifeCycleMethod::WillAppear, LifeCycleMethod::DidAppear, LifeCycleMethod::WillDisappear,
        LifeCycleMethod::DidDisappear}) {
    key << controller.wasCalled(method);
  }
  key << (controller.activityIndicator() != nullptr)
      << controller.presentedViewControllers().size();
  if (const auto delegates = controller.delegates()) {
    key << delegates->containsObject(play.manager().get())
        << delegates->containsObject(play.mainContent().lock().get());
  }
  if (!controller.isViewLoaded()) {
    return;
  }
  const Strong<NSView> view = controller.view();
  key << play.names().nameOf(view->window());
  if (const Strong<NSView> superview = view->superview()) {
    const auto& views = superview->subviews();
    key << std::ranges::find(views, view) - views.begin();
  }
}

void addCovers(StateKeyBuilder& key, const ObservedPlay& play) {
  using namespace embedded_cover;
  const Controllers controllers = play.controllers();
  for (const auto& controller : controllers) {
    addController(key, play, *controller);
  }
  // EmbeddedCover.h declares the global variables `superView`, `selfView` and `selfController`.
  const auto controllerOfSelfView =
      as<LaunchScreenViewController>(send(selfView, &NSView::viewController));
  const auto windowOfSuperView = send(superView, &NSView::window);
  const auto controllerOfContent =
      send(play.manager()->content(), &LaunchScreenContent::viewController);
  key << indexOf(selfController.get(), controllers)
      << indexOf(controllerOfSelfView.get(), controllers) << play.names().nameOf(windowOfSuperView)
      << (selfView != nullptr) << (superView != nullptr)
      << indexOf(as<LaunchScreenViewController>(controllerOfContent).get(), controllers);
}

void addHistory(StateKeyBuilder& key, const ObservedPlay& play) {
  const History& history = play.history();
  key << history.hasRequestOutsideSkipMode << history.shouldBeUnfocused
      << history.recordedEventCount;
  // No invariant depends on `sendTime` after an event has been recorded.
  if (history.sendTime && history.recordedEventCount == 0) {
    key << *history.sendTime - ObservedPlay::time();
  }
  key << history.styleExceptions.to_ulong();
}

}  // namespace

std::string stateKey(const ObservedPlay& play) {
  StateKeyBuilder key;
  addInspection(key, play);
  if (const Strong<NSTimer> timer = play.manager()->launchScreenExpirationTimer()) {
    key << timer->isValid() << timer->fireDate() - ObservedPlay::time();
  }
  key << NSNotificationCenter::defaultCenter().registrationCount(play.manager().get());
  addPendingWork(key);
  addWindows(key, play);
  addCovers(key, play);
  addHistory(key, play);
  return std::move(key).text();
}

}  // namespace vel::exploration
