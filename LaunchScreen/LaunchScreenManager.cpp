#include "LaunchScreen/LaunchScreenManager.h"

#include "HostInterfaces/MetricsCenter.h"
#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSThread.h"

namespace vel {

namespace {

// The time from `sendAnalyticsEvent` until the event is recorded.
constexpr std::int64_t kEventDelay = kNanosecondsPerSecond / 2;
// The time from the moment at which the application is focused again until a postponed
// `sendAnalyticsEvent` is called.
constexpr std::int64_t kPostponedEventDelay = kNanosecondsPerSecond;
// The time from a refused dismissal until `sendAnalyticsEvent` is called.
constexpr std::int64_t kRefusedDismissalEventDelay = 2 * kNanosecondsPerSecond;

// Returns null if the value is not a string.
Strong<NSString> stringFor(const NSDictionary& parameters, std::string_view key) {
  return as<NSString>(parameters.objectForKey(key));
}

// Converts a number or a string. Returns 0 for a value of another class.
float numberFor(const NSDictionary& parameters, std::string_view key) {
  const Strong<NSObjectProtocol> value = parameters.objectForKey(key);
  if (const Strong<NSNumber> number = as<NSNumber>(value)) {
    return number->floatValue();
  }
  return send(as<NSString>(value), &NSString::floatValue);
}

// Returns true if the window's content view controller has a child controller whose class has this
// name. An empty class name matches no child.
bool holdsChildOfClass(const Strong<NSWindow>& window, std::string_view className) {
  if (className.empty()) {
    return false;
  }
  const Strong<NSViewController> controller = send(window, &NSWindow::contentViewController);
  for (const Strong<NSViewController>& child :
       send(controller, &NSViewController::childViewControllers)) {
    if (child->className() == className) {
      return true;
    }
  }
  return false;
}

void scheduleAnalyticsEvent(const Strong<LaunchScreenManager>& manager, std::int64_t delay) {
  dispatch_after(dispatch_time(kDispatchTimeNow, delay), dispatch_get_main_queue(),
                 "send the analytics event", [manager] { manager->sendAnalyticsEvent(); });
}

}  // namespace

// Construction and destruction

Strong<LaunchScreenManager> LaunchScreenManager::init() {
  auto manager = make<LaunchScreenManager>();
  manager->setContent(LaunchScreenContent::init());
  manager->content()->setContentDelegate(manager);
  return manager;
}

LaunchScreenManager::~LaunchScreenManager() {
  // The timer needs no invalidation: a scheduled timer would have kept the manager alive.
  launchScreenExpirationTimer_ = nullptr;
  launchScreenExpired_ = false;
  NSNotificationCenter::defaultCenter().removeObserver(this);
}

// Registration, request parsing and content creation

NSArray<NSString> LaunchScreenManager::supportedEngines() const {
  return {NSString::stringWithUTF8String(kLaunchScreenEngine)};
}

bool LaunchScreenManager::activate(const Strong<ContentBroker>& broker) {
  send(broker, &ContentBroker::registerContentResolver, self());
  return true;
}

bool LaunchScreenManager::parseParameters(const Strong<NSDictionary>& parameters) {
  static constexpr auto kMethod = "-[LaunchScreenManager parseParameters:]";
  if (parameters == nullptr) {
    NSLog("%@ (%s): Content request parameters is nil or empty!", className(), kMethod);
    return false;
  }
  const Strong<LaunchScreenConfiguration> configuration =
      LaunchScreenConfiguration::defaultConfiguration();
  const auto& keys = LaunchScreenContentRequest;
  // This function writes directly to the shared configuration. If a later parameter is invalid, the
  // function keeps what it has written.
  configuration->setSkipMode(
      send(stringFor(*parameters, keys.mode), &NSString::isEqualToString, keys.skip));
  const Strong<NSString> event = stringFor(*parameters, keys.event);
  if (send(event, &NSString::length) == 0) {
    NSLog("%@ (%s): Next event name is nil or empty!", className(), kMethod);
    return false;
  }
  configuration->setNextEventName(event);
  const float duration = numberFor(*parameters, keys.maxDurationTime);
  if (duration == 0) {  // a negative value and NaN are accepted
    NSLog("%@ (%s): Max duration time is nil or empty!", className(), kMethod);
    return false;
  }
  configuration->setExpirationTimeInterval(static_cast<double>(duration));
  LaunchScreenConfiguration::setDefaultConfiguration(configuration);
  return true;
}

Strong<ContentData> LaunchScreenManager::contentDataForContentRequest(
    const Strong<ContentRequest>& request) {
  if (!parseParameters(send(request, &ContentRequest::parameters))) {
    return nullptr;
  }
  if (tempItemRequired()) {
    // The temporary content has no content delegate, so the host is not notified of its state.
    setTempContent(LaunchScreenContent::init());
    send(tempContent(), &LaunchScreenContent::setContentRequest, request);
    return tempContent();
  }
  setLaunchScreenExpirationTimeLeft(
      LaunchScreenConfiguration::defaultConfiguration()->expirationTimeInterval());
  send(content(), &LaunchScreenContent::setContentRequest, request);
  return content();
}

Strong<ContentView> LaunchScreenManager::contentViewForContentData(
    const Strong<ContentData>& /*data*/) {
  setTempContent(nullptr);
  Strong<ContentView> view = send(content(), &LaunchScreenContent::getContentView);
  const Strong<NSViewController> controller = send(content(), &LaunchScreenContent::viewController);
  if (conformsTo<LaunchScreenViewControllerProtocol>(controller)) {
    send(as<LaunchScreenViewControllerProtocol>(controller),
         &LaunchScreenViewControllerProtocol::addDelegate, self());
  }
  return view;
}

void LaunchScreenManager::deactivate() {
  send(content(), &LaunchScreenContent::deactivate);
  setContent(nullptr);
  if (tempContent() != nullptr) {
    send(tempContent(), &LaunchScreenContent::deactivate);
    setTempContent(nullptr);
  }
}

// Dismissal and analytics event

void LaunchScreenManager::dismissLaunchScreen() {
  setLaunchScreenExpired(true);
  auto work = [manager = self()] {
    const Strong<NSViewController> controller =
        send(manager->content(), &LaunchScreenContent::viewController);
    send(controller, &NSViewController::dismissViewController, controller);
  };
  if (NSThread::isMainThread()) {
    work();
  } else {
    dispatch_async(dispatch_get_main_queue(), "dismiss the launch screen", std::move(work));
  }
}

void LaunchScreenManager::sendAnalyticsEvent() {
  if (eventWasSended()) {
    return;
  }
  if (appIsUnfocused()) {
    setLaunchShouldBeClosed(true);
    return;
  }
  const Strong<LaunchScreenConfiguration> configuration =
      LaunchScreenConfiguration::defaultConfiguration();
  if (send(configuration->nextEventName(), &NSString::length) > 0) {
    setEventWasSended(true);
    // The work does not capture the name: if the name changes before the work runs, the new name is
    // recorded.
    dispatch_after(dispatch_time(kDispatchTimeNow, kEventDelay), dispatch_get_main_queue(),
                   "record the analytics event",
                   [configuration] { MetricsCenter::logEvent(configuration->nextEventName()); });
  }
  setLaunchScreenExpired(false);
}

void LaunchScreenManager::contentDataDidChangeState(const Strong<ContentData>& data) {
  if (conformsTo<ContentResolverDelegate>(delegate())) {
    send(as<ContentResolverDelegate>(delegate()),
         &ContentResolverDelegate::contentResolverDidChangeStateForContentData, self(), data);
  }
}

// Which windows belong to the launch screen, and whether a launch screen is shown

Strong<NSWindow> LaunchScreenManager::launchScreenWindow() const {
  const Strong<NSViewController> controller = send(content(), &LaunchScreenContent::viewController);
  return send(send(controller, &NSViewController::view), &NSView::window);
}

bool LaunchScreenManager::isRequiredWindow(const Strong<NSWindow>& window) const {
  const Strong<NSWindow> launchWindow = launchScreenWindow();
  if (launchWindow != nullptr && send(window, &NSWindow::isEqual, launchWindow.get())) {
    return true;
  }
  if (send(launchWindow, &NSWindow::isModalPanel)) {
    if (send(window, &NSWindow::className) == LSUnityPlayerWindowClassName) {
      return true;
    }
    if (send(send(window, &NSWindow::parentWindow), &NSWindow::className) ==
        LSUnityPlayerWindowClassName) {
      return true;
    }
  }
  const Strong<NSViewController> controller = send(content(), &LaunchScreenContent::viewController);
  return holdsChildOfClass(window, send(controller, &NSViewController::className));
}

bool LaunchScreenManager::tempItemRequired() const {
  const Strong<NSViewController> controller =
      as<NSViewController>(send(content(), &LaunchScreenContent::internalViewController));
  if (send(controller, &NSViewController::presentingViewController) != nullptr) {
    return true;
  }
  const std::string_view className = LaunchScreenViewController::staticClassName();
  Strong<NSWindow> frontWindow = send(NSApp, &NSApplication::keyWindow);
  if (frontWindow == nullptr) {
    frontWindow = send(NSApp, &NSApplication::mainWindow);
  }
  if (holdsChildOfClass(frontWindow, className)) {
    return true;
  }
  for (const Strong<NSWindow>& window : send(NSApp, &NSApplication::orderedWindows)) {
    if (holdsChildOfClass(window, className)) {
      return true;
    }
  }
  return false;
}

// Expiration timer

void LaunchScreenManager::startTimer() {
  if (0.0 >= launchScreenExpirationTimeLeft()) {
    return;
  }
  if (send(launchScreenExpirationTimer(), &NSTimer::isValid)) {
    return;
  }
  setLaunchScreenExpirationTimer(
      NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<
          &LaunchScreenManager::updateTimer>(expirationTimeStep, self(), true));
  // The countdown also runs while a modal panel is shown. It does not run in any other mode.
  if (NSRunLoop* const loop = NSRunLoop::currentRunLoop()) {
    loop->addTimerForMode(launchScreenExpirationTimer(), NSModalPanelRunLoopMode);
  }
}

void LaunchScreenManager::updateTimer() {
  if (launchScreenExpirationTimeLeft() == 0.0) {
    return;
  }
  if (expirationTimeStep >= launchScreenExpirationTimeLeft()) {
    pauseTimer();
    dismissLaunchScreen();
  }
  // Read the time left again, because the dismissal may have set it to 0.
  setLaunchScreenExpirationTimeLeft(launchScreenExpirationTimeLeft() - expirationTimeStep);
}

void LaunchScreenManager::pauseTimer() {
  if (send(launchScreenExpirationTimer(), &NSTimer::isValid)) {
    send(launchScreenExpirationTimer(), &NSTimer::invalidate);
  }
  setLaunchScreenExpirationTimer(nullptr);
}

void LaunchScreenManager::stopTimer() {
  pauseTimer();
  setLaunchScreenExpirationTimeLeft(0.0);
}

// Focus

void LaunchScreenManager::subscribeAppLifecycle() {
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  using Self = LaunchScreenManager;
  center.addObserverSelectorNameObject<&Self::applicationWillResignActive>(
      self(), NSApplicationWillResignActiveNotification, nullptr);
  center.addObserverSelectorNameObject<&Self::applicationDidBecomeActive>(
      self(), NSApplicationDidBecomeActiveNotification, nullptr);
  center.addObserverSelectorNameObject<&Self::windowDidResignKey>(
      self(), NSWindowDidResignKeyNotification, nullptr);
  center.addObserverSelectorNameObject<&Self::windowDidBecomeKey>(
      self(), NSWindowDidBecomeKeyNotification, nullptr);
  center.addObserverSelectorNameObject<&Self::windowDidMiniaturize>(
      self(), NSWindowDidMiniaturizeNotification, nullptr);
  center.addObserverSelectorNameObject<&Self::windowDidDeminiaturize>(
      self(), NSWindowDidDeminiaturizeNotification, nullptr);
}

void LaunchScreenManager::windowDidResignKey(const NSNotification& notification) {
  const Strong<NSWindow> window = as<NSWindow>(notification.object());
  const Strong<NSViewController> controller = send(window, &NSWindow::contentViewController);
  if (send(controller, &NSViewController::className) == LSGDPRControllerClassName) {
    // The host's consent dialog has stopped being key, so the launch screen becomes key again.
    const auto keyNotification =
        NSNotification::initWithNameObject(NSWindowDidBecomeKeyNotification, launchScreenWindow());
    send(NSApp, &NSApplication::stopModal);
    windowDidBecomeKey(keyNotification);
    send(launchScreenWindow(), &NSWindow::makeKeyWindow);
    return;
  }
  if (isRequiredWindow(window) && !launchScreenExpired()) {
    pauseTimer();
    setAppIsUnfocused(true);
  }
}

void LaunchScreenManager::windowDidBecomeKey(const NSNotification& notification) {
  if (!isRequiredWindow(as<NSWindow>(notification.object()))) {
    return;
  }
  setAppIsUnfocused(false);
  if (launchShouldBeClosed()) {
    if (LaunchScreenConfiguration::defaultConfiguration()->skipMode()) {
      dismissLaunchScreen();
    } else {
      scheduleAnalyticsEvent(self(), kPostponedEventDelay);
    }
  }
  startTimer();
}

// These handlers are empty because only the key window affects the countdown.
void LaunchScreenManager::applicationWillResignActive(const NSNotification& /*notification*/) {}
void LaunchScreenManager::applicationDidBecomeActive(const NSNotification& /*notification*/) {}
void LaunchScreenManager::windowDidMiniaturize(const NSNotification& /*notification*/) {}
void LaunchScreenManager::windowDidDeminiaturize(const NSNotification& /*notification*/) {}
void LaunchScreenManager::appWillEnterForeground() {}
void LaunchScreenManager::appDidEnterBackground() {}

// View controller callbacks

void LaunchScreenManager::launchScreenControllerWillPresent(
    const Strong<LaunchScreenViewController>& /*controller*/) {
  subscribeAppLifecycle();
  if (launchScreenExpirationTimeLeft() > 0 && !appIsUnfocused()) {
    startTimer();
  }
}

bool LaunchScreenManager::canLaunchScreenControllerDismiss(
    const Strong<LaunchScreenViewController>& controller) {
  if (LaunchScreenConfiguration::defaultConfiguration()->skipMode()) {
    if (appIsUnfocused()) {
      setLaunchShouldBeClosed(true);
      return false;
    }
    return true;
  }
  if (expirationTimeStep >= launchScreenExpirationTimeLeft()) {
    if (send(launchScreenExpirationTimer(), &NSTimer::isValid)) {
      sendAnalyticsEvent();
    }
    const bool presentsNothing =
        send(controller, &NSViewController::presentedViewControllers).empty();
    stopTimer();
    return presentsNothing;
  }
  // Time is left, so the dismissal is refused. The event is nevertheless recorded.
  scheduleAnalyticsEvent(self(), kRefusedDismissalEventDelay);
  return false;
}

void LaunchScreenManager::launchScreenControllerWillDismiss(
    const Strong<LaunchScreenViewController>& /*controller*/) {}

void LaunchScreenManager::launchScreenControllerDidDismiss(
    const Strong<LaunchScreenViewController>& /*controller*/) {
  NSNotificationCenter::defaultCenter().removeObserver(this);
  stopTimer();
  if (!LaunchScreenConfiguration::defaultConfiguration()->skipMode()) {
    sendAnalyticsEvent();
  }
}

}  // namespace vel
