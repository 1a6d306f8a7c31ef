#include "Tests/Exploration/Invariants.h"

#include <algorithm>

#include "Host/Play/Scenario/Decimal.h"
#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Exploration/KnownWrongStyles.h"

namespace vel::exploration {

namespace {

using CheckTime = Invariant::CheckTime;
namespace trace = host::trace;

constexpr Nanoseconds kDelayOfRecording = kNanosecondsPerSecond / 2;

template <class Kind>
const Kind* traceEventAs(const ObservedPlay& play) {
  return play.traceEvent() == nullptr ? nullptr : std::get_if<Kind>(play.traceEvent());
}

std::string number(double value) { return host::shortestDecimal(value); }

// The analytics event

std::string checkRecordedOnce(const ObservedPlay& play) {
  const bool isRecordedAgain =
      traceEventAs<trace::RecordedEvent>(play) != nullptr && play.history().recordedEventCount > 0;
  return isRecordedAgain ? "it is recorded again" : "";
}

std::string checkNotRecordedInSkipMode(const ObservedPlay& play) {
  const bool isRecorded = traceEventAs<trace::RecordedEvent>(play) != nullptr &&
                          !play.history().hasRequestOutsideSkipMode;
  return isRecorded ? "an event is recorded" : "";
}

// The library records the event half a second after it sends the event. At the time of the
// recording, the manager may be unfocused.
std::string checkNotSentWhileUnfocused(const ObservedPlay& play) {
  const bool isSentNow = play.currentSample().isSent && !play.previousSample().isSent;
  return isSentNow && play.history().shouldBeUnfocused ? "an event is sent" : "";
}

std::string checkTimeOfRecording(const ObservedPlay& play) {
  if (traceEventAs<trace::RecordedEvent>(play) == nullptr) {
    return "";
  }
  const auto sendTime = play.history().sendTime;
  return sendTime && ObservedPlay::time() == *sendTime + kDelayOfRecording
             ? ""
             : "it is recorded at another time";
}

// Dismissal

std::string checkNotDismissedEarly(const ObservedPlay& play) {
  const History& history = play.history();
  const bool isEffectOfDismissal = traceEventAs<trace::LifeCycleCall>(play) != nullptr ||
                                   traceEventAs<trace::StyleMaskAssignment>(play) != nullptr ||
                                   traceEventAs<trace::PresentationWindowChange>(play) != nullptr ||
                                   traceEventAs<trace::KeyWindowChange>(play) != nullptr;
  if (history.mustRefuse && isEffectOfDismissal) {
    return "it is not refused with " + number(history.timeLeft) + " s left";
  }
  const bool isEarly = history.timeLeft > expirationTimeStep && !play.currentSample().skipMode;
  if (traceEventAs<trace::Tick>(play) != nullptr && isEarly && history.lifeCycleCallCount > 0) {
    return "a tick dismisses with " + number(history.timeLeft) + " s left";
  }
  return "";
}

// The countdown

std::string checkTimeLeft(const ObservedPlay& play) {
  const double previousTimeLeft = play.previousSample().timeLeft;
  const double currentTimeLeft = play.currentSample().timeLeft;
  const History& history = play.history();
  // `stopTimer` sets the time left to 0. The manager calls `stopTimer` after a dismissal, and in
  // `canLaunchScreenControllerDismiss` if at most `expirationTimeStep` is left.
  const bool mayHaveCalledStopTimer =
      history.hasCalledDidDisappear ||
      (history.hasCalledCanDisappear && previousTimeLeft <= expirationTimeStep);
  const bool isSetByRequest =
      history.step == "request" && currentTimeLeft == play.currentSample().interval;
  if (traceEventAs<trace::Tick>(play) != nullptr) {
    const bool isOneStepLess = currentTimeLeft == previousTimeLeft - expirationTimeStep;
    // The tick starts a dismissal, which sets the time left to 0. Then the tick subtracts
    // `expirationTimeStep`.
    const bool isStoppedDuringTick =
        mayHaveCalledStopTimer && currentTimeLeft == 0.0 - expirationTimeStep;
    // A tick does nothing if exactly 0 s are left.
    const bool isTickAtZero = previousTimeLeft == 0.0 && currentTimeLeft == 0.0;
    if (!history.wasCounting) {
      return "a tick comes without a valid timer";
    }
    return isOneStepLess || isStoppedDuringTick || isTickAtZero
               ? ""
               : "a tick changes " + number(previousTimeLeft) + " s to " + number(currentTimeLeft) +
                     " s";
  }
  if (currentTimeLeft == previousTimeLeft || (mayHaveCalledStopTimer && currentTimeLeft == 0.0) ||
      isSetByRequest) {
    return "";
  }
  return number(previousTimeLeft) + " s become " + number(currentTimeLeft) + " s without a tick";
}

std::string checkCountsOnlyWithFocus(const ObservedPlay& play) {
  return play.currentSample().isCounting && play.currentSample().isUnfocused
             ? "it runs while unfocused"
             : "";
}

std::string checkUnfocused(const ObservedPlay& play) {
  if (play.currentSample().isUnfocused == play.history().shouldBeUnfocused) {
    return "";
  }
  return play.currentSample().isUnfocused ? "it is unfocused, but should be focused"
                                          : "it is focused, but should be unfocused";
}

std::string checkNoOtherTimer(const ObservedPlay& play) {
  const std::size_t timers = NSRunLoop::mainRunLoop().timerCount();
  return timers > (play.currentSample().isCounting ? 1U : 0U)
             ? std::to_string(timers) + " timers are scheduled"
             : "";
}

// Style masks

bool hasKnownWrongStyle(const ObservedPlay& play, const NSWindow& window) {
  const auto wrongStyles = knownWrongStyles();
  for (std::size_t index = 0; index < wrongStyles.size(); ++index) {
    if (play.history().knownWrongStyles.test(index) &&
        wrongStyles[index].hasResultingStyle(play, window)) {
      return true;
    }
  }
  return false;
}

std::string checkStyles(const ObservedPlay& play) {
  if (!isUncovered(play)) {
    return "";
  }
  for (const Strong<NSWindow>& window : play.hostWindows()) {
    const NSWindowStyleMask originalMask = play.originalStyle(*window);
    if (window->styleMask() != originalMask && !hasKnownWrongStyle(play, *window)) {
      return play.names().nameOf(*window) + " has " + std::to_string(window->styleMask()) +
             " instead of " + std::to_string(originalMask);
    }
  }
  return "";
}

// After the end of the play

std::string checkObjectsAfterEnd(const ObservedPlay& play) {
  if (!dispatch_get_main_queue().pendingWork().empty()) {
    return "the main queue has pending work";
  }
  // The host owns the manager. A controller owns its delegates, which can be the manager and its
  // main content. Only the controllers of covers that are up may still be alive.
  long expectedOwnerCount = 1;
  bool isContentOwned = false;
  for (const auto& controller : play.controllers()) {
    const bool isUp = controller == embedded_cover::selfController || controller->isShown() ||
                      controller->parentViewController() != nullptr ||
                      controller->presentingViewController() != nullptr;
    if (!isUp) {
      return "a controller is alive that is not shown, not presented and not the embedded cover";
    }
    if (const auto delegates = controller->delegates()) {
      expectedOwnerCount += delegates->containsObject(play.manager().get()) ? 1 : 0;
      isContentOwned = isContentOwned || delegates->containsObject(play.mainContent().lock().get());
    }
  }
  if (play.manager().use_count() != expectedOwnerCount) {
    return "the manager has " + std::to_string(play.manager().use_count()) + " owners instead of " +
           std::to_string(expectedOwnerCount);
  }
  if (!play.mainContent().expired() && !isContentOwned) {
    return "the main content is alive";
  }
  return "";
}

std::string checkDelegatesAfterEnd(const ObservedPlay& play) {
  const auto controller = play.lastController();
  const auto delegates = controller == nullptr ? nullptr : controller->delegates();
  return delegates == nullptr || delegates->count() == 0 ? "" : "it has delegates";
}

constexpr Invariant kInvariants[] = {
    {"the event is recorded at most once", CheckTime::Moment, &checkRecordedOnce},
    {"no event is recorded if every request asks for skip mode", CheckTime::Moment,
     &checkNotRecordedInSkipMode},
    {"no event is sent while the manager should be unfocused", CheckTime::Moment,
     &checkNotSentWhileUnfocused},
    {"the event is recorded half a second after it is sent", CheckTime::Moment,
     &checkTimeOfRecording},
    {"outside skip mode, the manager refuses a dismissal while more than one tick is left",
     CheckTime::Moment, &checkNotDismissedEarly},
    {"each tick of a valid timer reduces the time left by one step", CheckTime::Moment,
     &checkTimeLeft},
    {"the countdown does not run while the manager is unfocused", CheckTime::Moment,
     &checkCountsOnlyWithFocus},
    {"the manager is unfocused after a window that shows the cover resigns key, until a window "
     "that shows the cover becomes key",
     CheckTime::Moment, &checkUnfocused},
    {"only the timer of the countdown is scheduled", CheckTime::Moment, &checkNoOtherTimer},
    {"while no cover is up, every window of the host has the style that the host gave it",
     CheckTime::AfterAction, &checkStyles},
    {"after the play no work is pending, and only the host and the covers that are up own the "
     "manager and the main content",
     CheckTime::End, &checkObjectsAfterEnd},
    {"after the play the last cover has no delegates", CheckTime::End, &checkDelegatesAfterEnd},
};

}  // namespace

std::span<const Invariant> invariants() { return kInvariants; }

}  // namespace vel::exploration
