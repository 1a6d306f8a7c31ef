#include "Host/Show/ShowSession.h"

#include <array>
#include <utility>

#include "Host/Show/Screenshot.h"
#include "HostInterfaces/DictionaryRequest.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"

namespace vel::host {

namespace {

// The controls that the library removes from the player window (the window under the launch
// screen).
constexpr NSWindowStyleMask kControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;

// After this time in seconds, the session requests the launch screen even if the player window is
// not the key window. A window manager may never make the player window the key window, for example
// while the user types in another window.
constexpr double kMaximumWaitForKeyWindow = 1;

/// The library recognises the main window of a game by this class name.
class PlayerWindow final : public Class<PlayerWindow, "PlayerWindow", NSWindow> {
 public:
  using Class::Class;
};

std::string controlNames(NSWindowStyleMask controls) {
  constexpr std::array<std::pair<NSWindowStyleMask, std::string_view>, 3> kNames{
      {{NSWindowStyleMaskClosable, "close"},
       {NSWindowStyleMaskMiniaturizable, "miniaturise"},
       {NSWindowStyleMaskResizable, "resize"}}};
  std::string names;
  for (const auto& [control, name] : kNames) {
    if ((controls & control) != 0) {
      names.append(names.empty() ? "" : ", ").append(name);
    }
  }
  return names.empty() ? "none" : names;
}

// Returns the mode that a host passes to `presentForWindowWithPresentationMode`. The library's
// LaunchScreenPresentationMode numbers the modes differently.
std::int32_t hostMode(const std::string& presentation) {
  static const std::map<std::string, std::int32_t> kModes{
      {"embedded", 0}, {"sheet", 1}, {"modal", 2}};
  return kModes.at(presentation);
}

}  // namespace

ShowSession::ShowSession(ShowOptions options, std::shared_ptr<Console> console,
                         std::unique_ptr<EventsFile> events)
    : options_(std::move(options)), console_(std::move(console)), events_(std::move(events)) {}

ShowSession::~ShowSession() { shutDown(); }

void ShowSession::start() {
  isStarted_ = true;
  startTime_ = NSRunLoop::mainRunLoop().now();
  previousObserver_ = setPlatformObserver(this);
  previousSink_ = MetricsCenter::setSink([this](std::string_view event) { eventRecorded(event); });
  NSApp->setDisplayLostHandler([this](std::string_view reason) { displayLost(reason); });
  NSApp->setRemainingControlsHandler([this](const NSWindow& window, NSWindowStyleMask controls) {
    reportRemainingControls(window, controls);
  });
  needsScreenshot_ = !options_.screenshotPath.empty();
  if (options_.window) {
    adoptPlayerWindow(*options_.window);
  } else {
    openPlayerWindow();
  }
  if (playerWindow_ == nullptr) {
    return;
  }
  playerStyle_ = playerWindow_->styleMask();
  if (options_.hasContentController) {
    playerWindow_->setContentViewController(make<NSViewController>());
  }
  if (!options_.window) {
    squareView_ = MovingSquareView::startIn(playerWindow_);
  }
  playerWindow_->makeKeyAndOrderFront();
  // The launch screen must not appear while the player window may still move. A new window may move
  // until it is the key window: if it is not, `update` sends the content request later. An adopted
  // window is already at its final position.
  if (options_.window || playerWindow_->isKeyWindow()) {
    sendRequest();
  }
}

void ShowSession::sendRequest() {
  startTime_ = NSRunLoop::mainRunLoop().now();  // `time` now counts from the request
  broker_ = make<EngineBroker>();
  manager_ = LaunchScreenManager::init();
  manager_->setDelegate(self());
  manager_->activate(broker_);
  const auto& keys = LaunchScreenContentRequest;
  const auto request = DictionaryRequest::requestWithEntries(
      {{std::string(keys.mode), NSString::stringWithUTF8String(options_.mode)},
       {std::string(keys.event), NSString::stringWithUTF8String(options_.event)},
       {std::string(keys.maxDurationTime), NSString::stringWithUTF8String(options_.duration)}});
  const Strong<ContentData> data = send(broker_->resolverForEngine(kLaunchScreenEngine),
                                        &ContentResolver::contentDataForContentRequest, request);
  if (data == nullptr) {
    fail({});  // the library has logged the reason
  } else if (data->state() == ContentDataStateLoaded) {
    present(data);
  }
}

void ShowSession::openPlayerWindow() {
  playerWindow_ = NSWindow::initAs<PlayerWindow>(CGRect{{}, options_.size},
                                                 NSWindowStyleMaskTitled | kControls);
  playerWindow_->setTitle("launchscreen: player");
}

void ShowSession::adoptPlayerWindow(std::uint64_t windowId) {
  std::string error;
  playerWindow_ = NSApp->adoptWindow(X11WindowId{windowId}, error);
  if (playerWindow_ == nullptr) {
    fail(error);
  } else if (!playerWindow_->isOnScreen()) {
    playerWindow_ = nullptr;
    fail("the window is not on the screen");
  }
}

void ShowSession::contentResolverDidChangeStateForContentData(
    const Strong<ContentResolver>& /*resolver*/, const Strong<ContentData>& data) {
  if (data->state() == ContentDataStateLoaded) {
    report("content loaded");  // `sendRequest` is still running and presents the content
  } else if (data->state() == ContentDataStateFailed) {
    fail("the launch screen cannot be shown: " +
         std::string(send(data->error(), &NSError::domain)));
  }
}

void ShowSession::present(const Strong<ContentData>& data) {
  const Strong<ContentView> view =
      broker_->resolverForEngine(kLaunchScreenEngine)->contentViewForContentData(data);
  view->setDelegate(self());
  presentation_ = as<CVPresentationFullScreen>(view->presentation());
  cover_ = presentation_->viewController();
  if (options_.hasIndicator) {
    // The indicator starts when the view appears, so the indicator must exist before the view
    // appears.
    const auto controller = as<LaunchScreenViewController>(cover_);
    send(controller, &LaunchScreenViewController::createActivityIndicator);
    send(controller, &LaunchScreenViewController::createConstraintsActivityIndicator);
  }
  totalSeconds_ = manager_->launchScreenExpirationTimeLeft();
  presentation_->presentForWindowWithPresentationMode(playerWindow_,
                                                      hostMode(options_.presentation));
  if (!isCovering()) {
    fail("nothing is shown: --present " + options_.presentation +
         " needs a player window with a content view controller (--content-controller)");
    return;
  }
  showTimeLeft();
  if (options_.skipAfter) {
    dispatch_after(
        dispatch_time(kDispatchTimeNow, nanosecondsFromSeconds(*options_.skipAfter)),
        dispatch_get_main_queue(), "skip the launch screen",
        [session = Weak<ShowSession>(self())] { send(session.lock(), &ShowSession::skip); });
  }
}

void ShowSession::skip() {
  // An embedded launch screen may stay in the window for a while after its dismissal. After a
  // second dismissal, the library would report the end of the launch screen again.
  if (options_.canSkip() && isCovering() && !isDismissed_) {
    manager_->dismissLaunchScreen();
  }
}

bool ShowSession::update() {
  const bool isWaitingForKeyWindow = playerWindow_ != nullptr && manager_ == nullptr;
  if (isWaitingForKeyWindow && !outcome_) {
    if (!playerWindow_->isVisible()) {
      fail("the player window was closed");
    } else if (playerWindow_->isKeyWindow() || time() >= kMaximumWaitForKeyWindow) {
      sendRequest();
    }
  }
  if (isCovering() && !isDismissed_) {
    const CountdownState currentState =
        manager_->appIsUnfocused() ? CountdownState::Paused : CountdownState::Running;
    if (currentState != countdownState_) {
      countdownState_ = currentState;
      showTimeLeft();
    }
  }
  reportIfCovered();
  reportIfUncovered();
  if (isUncovered_ && !outcome_) {
    // In skip mode, the library records no event.
    if (options_.canSkip() || isEventRecorded_) {
      outcome_ = ShowOutcome{};
      if (!hasLaunchScreenBeenOnScreen_) {
        outcome_ = ShowOutcome{kExitFailure, "the launch screen was never on the screen"};
      } else if (needsScreenshot_) {
        outcome_ = ShowOutcome{kExitFailure,
                               "no screenshot: the launch screen ended before half of its time"};
      }
    } else if (!manager_->eventWasSended()) {
      // The library has postponed the event until a window with the launch screen becomes the key
      // window. No window contains the launch screen any more, so the library never records the
      // event.
      fail("the launch screen was closed while it was not in front: no event is recorded");
    }
  }
  return outcome_.has_value();
}

void ShowSession::shutDown() {
  if (!std::exchange(isStarted_, false)) {
    return;
  }
  if (isCovering() && !isDismissed_) {
    presentation_->dismissViewController();
  }
  if (isCovering()) {
    // An embedded launch screen may stay in the window for a while after its dismissal. Removing
    // the view of the launch screen restores the style of the window.
    cover_->view()->removeFromSuperview();
  }
  reportIfUncovered();
  send(squareView_, &MovingSquareView::stop);
  send(playerWindow_, &NSWindow::close);  // releases an adopted window instead of closing it
  send(manager_, &LaunchScreenManager::deactivate);
  send(NSApp, &NSApplication::setDisplayLostHandler, nullptr);
  send(NSApp, &NSApplication::setRemainingControlsHandler, nullptr);
  MetricsCenter::setSink(std::exchange(previousSink_, nullptr));
  setPlatformObserver(previousObserver_);
}

void ShowSession::lifeCycleMethodCalled(NSViewController& controller, LifeCycleMethod method) {
  if (&controller == cover_.get() && method == LifeCycleMethod::DidAppear) {
    hasViewAppeared_ = true;
    reportIfCovered();
  }
}

void ShowSession::styleMaskWasSet(NSWindow& window, std::uint64_t styleMask) {
  if (&window != playerWindow_.get()) {
    return;
  }
  if (!areControlsExcluded_ && (styleMask & kControls) == 0) {
    areControlsExcluded_ = true;
    report("controls removed");
  } else if (areControlsExcluded_ && styleMask == playerStyle_) {
    areControlsExcluded_ = false;
    report("controls restored");
  }
}

void ShowSession::timerFired(NSTimer& /*timer*/, const Strong<NSObject>& target) {
  // The manager is the target of the countdown's timer.
  if (target != manager_ || isDismissed_) {
    return;
  }
  showTimeLeft();
  if (needsScreenshot_ && manager_->launchScreenExpirationTimeLeft() <= totalSeconds_ / 2) {
    takeScreenshot();
  }
}

void ShowSession::contentViewDidDisappear(const Strong<ContentView>& /*view*/) {
  isDismissed_ = true;
  report("dismissed");
}

void ShowSession::eventRecorded(std::string_view event) {
  isEventRecorded_ = true;
  report("event recorded: " + std::string(event));
  if (events_ != nullptr && !events_->append(event, time())) {
    fail("the event could not be written to " + events_->path());
  }
}

// The display can also be lost after a successful end, while the player window is still open. The
// outcome then changes to a failure.
void ShowSession::displayLost(std::string_view reason) {
  if (outcome_ && outcome_->status == kExitSuccess) {
    outcome_.reset();
  }
  fail("the display is lost: " + std::string(reason));
}

void ShowSession::reportRemainingControls(const NSWindow& window,
                                          NSWindowStyleMask remainingControls) {
  if (&window == playerWindow_.get() && areControlsExcluded_) {
    console_->reportOnOwnLine(
        time(), "controls kept by the window manager: " + controlNames(remainingControls));
  }
}

void ShowSession::takeScreenshot() {
  needsScreenshot_ = false;
  const auto picture = NSApp->windowSystem().picture(playerWindow_->handle());
  if (!picture) {
    fail("no screenshot: the player window is not on a screen");
  } else if (const std::string reason = writePng(*picture, options_.screenshotPath);
             !reason.empty()) {
    fail("no screenshot: " + options_.screenshotPath + ": " + reason);
  }
}

void ShowSession::fail(std::string failure) {
  if (!outcome_) {
    outcome_ = ShowOutcome{kExitFailure, std::move(failure)};
  }
}

double ShowSession::time() const {
  return secondsFromNanoseconds(NSRunLoop::mainRunLoop().now() - startTime_);
}

void ShowSession::report(std::string_view text) { console_->report(time(), text); }

void ShowSession::showTimeLeft() {
  console_->showTimeLeft(time(), {.remainingSeconds = manager_->launchScreenExpirationTimeLeft(),
                                  .totalSeconds = totalSeconds_,
                                  .state = countdownState_});
}

bool ShowSession::isCovering() const {
  return cover_ != nullptr && send(cover_->view()->window(), &NSWindow::isVisible);
}

void ShowSession::reportIfCovered() {
  if (hasViewAppeared_ && !hasLaunchScreenBeenOnScreen_ && isCovering() &&
      NSApp->windowSystem().isSceneOnScreen(cover_->view()->window()->handle())) {
    hasLaunchScreenBeenOnScreen_ = true;
    report("covered");
  }
}

void ShowSession::reportIfUncovered() {
  if (hasViewAppeared_ && !isUncovered_ && !isCovering()) {
    isUncovered_ = true;
    report(hasLaunchScreenBeenOnScreen_ ? "uncovered" : "closed before it was on the screen");
  }
}

}  // namespace vel::host
