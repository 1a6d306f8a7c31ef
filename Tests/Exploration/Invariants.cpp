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
const Kind* happening(const Stage& stage) {
  return stage.event() == nullptr ? nullptr : std::get_if<Kind>(stage.event());
}

std::string number(double value) { return host::shortestDecimal(value); }

// The event

std::string recordedTwice(const Stage& stage) {
  const bool again =
      happening<trace::EventRecorded>(stage) != nullptr && stage.history().events > 0;
  return again ? "it is recorded once more" : "";
}

std::string recordedInSkipMode(const Stage& stage) {
  const bool wrong =
      happening<trace::EventRecorded>(stage) != nullptr && !stage.history().plainRequest;
  return wrong ? "it is recorded" : "";
}

// Once sent it is recorded half a second later, whatever happens meanwhile.
std::string sentWhileAway(const Stage& stage) {
  const bool rose = stage.now().sent && !stage.before().sent;
  return rose && stage.history().away ? "it is sent" : "";
}

std::string recordedAtAnotherTime(const Stage& stage) {
  if (happening<trace::EventRecorded>(stage) == nullptr) {
    return "";
  }
  const auto sentAt = stage.history().sentAt;
  return sentAt && Stage::time() == *sentAt + kFromSentToRecorded ? "" : "it is recorded";
}

// Dismissal

std::string dismissedEarly(const Stage& stage) {
  const History& history = stage.history();
  const bool moved = happening<trace::CoverStep>(stage) != nullptr ||
                     happening<trace::StyleMaskSet>(stage) != nullptr ||
                     happening<trace::PresentationWindow>(stage) != nullptr ||
                     happening<trace::KeyChanged>(stage) != nullptr;
  if (history.refusalDue && moved) {
    return "it goes through with " + number(history.timeLeft) + " s left";
  }
  const bool early = history.timeLeft > expirationTimeStep && !stage.now().skipMode;
  if (happening<trace::Ticked>(stage) != nullptr && early && history.coverSteps > 0) {
    return "a tick dismisses with " + number(history.timeLeft) + " s left";
  }
  return "";
}

// The countdown

std::string timeLeftMoves(const Stage& stage) {
  const double before = stage.before().timeLeft;
  const double now = stage.now().timeLeft;
  const History& history = stage.history();
  const bool stopped = history.hostTold || (history.hostAsked && before <= expirationTimeStep);
  const bool seeded = history.step == "request" && now == stage.now().interval;
  if (happening<trace::Ticked>(stage) != nullptr) {
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

std::string countsUnseen(const Stage& stage) {
  return stage.now().counts && stage.now().unfocused ? "it runs while unfocused" : "";
}

std::string unfocusedOtherwise(const Stage& stage) {
  if (stage.now().unfocused == stage.history().away) {
    return "";
  }
  return stage.now().unfocused ? "it is unfocused, and none is" : "it is not, and one is";
}

std::string severalTimers(const Stage& stage) {
  const std::size_t timers = NSRunLoop::mainRunLoop().timerCount();
  return timers > (stage.now().counts ? 1U : 0U) ? std::to_string(timers) + " timers are scheduled"
                                                 : "";
}

// Style masks

bool isException(const Stage& stage, const NSWindow& window) {
  const auto exceptions = styleExceptions();
  for (std::size_t place = 0; place < exceptions.size(); ++place) {
    if (stage.history().styleExceptions.test(place) && exceptions[place].leaves(stage, window)) {
      return true;
    }
  }
  return false;
}

std::string styleKept(const Stage& stage) {
  if (!isUncovered(stage)) {
    return "";
  }
  for (const Strong<NSWindow>& window : stage.hostWindows()) {
    const NSWindowStyleMask given = stage.givenStyle(*window);
    if (window->styleMask() != given && !isException(stage, *window)) {
      return stage.names().nameOf(*window) + " has " + std::to_string(window->styleMask()) +
             " instead of " + std::to_string(given);
    }
  }
  return "";
}

// What is left

std::string leftAlive(const Stage& stage) {
  if (!dispatch_get_main_queue().pending().empty()) {
    return "work waits on the main queue";
  }
  // A cover that is still up keeps its delegates; nobody else keeps the manager but the host.
  long managersOwners = 1;
  bool contentKept = false;
  for (const auto& controller : stage.controllers()) {
    const bool isKept = controller == embedded_cover::selfController || controller->isShown() ||
                        controller->parentViewController() != nullptr ||
                        controller->presentingViewController() != nullptr;
    if (!isKept) {
      return "a controller that is neither shown nor presented nor tracked";
    }
    if (const auto delegates = controller->delegates()) {
      managersOwners += delegates->containsObject(stage.manager().get()) ? 1 : 0;
      contentKept = contentKept || delegates->containsObject(stage.mainContent().lock().get());
    }
  }
  if (stage.manager().use_count() != managersOwners) {
    return "the manager, kept by " + std::to_string(stage.manager().use_count()) + " instead of " +
           std::to_string(managersOwners);
  }
  if (!stage.mainContent().expired() && !contentKept) {
    return "the main content";
  }
  return "";
}

std::string toldAfterEnd(const Stage& stage) {
  const auto controller = stage.lastController();
  const auto delegates = controller == nullptr ? nullptr : controller->delegates();
  return delegates == nullptr || delegates->count() == 0 ? "" : "it has delegates";
}

constexpr Invariant kInvariants[] = {
    {"the event is recorded at most once", When::Moment, &recordedTwice},
    {"no event is recorded where every request asks for skip mode", When::Moment,
     &recordedInSkipMode},
    {"no event is sent while a required window is away", When::Moment, &sentWhileAway},
    {"the event is recorded half a second after it is sent", When::Moment, &recordedAtAnotherTime},
    {"outside skip mode a guarded dismissal does not go through with more than a step left",
     When::Moment, &dismissedEarly},
    {"the time left falls by one step a tick of a valid timer", When::Moment, &timeLeftMoves},
    {"the countdown runs only in focus", When::Moment, &countsUnseen},
    {"the manager is unfocused exactly while a required window is away", When::Moment,
     &unfocusedOtherwise},
    {"there is at most one timer", When::Moment, &severalTimers},
    {"without a cover every window has the style that its host gave it", When::State, &styleKept},
    {"after its end nothing is left alive but covers that are up", When::End, &leftAlive},
    {"a deactivated cover tells nobody", When::End, &toldAfterEnd},
};

}  // namespace

std::span<const Invariant> invariants() { return kInvariants; }

}  // namespace vel::exploration
