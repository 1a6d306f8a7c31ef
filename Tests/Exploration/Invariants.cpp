#include "Tests/Exploration/Invariants.h"

#include <algorithm>

#include "Host/Play/Scenario/Decimal.h"
#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Exploration/StyleExceptions.h"

namespace vel::exploration {

namespace {

using When = Invariant::When;
namespace trace = host::trace;

constexpr Nanoseconds kFromSentToRecorded = kNanosecondsPerSecond / 2;

template <class Kind>
const Kind* happening(const ObservedPlay& play) {
  return play.event() == nullptr ? nullptr : std::get_if<Kind>(play.event());
}

std::string number(double value) { return host::shortestDecimal(value); }

// The event

std::string recordedTwice(const ObservedPlay& play) {
  const bool again = happening<trace::EventRecorded>(play) != nullptr && play.history().events > 0;
  return again ? "it is recorded again" : "";
}

std::string recordedInSkipMode(const ObservedPlay& play) {
  const bool wrong =
      happening<trace::EventRecorded>(play) != nullptr && !play.history().plainRequest;
  return wrong ? "it is recorded" : "";
}

// A sent event is recorded half a second later, even if a window goes away in that time.
std::string sentWhileAway(const ObservedPlay& play) {
  const bool rose = play.now().sent && !play.before().sent;
  return rose && play.history().away ? "it is sent" : "";
}

std::string recordedAtAnotherTime(const ObservedPlay& play) {
  if (happening<trace::EventRecorded>(play) == nullptr) {
    return "";
  }
  const auto sentAt = play.history().sentAt;
  return sentAt && ObservedPlay::time() == *sentAt + kFromSentToRecorded ? "" : "it is recorded";
}

// Dismissal

std::string dismissedEarly(const ObservedPlay& play) {
  const History& history = play.history();
  const bool moved = happening<trace::CoverStep>(play) != nullptr ||
                     happening<trace::StyleMaskSet>(play) != nullptr ||
                     happening<trace::PresentationWindow>(play) != nullptr ||
                     happening<trace::KeyChanged>(play) != nullptr;
  if (history.refusalDue && moved) {
    return "it goes through with " + number(history.timeLeft) + " s left";
  }
  const bool early = history.timeLeft > expirationTimeStep && !play.now().skipMode;
  if (happening<trace::Ticked>(play) != nullptr && early && history.coverSteps > 0) {
    return "a tick dismisses with " + number(history.timeLeft) + " s left";
  }
  return "";
}

// The countdown

std::string timeLeftMoves(const ObservedPlay& play) {
  const double before = play.before().timeLeft;
  const double now = play.now().timeLeft;
  const History& history = play.history();
  const bool stopped = history.hostTold || (history.hostAsked && before <= expirationTimeStep);
  const bool seeded = history.step == "request" && now == play.now().interval;
  if (happening<trace::Ticked>(play) != nullptr) {
    const bool byOneStep = now == before - expirationTimeStep;
    const bool stoppedFirst = stopped && now == 0.0 - expirationTimeStep;
    const bool nothingLeft = before == 0.0 && now == 0.0;
    if (!history.wasCounting) {
      return "a tick comes without a valid timer";
    }
    return byOneStep || stoppedFirst || nothingLeft
               ? ""
               : "a tick makes " + number(now) + " s of " + number(before) + " s";
  }
  if (now == before || (stopped && now == 0.0) || seeded) {
    return "";
  }
  return number(before) + " s become " + number(now) + " s without a tick";
}

std::string countsUnseen(const ObservedPlay& play) {
  return play.now().counts && play.now().unfocused ? "it runs while unfocused" : "";
}

std::string unfocusedOtherwise(const ObservedPlay& play) {
  if (play.now().unfocused == play.history().away) {
    return "";
  }
  return play.now().unfocused ? "it is unfocused, but no required window is away"
                              : "it is not unfocused, but a required window is away";
}

std::string severalTimers(const ObservedPlay& play) {
  const std::size_t timers = NSRunLoop::mainRunLoop().timerCount();
  return timers > (play.now().counts ? 1U : 0U) ? std::to_string(timers) + " timers are scheduled"
                                                : "";
}

// Style masks

bool isException(const ObservedPlay& play, const NSWindow& window) {
  const auto exceptions = styleExceptions();
  for (std::size_t place = 0; place < exceptions.size(); ++place) {
    if (play.history().styleExceptions.test(place) && exceptions[place].leaves(play, window)) {
      return true;
    }
  }
  return false;
}

std::string styleKept(const ObservedPlay& play) {
  if (!isUncovered(play)) {
    return "";
  }
  for (const Strong<NSWindow>& window : play.hostWindows()) {
    const NSWindowStyleMask given = play.givenStyle(*window);
    if (window->styleMask() != given && !isException(play, *window)) {
      return play.names().nameOf(*window) + " has " + std::to_string(window->styleMask()) +
             " instead of " + std::to_string(given);
    }
  }
  return "";
}

// After the end

std::string leftAlive(const ObservedPlay& play) {
  if (!dispatch_get_main_queue().pending().empty()) {
    return "work waits on the main queue";
  }
  // Only the host and the covers that are still up keep the manager alive. A cover keeps its
  // delegates.
  long managersOwners = 1;
  bool contentKept = false;
  for (const auto& controller : play.controllers()) {
    const bool isKept = controller == embedded_cover::selfController || controller->isShown() ||
                        controller->parentViewController() != nullptr ||
                        controller->presentingViewController() != nullptr;
    if (!isKept) {
      return "a controller that is neither shown nor presented nor tracked";
    }
    if (const auto delegates = controller->delegates()) {
      managersOwners += delegates->containsObject(play.manager().get()) ? 1 : 0;
      contentKept = contentKept || delegates->containsObject(play.mainContent().lock().get());
    }
  }
  if (play.manager().use_count() != managersOwners) {
    return "the manager, kept by " + std::to_string(play.manager().use_count()) + " instead of " +
           std::to_string(managersOwners);
  }
  if (!play.mainContent().expired() && !contentKept) {
    return "the main content";
  }
  return "";
}

std::string toldAfterEnd(const ObservedPlay& play) {
  const auto controller = play.lastController();
  const auto delegates = controller == nullptr ? nullptr : controller->delegates();
  return delegates == nullptr || delegates->count() == 0 ? "" : "it has delegates";
}

constexpr Invariant kInvariants[] = {
    {"the event is recorded at most once", When::Moment, &recordedTwice},
    {"no event is recorded if every request asks for skip mode", When::Moment, &recordedInSkipMode},
    {"no event is sent while a required window is away", When::Moment, &sentWhileAway},
    {"the event is recorded half a second after it is sent", When::Moment, &recordedAtAnotherTime},
    {"outside skip mode a guarded dismissal does not go through with more than a step left",
     When::Moment, &dismissedEarly},
    {"each tick of a valid timer reduces the time left by one step", When::Moment, &timeLeftMoves},
    {"the countdown runs only with focus", When::Moment, &countsUnseen},
    {"the manager is unfocused exactly while a required window is away", When::Moment,
     &unfocusedOtherwise},
    {"there is at most one timer", When::Moment, &severalTimers},
    {"without a cover every window has the style that its host gave it", When::State, &styleKept},
    {"after the end only covers that are up are alive", When::End, &leftAlive},
    {"a deactivated cover has no delegates", When::End, &toldAfterEnd},
};

}  // namespace

std::span<const Invariant> invariants() { return kInvariants; }

}  // namespace vel::exploration
