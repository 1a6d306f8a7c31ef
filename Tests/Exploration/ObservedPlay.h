// A script is a sequence of actions. An action lets time pass and then performs its steps. A play
// runs one script with a player (`Player`) and checks invariants. The player reports trace lines,
// such as a tick of the countdown. It reports a play state (`PlayState`) after each step, and each
// time the run loop has no due work left.
//
// "The manager" is the host's LaunchScreenManager. It loads each request into its main content
// (`content`) or into a temporary content (`tempContent`).
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Play/Player/Player.h"
#include "Platform/Foundation/NSRunLoop.h"
#include "Tests/Exploration/Alphabet.h"

namespace vel::exploration {

class ObservedPlay;

/// A condition that must hold in every play.
struct Invariant {
  enum class CheckTime : std::uint8_t {
    Moment,       // at each trace line and each play state
    AfterAction,  // after each action
    End           // after `ObservedPlay::end` has deactivated the manager and no work is left
  };

  std::string_view name;
  CheckTime checkTime = CheckTime::Moment;
  /// Describes how the play breaks the invariant. Returns an empty string if the invariant holds.
  std::string (*findFault)(const ObservedPlay& play) = nullptr;
};

/// The values of the manager and of the default configuration at one trace line or play state.
struct Sample {
  double timeLeft = 0;       // `launchScreenExpirationTimeLeft`
  double interval = 0;       // `expirationTimeInterval`
  bool isCounting = false;   // the timer of the countdown is valid
  bool isUnfocused = false;  // `appIsUnfocused`
  bool isSent = false;       // `eventWasSended`
  bool isExpired = false;    // `launchScreenExpired`
  bool skipMode = false;
};

/// The facts about a play that the invariants need.
struct History {
  /// True if the manager has accepted a request without skip mode.
  bool hasRequestOutsideSkipMode = false;
  /// The value that `Sample::isUnfocused` must have.
  bool shouldBeUnfocused = false;
  int recordedEventCount = 0;
  /// The time at which `eventWasSended` became true.
  std::optional<Nanoseconds> sendTime;
  /// The names of the windows that have been key, the most recent last.
  std::vector<std::string> keyOrder;
  /// Bit `i` is set if a step may have caused the wrong window style `knownWrongStyles()[i]`.
  std::bitset<16> knownWrongStyles;

  // Each play state updates `timeLeft` and `wasCounting`, and resets the other members below.

  /// The values of `Sample::timeLeft` and `Sample::isCounting` at the latest play state.
  double timeLeft = 0;
  bool wasCounting = false;
  /// The name of the step that the player is performing. Empty between two steps.
  std::string_view step;
  /// True while the player performs a dismissal that the manager must refuse.
  bool mustRefuse = false;
  /// True if the library has called `canContentViewDisappear` since the latest play state.
  bool hasCalledCanDisappear = false;
  /// True if the library has called `contentViewDidDisappear` since the latest play state.
  bool hasCalledDidDisappear = false;
  /// The number of calls of life cycle methods, such as `viewDidAppear`, since the latest play
  /// state.
  int lifeCycleCallCount = 0;
};

/// Plays a script, checks the invariants during the play, and keeps the first violation. Only one
/// play may exist at a time. Must be used on the main thread.
class ObservedPlay final : private host::PlayListener {
 public:
  /// Both arguments must outlive the play.
  ObservedPlay(const ParsedHostSetup& parsedHostSetup, std::span<const Invariant> invariants);
  ~ObservedPlay() override;

  /// Plays the steps of one action. `action` is an index into `actions()`.
  void perform(std::uint8_t action);
  /// Deactivates the manager and lets time pass until no work is left.
  void end();

  /// The name of the first broken invariant and what was wrong. Empty while all invariants hold.
  [[nodiscard]] const std::string& violation() const { return violation_; }

  // Used by the invariants and by `stateFingerprint` (StateFingerprint.h).
  [[nodiscard]] const Strong<LaunchScreenManager>& manager() const { return player_.manager(); }
  [[nodiscard]] host::WindowNames& names() const { return names_; }
  [[nodiscard]] const Sample& previousSample() const { return previousSample_; }
  [[nodiscard]] const Sample& currentSample() const { return currentSample_; }
  /// The event of the trace line at which the invariants are being checked. Null at a play state.
  [[nodiscard]] const host::TraceEvent* traceEvent() const { return traceEvent_; }
  [[nodiscard]] const History& history() const { return history_; }
  [[nodiscard]] static Nanoseconds time() { return NSRunLoop::mainRunLoop().now(); }
  /// The host's windows, in the order of `hostScript().windows`. Contains closed windows too.
  [[nodiscard]] const std::vector<Strong<NSWindow>>& hostWindows() const { return hostWindows_; }
  [[nodiscard]] const host::HostScript& hostScript() const { return hostSetup_.scenario.host; }
  /// The style with which the host opened the window.
  [[nodiscard]] NSWindowStyleMask originalStyle(const NSWindow& window) const;
  /// The controllers that the main content has had, oldest first. Does not contain destroyed
  /// controllers.
  [[nodiscard]] std::vector<Strong<LaunchScreenViewController>> controllers() const;
  /// The main content's controller just before `end` deactivated the manager. Null if no such
  /// controller exists.
  [[nodiscard]] Strong<LaunchScreenViewController> lastController() const {
    return lastController_.lock();
  }
  [[nodiscard]] const Weak<LaunchScreenContent>& mainContent() const { return mainContent_; }

 private:
  void traceLineAdded(const host::TraceLine& line) override;
  void stateReached(const host::PlayState& state) override;
  void checkMoment(const host::TraceEvent* event);
  void check(Invariant::CheckTime checkTime);
  void play(const host::Step& step);
  void record(const host::trace::StepStart& step);
  void record(const host::trace::ContentDataResult& result);
  void record(const host::trace::HostCall& call);
  void record(const host::trace::RecordedEvent& event);
  void record(const host::trace::KeyWindowChange& change);
  void record(const host::trace::LifeCycleCall& call);
  template <class Other>
  void record(const Other& /*other*/) {}
  /// Returns the expected result of `LaunchScreenManager::isRequiredWindow`.
  bool isRequired(const Strong<NSWindow>& window);
  /// Adds the main content's controller to `controllers_` and the manager's temporary content to
  /// `temporaryContents_`.
  void collectObjects();

  const ParsedHostSetup& hostSetup_;
  std::span<const Invariant> invariants_;
  host::Player player_;
  host::WindowNames& names_;
  std::vector<Strong<NSWindow>> hostWindows_;
  Weak<LaunchScreenContent> mainContent_;
  std::vector<Weak<LaunchScreenContent>> temporaryContents_;
  std::vector<Weak<LaunchScreenViewController>> controllers_;
  Weak<LaunchScreenViewController> lastController_;
  Sample previousSample_;
  Sample currentSample_;
  const host::TraceEvent* traceEvent_ = nullptr;
  History history_;
  const host::Step* step_ = nullptr;  // valid only while `player_` plays the step
  Nanoseconds latestStepTime_ = 0;    // the virtual time of the latest step
  std::string violation_;
};

}  // namespace vel::exploration
