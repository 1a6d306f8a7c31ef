#include "Bindings/C/Session.h"

#include <utility>

#include "Bindings/C/CallbackDelegate.h"
#include "Bindings/C/TemporaryValue.h"
#include "HostInterfaces/DictionaryRequest.h"
#include "HostInterfaces/MetricsCenter.h"
#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSThread.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace vel {

namespace {

/// The window that the library opens for a host without a window.
class PlayerWindow final : public Class<PlayerWindow, "PlayerWindow", NSWindow> {
 public:
  using Class::Class;
};

constexpr NSWindowStyleMask kPlayerStyle = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                           NSWindowStyleMaskMiniaturizable |
                                           NSWindowStyleMaskResizable;
constexpr CGSize kDefaultSize{1280, 720};

// The latest time that virtual time may reach. Timers that are pending at this time have fire dates
// after it, which must not overflow.
constexpr Nanoseconds kLatestTime = 9'000'000'000 * kNanosecondsPerSecond;

// Reads the duration of a request as LaunchScreenManager does.
float durationOf(const NSDictionary& parameters) {
  const auto time = parameters.objectForKey(LaunchScreenContentRequest.maxDurationTime);
  if (const Strong<NSNumber> number = as<NSNumber>(time)) {
    return number->floatValue();
  }
  return send(as<NSString>(time), &NSString::floatValue);
}

std::string_view eventOf(const NSDictionary& parameters) {
  return send(as<NSString>(parameters.objectForKey(LaunchScreenContentRequest.event)),
              &NSString::UTF8String);
}

std::string textOrEmpty(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

VelStatus Session::create(const VelCreateOptions& options,
                          const std::optional<NativeWindow>& hostWindow,
                          const VelCallbacks& callbacks, std::unique_ptr<Session>& session,
                          std::string& error) {
  NSThread::becomeMainThread();
  const std::string display = options.display != nullptr ? options.display : "auto";
  std::unique_ptr<WindowSystem> windowSystem =
      makeWindowSystem(display, textOrEmpty(options.display_name), error, hostWindow);
  if (windowSystem == nullptr) {
    return VEL_NO_DISPLAY;
  }
  const bool canOwnWindows = !hostWindow || vel::canOwnWindows(*windowSystem, *hostWindow);
  if (options.time == VEL_TIME_VIRTUAL) {
    NSRunLoop::mainRunLoop().setClock(std::make_unique<VirtualClock>());
  } else {
    NSRunLoop::mainRunLoop().useRealTime();
  }
  NSApplication::start(std::move(windowSystem));
  std::unique_ptr<Session> newSession(new Session());
  newSession->ownerThread.becomeCurrentThread();
  newSession->callbacks_ = callbacks;
  const VelStatus status = newSession->openWindow(options, hostWindow, error);
  if (status != VEL_OK) {
    return status;
  }
  newSession->manager_ = LaunchScreenManager::init();
  newSession->delegate_ = make<CallbackDelegate>(callbacks);
  newSession->manager_->setDelegate(newSession->delegate_);
  newSession->manager_->content()->setDelegate(newSession->delegate_);
  newSession->manager_->activate(nullptr);
  const auto* const surface = hostWindow ? std::get_if<WaylandSurface>(&*hostWindow) : nullptr;
  newSession->isSurface_ = surface != nullptr;
  newSession->canOwnWindows_ = canOwnWindows;
  newSession->connectSinks();
  session = std::move(newSession);
  return VEL_OK;
}

VelStatus Session::openWindow(const VelCreateOptions& options,
                              const std::optional<NativeWindow>& hostWindow, std::string& error) {
  if (hostWindow) {
    window_ = NSApp->adoptWindow(*hostWindow, error);
    if (window_ == nullptr) {
      return VEL_BAD_WINDOW;
    }
  } else {
    const CGSize size{options.width > 0 ? options.width : kDefaultSize.width,
                      options.height > 0 ? options.height : kDefaultSize.height};
    window_ = NSWindow::initAs<PlayerWindow>(CGRect{{}, size}, kPlayerStyle);
    window_->setTitle(textOrEmpty(options.title));
    window_->makeKeyAndOrderFront();
  }
  if (options.content_controller != 0) {
    window_->setContentViewController(NSViewController::initWithNibNameBundle({}, nullptr));
  }
  return VEL_OK;
}

void Session::connectSinks() {
  const Strong<CallbackDelegate> delegate = delegate_;
  setNSLogSink([delegate](std::string_view line) { delegate->logLine(line); });
  if (callbacks_.record_event != nullptr) {
    MetricsCenter::setSink([delegate](std::string_view event) { delegate->recordEvent(event); });
  }
  NSApp->setRemainingControlsHandler(
      [this, delegate](NSWindow& window, NSWindowStyleMask controls) {
        delegate->reportRemainingControls(static_cast<std::uint32_t>(controls));
        if (isSurface_ && &window == window_.get()) {
          delegate->requestControlsRemoval(static_cast<std::uint32_t>(controls));
        }
      });
  NSApp->setDisplayLostHandler([this, delegate](std::string_view reason) {
    isDisplayLost_ = true;
    delegate->reportLostDisplay(reason);
  });
  delegate->setDisappearanceHandler([this] { return recordEndReason(); });
}

Session::~Session() {
  send(delegate_, &CallbackDelegate::silence);
  send(manager_, &LaunchScreenManager::deactivate);
  shutDown();
  sDefaultConfiguration = nullptr;
  MetricsCenter::setSink(nullptr);
  setNSLogSink(nullptr);
}

void Session::enterFunction() {
  ++runningFunctionCount_;
  delegate_->queue().enterFunction();
}

bool Session::leaveFunction() {
  delegate_->queue().leaveFunction();
  return --runningFunctionCount_ == 0;
}

void Session::deliverCallbacks() {
  if (!delegate_->queue().isInsideOperation()) {
    deliverAllCallbacks();
  }
}

void Session::deliverAllCallbacks() {
  delegate_->forgetDismissal();
  reportEnd();
  delegate_->queue().deliver();
}

void Session::markDestroyed() {
  isDestroyed_ = true;
  delegate_->silence();
  const bool restoresControls = delegate_->hasTakenControls();
  // `silence` has discarded a waiting call of `ended`, so `lastCallbacks_` must call `ended`.
  const std::optional<VelEndReason> waitingEndReason = delegate_->waitingEndReason();
  const bool reportsEnd = (isPresented_ || waitingEndReason) && callbacks_.ended != nullptr;
  if (!restoresControls && !reportsEnd) {
    return;
  }
  const VelEndReason reason = waitingEndReason.value_or(endReason_.value_or(VEL_END_DESTROYED));
  lastCallbacks_ = [callbacks = callbacks_, restoresControls, reportsEnd, reason] {
    if (restoresControls) {
      callbacks.take_controls(callbacks.user_data, 0);
    }
    if (reportsEnd) {
      callbacks.ended(callbacks.user_data, reason);
    }
  };
}

VelStatus Session::request(const Strong<NSDictionary>& parameters, std::string& error) {
  if (delegate_->queue().isInsideOperation()) {
    error = "the library is inside another operation";
    return VEL_BUSY;
  }
  // The manager does not notice a cover over a window without a content controller. A new request
  // would leave that cover without a countdown.
  if (isUp()) {
    error = "a launch screen is shown";
    return VEL_STILL_UP;
  }
  if (eventOf(*parameters).find('\0') != std::string_view::npos) {
    error = "the event contains a zero byte";
    return VEL_INVALID_ARGUMENT;
  }
  // Refuse a negative time before the manager stores it: the manager would accept the request, and
  // then the content could not be loaded.
  if (durationOf(*parameters) < 0) {
    error = "the time is negative";
    return VEL_REFUSED;
  }
  const Strong<ContentData> data =
      manager_->contentDataForContentRequest(DictionaryRequest::requestWithParameters(parameters));
  if (data == nullptr) {
    error = delegate_->lastLogLine();
    return VEL_REFUSED;
  }
  if (data->state() == ContentDataStateFailed) {
    error = send(data->error(), &NSError::domain);
    return VEL_REFUSED;
  }
  return VEL_OK;
}

VelStatus Session::present(VelPresentation presentation, std::string& error) {
  if (delegate_->queue().isInsideOperation()) {
    error = "the library is inside another operation";
    return VEL_BUSY;
  }
  if (controller() == nullptr) {
    error = "no request has been loaded";
    return VEL_NOTHING_TO_PRESENT;
  }
  if (controller() == presentedController_.lock()) {
    error = "the request has been presented";
    return VEL_NOTHING_TO_PRESENT;
  }
  if (presentation != VEL_PRESENT_MODAL && !window_->isVisible()) {
    error = "the window has been closed";
    return VEL_NOTHING_TO_PRESENT;
  }
  if (presentation != VEL_PRESENT_EMBEDDED && !canOwnWindows_) {
    error =
        "a sheet or a modal window over a Wayland surface needs its xdg_toplevel, or a compositor "
        "with xdg-foreign";
    return VEL_NOTHING_TO_PRESENT;
  }
  if (presentation == VEL_PRESENT_SHEET && window_->contentViewController() == nullptr) {
    error = "a sheet needs a window with a content controller";
    return VEL_NOTHING_TO_PRESENT;
  }
  presentedController_ = controller();
  isPresented_ = true;
  endReason_.reset();
  const TemporaryValue isPresenting(isPresenting_, true);
  const Strong<ContentView> view = manager_->contentViewForContentData(manager_->content());
  // The values of VelPresentation are the modes of the content framework.
  send(as<CVPresentationFullScreen>(view->presentation()),
       &CVPresentationFullScreen::presentForWindowWithPresentationMode, window_,
       static_cast<std::int32_t>(presentation));
  return VEL_OK;
}

VelStatus Session::dismiss(std::string& error) {
  if (ownerThread.isCurrentThread()) {
    if (!isUp()) {
      error = "no launch screen is shown";
      return VEL_NOT_UP;
    }
    if (!delegate_->queue().isInsideOperation()) {
      dismissNow();
      return VEL_OK;
    }
  }
  // The end of the session discards the work, so the work never outlives the session.
  dispatch_async(dispatch_get_main_queue(), "dismiss the launch screen", [this] { dismissNow(); });
  return VEL_OK;
}

void Session::dismissNow() {
  // After `endReason_` is stored, the cover is already disappearing and needs no second dismissal.
  if (!isUp() || endReason_) {
    return;
  }
  {
    const TemporaryValue isHostDismissing(isHostDismissing_, true);
    manager_->dismissLaunchScreen();
  }
  delegate_->forgetDismissal();
}

VelStatus Session::resized(CGSize size, std::string& error) {
  if (!isSurface_ || !window_->isVisible()) {
    error = isSurface_ ? "the window has been closed" : "the library observes the size itself";
    return VEL_BAD_WINDOW;
  }
  window_->setFrame({window_->frame().origin, size});
  return VEL_OK;
}

bool Session::pump() {
  const bool hadWork = NSRunLoop::mainRunLoop().pump();
  if (!isDestroyed()) {
    deliverAllCallbacks();
  }
  return hadWork;
}

VelStatus Session::run(double seconds, std::string& error) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  const Nanoseconds duration = nanosecondsFromSeconds(seconds);
  if (duration > kLatestTime - loop.now()) {
    error = "virtual time ends after 9000000000 seconds";
    return VEL_INVALID_ARGUMENT;
  }
  const Nanoseconds limit = loop.now() + duration;
  while (!isDestroyed() && (loop.now() < limit || loop.nextDeadline() <= limit)) {
    loop.runModeBeforeDate(loop.mode(), limit);
    if (!isDestroyed()) {
      deliverAllCallbacks();
    }
  }
  return VEL_OK;
}

bool Session::recordEndReason() {
  if (!isPresented_ || endReason_) {
    return false;
  }
  if (!delegate_->hasAgreedToDismissal()) {
    endReason_ = VEL_END_WINDOW_CLOSED;
  } else if (isHostDismissing_ || secondsLeft() > expirationTimeStep) {
    // Time is left, so the countdown has not caused this dismissal. The host has called `dismiss`
    // while the window was not in front, and the dismissal was postponed.
    endReason_ = VEL_END_DISMISSED;
  } else {
    endReason_ = VEL_END_TIME_USED_UP;
  }
  return true;
}

void Session::reportEnd() {
  if (!isPresented_ || isPresenting_ ||
      send(presentedController_.lock(), &NSViewController::isShown)) {
    return;
  }
  VelEndReason reason = endReason_.value_or(VEL_END_WINDOW_CLOSED);
  if (reason == VEL_END_WINDOW_CLOSED && isDisplayLost_) {
    reason = VEL_END_DISPLAY_LOST;  // a lost display closes all windows
  }
  isPresented_ = false;
  delegate_->reportEnd(reason);
}

Strong<NSViewController> Session::controller() const {
  return send(manager_->content(), &LaunchScreenContent::viewController);
}

bool Session::isUp() const { return send(controller(), &NSViewController::isShown); }

VelPause Session::pauseReason() const {
  if (!isUp()) {
    return VEL_PAUSE_NOT_UP;
  }
  if (send(manager_->launchScreenExpirationTimer(), &NSTimer::isValid)) {
    return VEL_PAUSE_NONE;
  }
  return secondsLeft() > 0 ? VEL_PAUSE_NOT_IN_FRONT : VEL_PAUSE_NO_TIME_LEFT;
}

VelState Session::state() const {
  return static_cast<VelState>(send(manager_->content(), &LaunchScreenContent::state));
}

}  // namespace vel
