#include "Tests/Exploration/ObservedPlay.h"

#include <algorithm>

#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Exploration/KnownWrongStyles.h"

namespace vel::exploration {

namespace {

constexpr Nanoseconds kTenthOfSecond = kNanosecondsPerSecond / 10;
// Longer than the countdown plus all delayed work after it.
constexpr Nanoseconds kTimeUntilNoWorkIsLeft = 5 * kNanosecondsPerSecond;

Sample sampleOf(const LaunchScreenManager& manager) {
  const auto configuration = LaunchScreenConfiguration::defaultConfiguration();
  return {.timeLeft = manager.launchScreenExpirationTimeLeft(),
          .interval = configuration->expirationTimeInterval(),
          .isCounting = send(manager.launchScreenExpirationTimer(), &NSTimer::isValid),
          .isUnfocused = manager.appIsUnfocused(),
          .isSent = manager.eventWasSended(),
          .isExpired = manager.launchScreenExpired(),
          .skipMode = configuration->skipMode()};
}

Strong<LaunchScreenViewController> controllerOf(const Strong<LaunchScreenContent>& content) {
  return as<LaunchScreenViewController>(send(content, &LaunchScreenContent::viewController));
}

template <class T>
void addOnce(std::vector<Weak<T>>& list, const Strong<T>& object) {
  const auto isObject = [&object](const Weak<T>& entry) { return entry.lock() == object; };
  if (object != nullptr && std::ranges::none_of(list, isObject)) {
    list.push_back(object);
  }
}

}  // namespace

ObservedPlay::ObservedPlay(const ParsedHostSetup& parsedHostSetup,
                           std::span<const Invariant> invariants)
    : hostSetup_(parsedHostSetup),
      invariants_(invariants),
      player_(parsedHostSetup.scenario, *this),
      names_(player_.names()),
      mainContent_(manager()->content()),
      currentSample_(sampleOf(*manager())) {
  for (const host::WindowScript& window : hostScript().windows) {
    hostWindows_.push_back(names_.window(window.name));
  }
  if (!hostWindows_.empty()) {
    // `player_` has made the first window the key window.
    history_.keyOrder.push_back(hostScript().windows.front().name);
  }
}

ObservedPlay::~ObservedPlay() {
  // A temporary content and its controller own each other until the content is deactivated.
  for (const Weak<LaunchScreenContent>& content : temporaryContents_) {
    send(content.lock(), &LaunchScreenContent::deactivate);
  }
}

void ObservedPlay::perform(std::uint8_t action) {
  latestStepTime_ += actions()[action].tenthsOfSecond * kTenthOfSecond;
  for (host::Step step : hostSetup_.steps[action]) {
    step.time = latestStepTime_;
    play(step);
  }
  check(Invariant::CheckTime::AfterAction);
  const bool hasOriginalStyles = std::ranges::all_of(hostWindows_, [this](const auto& window) {
    return window->styleMask() == originalStyle(*window);
  });
  if (hasOriginalStyles && isUncovered(*this) && !canEarlierCoverChangeStyle(*this)) {
    // No earlier step can cause a wrong style any more.
    history_.knownWrongStyles.reset();
  }
}

void ObservedPlay::end() {
  lastController_ = controllerOf(manager()->content());
  play({.time = latestStepTime_, .name = "deactivate", .action = host::step::Deactivate{}});
  latestStepTime_ += kTimeUntilNoWorkIsLeft;
  // `play` runs the loop until `latestStepTime_`. `Inspect` itself changes nothing.
  play({.time = latestStepTime_, .name = "inspect", .action = host::step::Inspect{}});
  check(Invariant::CheckTime::End);
}

void ObservedPlay::play(const host::Step& step) {
  step_ = &step;
  try {
    player_.play(step);
  } catch (const std::exception& error) {
    if (violation_.empty()) {
      // "nothing is thrown" is an invariant of every play.
      violation_ = std::string("nothing is thrown: ") + error.what();
    }
  }
}

std::vector<Strong<LaunchScreenViewController>> ObservedPlay::controllers() const {
  std::vector<Strong<LaunchScreenViewController>> aliveControllers;
  for (const Weak<LaunchScreenViewController>& entry : controllers_) {
    if (const auto controller = entry.lock()) {
      aliveControllers.push_back(controller);
    }
  }
  return aliveControllers;
}

NSWindowStyleMask ObservedPlay::originalStyle(const NSWindow& window) const {
  std::size_t index = 0;
  while (hostWindows_[index].get() != &window) {
    ++index;
  }
  return hostScript().windows[index].styleMask;
}

void ObservedPlay::traceLineAdded(const host::TraceLine& line) {
  checkMoment(&line.event);
  std::visit([this](const auto& event) { record(event); }, line.event);
}

void ObservedPlay::stateReached(const host::PlayState& /*state*/) {
  checkMoment(nullptr);
  collectObjects();
  history_.timeLeft = currentSample_.timeLeft;
  history_.wasCounting = currentSample_.isCounting;
  history_.step = {};
  history_.mustRefuse = false;
  history_.hasCalledCanDisappear = false;
  history_.hasCalledDidDisappear = false;
  history_.lifeCycleCallCount = 0;
}

void ObservedPlay::checkMoment(const host::TraceEvent* event) {
  traceEvent_ = event;
  previousSample_ = currentSample_;
  currentSample_ = sampleOf(*manager());
  if (currentSample_.isSent && !previousSample_.isSent) {
    history_.sendTime = time();
  }
  check(Invariant::CheckTime::Moment);
}

void ObservedPlay::check(Invariant::CheckTime checkTime) {
  for (const Invariant& invariant : invariants_) {
    if (!violation_.empty()) {
      return;
    }
    if (invariant.checkTime != checkTime) {
      continue;
    }
    if (const std::string fault = invariant.findFault(*this); !fault.empty()) {
      violation_ = std::string(invariant.name) + ": " + fault;
    }
  }
}

void ObservedPlay::record(const host::trace::StepStart& step) {
  history_.step = step.name;
  for (std::size_t index = 0; index < knownWrongStyles().size(); ++index) {
    if (knownWrongStyles()[index].isCausedBy(*this, *step_)) {
      history_.knownWrongStyles.set(index);
    }
  }
  const auto* const dismissal = std::get_if<host::step::Dismiss>(&step_->action);
  // A dismissal by the content does not ask the controller's delegates.
  const bool asksDelegates =
      dismissal != nullptr && dismissal->path != host::DismissalPath::Content;
  const auto delegates =
      send(controllerOf(manager()->content()), &LaunchScreenViewController::delegates);
  history_.mustRefuse = asksDelegates && delegates != nullptr &&
                        delegates->containsObject(manager().get()) && !currentSample_.skipMode &&
                        currentSample_.timeLeft > expirationTimeStep;
}

void ObservedPlay::record(const host::trace::ContentDataResult& result) {
  history_.hasRequestOutsideSkipMode =
      history_.hasRequestOutsideSkipMode || (result.content && !currentSample_.skipMode);
}

void ObservedPlay::record(const host::trace::HostCall& call) {
  history_.hasCalledCanDisappear =
      history_.hasCalledCanDisappear || call.operation == host::ViewOperation::CanDisappear;
  history_.hasCalledDidDisappear =
      history_.hasCalledDidDisappear || call.operation == host::ViewOperation::DidDisappear;
}

void ObservedPlay::record(const host::trace::RecordedEvent& /*event*/) {
  ++history_.recordedEventCount;
}

void ObservedPlay::record(const host::trace::LifeCycleCall& /*call*/) {
  ++history_.lifeCycleCallCount;
}

bool ObservedPlay::isRequired(const Strong<NSWindow>& window) {
  const Strong<NSViewController> cover = controllerOf(manager()->content());
  const Strong<NSWindow> coverWindow = send(send(cover, &NSViewController::view), &NSView::window);
  if (window == nullptr || cover == nullptr) {
    return false;
  }
  const auto isPlayer = [](const Strong<NSWindow>& candidate) {
    return candidate != nullptr && candidate->className() == "PlayerWindow";
  };
  // A cover that is a modal window covers the player window and its child windows.
  if (coverWindow != nullptr && coverWindow->isModalPanel() &&
      (isPlayer(window) || isPlayer(window->parentWindow()))) {
    return true;
  }
  // The manager also compares only the class names of child controllers.
  const auto children =
      send(window->contentViewController(), &NSViewController::childViewControllers);
  return window == coverWindow ||
         std::ranges::any_of(children, [&](const Strong<NSViewController>& child) {
           return child->className() == cover->className();
         });
}

// The manager is notified of the change later, so `currentSample_` is the state before the change.
void ObservedPlay::record(const host::trace::KeyWindowChange& change) {
  if (change.change == KeyStatusChange::BecomesKey) {
    std::erase(history_.keyOrder, change.window);
    history_.keyOrder.push_back(change.window);
  }
  if (NSNotificationCenter::defaultCenter().registrationCount(manager().get()) == 0) {
    return;  // the manager does not receive the key change
  }
  const Strong<NSWindow> window = names_.window(change.window);
  const Strong<NSViewController> cover = controllerOf(manager()->content());
  if (change.change == KeyStatusChange::BecomesKey) {
    history_.shouldBeUnfocused = history_.shouldBeUnfocused && !isRequired(window);
  } else if (send(send(window, &NSWindow::contentViewController), &NSViewController::className) ==
             LSGDPRControllerClassName) {
    // A manager whose cover has a window becomes focused when the consent dialog stops being key.
    history_.shouldBeUnfocused =
        history_.shouldBeUnfocused &&
        send(send(cover, &NSViewController::view), &NSView::window) == nullptr;
  } else if (!currentSample_.isExpired && isRequired(window)) {
    // While `launchScreenExpired` is true, the manager does not become unfocused.
    history_.shouldBeUnfocused = true;
  }
}

void ObservedPlay::collectObjects() {
  addOnce(controllers_, controllerOf(manager()->content()));
  addOnce(temporaryContents_, manager()->tempContent());
}

}  // namespace vel::exploration
