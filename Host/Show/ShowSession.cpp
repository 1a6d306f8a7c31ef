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

constexpr NSWindowStyleMask kControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;

// A user who works elsewhere meanwhile may keep it from there for good.
constexpr double kTimeToComeToFront = 1;

/// What the library takes for the game's main window goes by its class name.
class PlayerWindow final : public Class<PlayerWindow, "PlayerWindow", NSWindow> {
 public:
  using Class::Class;
};

std::string namesOf(NSWindowStyleMask controls) {
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

// The content framework's numbers for the ways of presenting, which are not the library's own.
std::int32_t hostMode(const std::string& presentation) {
  static const std::map<std::string, std::int32_t> kModes{
      {"embedded", 0}, {"sheet", 1}, {"modal", 2}};
  return kModes.at(presentation);
}

}  // namespace

ShowSession::ShowSession(ShowOptions options, std::shared_ptr<Console> console,
                         std::unique_ptr<EventsFile> events)
    : options_(std::move(options)), console_(std::move(console)), events_(std::move(events)) {}

ShowSession::~ShowSession() { giveBack(); }

void ShowSession::start() {
  started_ = true;
  startedAt_ = NSRunLoop::mainRunLoop().now();
  observerBefore_ = setPlatformObserver(this);
  sinkBefore_ = MetricsCenter::setSink([this](std::string_view event) { eventRecorded(event); });
  NSApp->setDisplayLostHandler([this](std::string_view reason) { displayLost(reason); });
  NSApp->setControlsKeptHandler([this](const NSWindow& window, NSWindowStyleMask controls) {
    controlsKept(window, controls);
  });
  screenshotDue_ = !options_.screenshotPath.empty();
  if (options_.window) {
    adoptPlayerWindow(*options_.window);
  } else {
    openPlayerWindow();
  }
  if (player_ == nullptr) {
    return;
  }
  playerStyle_ = player_->styleMask();
  if (options_.contentController) {
    player_->setContentViewController(make<NSViewController>());
  }
  if (!options_.window) {
    playground_ = Playground::startIn(player_);
  }
  player_->makeKeyAndOrderFront();
  // A window of our own is where it stays once it is in front; another program's is that already.
  if (options_.window || player_->isKeyWindow()) {
    request();
  }
}

void ShowSession::request() {
  startedAt_ = NSRunLoop::mainRunLoop().now();
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
    fail({});  // the library has said why
  } else if (data->state() == ContentDataStateLoaded) {
    present(data);
  }
}

void ShowSession::openPlayerWindow() {
  player_ = NSWindow::initAs<PlayerWindow>(CGRect{{}, options_.size},
                                           NSWindowStyleMaskTitled | kControls);
  player_->setTitle("launchscreen: player");
}

void ShowSession::adoptPlayerWindow(std::uint64_t window) {
  std::string error;
  player_ = NSApp->adoptWindow(window, error);
  if (player_ == nullptr) {
    fail(error);
  } else if (!player_->isOnScreen()) {
    player_ = nullptr;
    fail("the window is not on the screen");
  }
}

void ShowSession::contentResolverDidChangeStateForContentData(
    const Strong<ContentResolver>& /*resolver*/, const Strong<ContentData>& data) {
  if (data->state() == ContentDataStateLoaded) {
    happened("request answered");
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
  if (options_.indicator) {
    // Before the view appears: that is what sets the indicator turning.
    const auto controller = as<LaunchScreenViewController>(cover_);
    send(controller, &LaunchScreenViewController::createActivityIndicator);
    send(controller, &LaunchScreenViewController::createConstraintsActivityIndicator);
  }
  timeGiven_ = manager_->launchScreenExpirationTimeLeft();
  presentation_->presentForWindowWithPresentationMode(player_, hostMode(options_.presentation));
  if (!covers()) {
    fail("nothing is shown: a " + options_.presentation +
         " needs a player window with a content view controller (--content-controller)");
    return;
  }
  tellTimeLeft();
  if (options_.skipAfter) {
    dispatch_after(
        dispatch_time(DISPATCH_TIME_NOW, nanosecondsFromSeconds(*options_.skipAfter)),
        dispatch_get_main_queue(), "skip the launch screen",
        [session = Weak<ShowSession>(self())] { send(session.lock(), &ShowSession::skip); });
  }
}

void ShowSession::skip() {
  // Asked once more while the cover is being taken down, the library would end it once more.
  if (options_.canSkip() && covers() && !dismissed_) {
    manager_->dismissLaunchScreen();
  }
}

bool ShowSession::passEnded() {
  if (player_ != nullptr && manager_ == nullptr && !outcome_) {
    if (!player_->isVisible()) {
      fail("the player window was closed");
    } else if (player_->isKeyWindow() || time() >= kTimeToComeToFront) {
      request();
    }
  }
  if (covers() && !dismissed_) {
    const Countdown now = manager_->appIsUnfocused() ? Countdown::Paused : Countdown::Runs;
    if (now != countdown_) {
      countdown_ = now;
      tellTimeLeft();
    }
  }
  noticeUncovered();
  if (uncovered_ && !outcome_) {
    if (options_.canSkip() || recorded_) {
      outcome_ = ShowOutcome{};
      if (screenshotDue_) {
        outcome_ =
            ShowOutcome{kExitFailure, "the launch screen went before its middle: no screenshot"};
      }
    } else if (!manager_->eventWasSended()) {
      // Only while a required window is key is the event recorded, and there is none any more.
      fail("the launch screen was closed while it was not in front: no event is recorded");
    }
  }
  return outcome_.has_value();
}

void ShowSession::giveBack() {
  if (!std::exchange(started_, false)) {
    return;
  }
  if (covers() && !dismissed_) {
    presentation_->dismissViewController();
  }
  if (covers()) {
    // An embedded cover may be left for a while after its end. Taking it away restores the window.
    cover_->view()->removeFromSuperview();
  }
  noticeUncovered();
  send(playground_, &Playground::stop);
  send(player_, &NSWindow::close);
  send(manager_, &LaunchScreenManager::deactivate);
  send(NSApp, &NSApplication::setDisplayLostHandler, nullptr);
  send(NSApp, &NSApplication::setControlsKeptHandler, nullptr);
  MetricsCenter::setSink(std::exchange(sinkBefore_, nullptr));
  setPlatformObserver(observerBefore_);
}

// What happens

void ShowSession::lifeCycleStepBegan(NSViewController& controller, LifeCycleStep step) {
  if (&controller == cover_.get() && step == LifeCycleStep::DidAppear) {
    covered_ = true;
    happened("covered");
  }
}

void ShowSession::styleMaskSet(NSWindow& window, std::uint64_t styleMask) {
  if (&window != player_.get()) {
    return;
  }
  if (!controlsTaken_ && (styleMask & kControls) == 0) {
    controlsTaken_ = true;
    happened("controls taken");
  } else if (controlsTaken_ && styleMask == playerStyle_) {
    controlsTaken_ = false;
    happened("controls given back");
  }
}

void ShowSession::timerFired(NSTimer& /*timer*/, const Strong<NSObject>& target) {
  if (target != manager_ || dismissed_) {
    return;
  }
  tellTimeLeft();
  if (screenshotDue_ && manager_->launchScreenExpirationTimeLeft() <= timeGiven_ / 2) {
    takeScreenshot();
  }
}

void ShowSession::contentViewDidDisappear(const Strong<ContentView>& /*view*/) {
  dismissed_ = true;
  happened("dismissed");
}

void ShowSession::eventRecorded(std::string_view event) {
  recorded_ = true;
  happened("event recorded: " + std::string(event));
  if (events_ != nullptr && !events_->append(event, time())) {
    fail("the event could not be written to " + events_->path());
  }
}

// Also after a good end, while the user is to see the player.
void ShowSession::displayLost(std::string_view reason) {
  if (outcome_ && outcome_->status == kExitSuccess) {
    outcome_.reset();
  }
  fail("the display is lost: " + std::string(reason));
}

void ShowSession::controlsKept(const NSWindow& window, NSWindowStyleMask controls) {
  if (&window == player_.get() && controlsTaken_) {
    console_->remark(time(), "controls kept by the window manager: " + namesOf(controls));
  }
}

void ShowSession::takeScreenshot() {
  screenshotDue_ = false;
  const auto picture = NSApp->windowSystem().picture(player_->handle());
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
  return secondsFromNanoseconds(NSRunLoop::mainRunLoop().now() - startedAt_);
}

void ShowSession::happened(std::string_view what) { console_->happened(time(), what); }

void ShowSession::tellTimeLeft() {
  console_->timeLeft(time(), {.left = manager_->launchScreenExpirationTimeLeft(),
                              .total = timeGiven_,
                              .countdown = countdown_});
}

bool ShowSession::covers() const {
  return cover_ != nullptr && send(cover_->view()->window(), &NSWindow::isVisible);
}

void ShowSession::noticeUncovered() {
  if (covered_ && !uncovered_ && !covers()) {
    uncovered_ = true;
    happened("uncovered");
  }
}

}  // namespace vel::host
