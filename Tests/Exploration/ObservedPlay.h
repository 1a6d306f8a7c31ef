// A play runs one script in virtual time and checks invariants. A script is a sequence of actions.
// A trace line reports one thing that happens during the play, such as a tick or a call to the
// host. The player reports a play state (`PlayState`) after each step, and each time the run loop
// has done all due work.
//
// A content (`LaunchScreenContent`) is a launch screen as the host sees it. `LaunchScreenManager`
// has one main content. It creates a temporary content (`tempContent`) for a request that arrives
// while a launch screen is shown.
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

/// A statement that always holds.
struct Invariant {
  /// When the play checks the invariant. Moment: at every trace line and every play state.
  /// AfterAction: after each action. End: when the play has deactivated the manager and no work is
  /// left.
  enum class CheckTime : std::uint8_t { Moment, AfterAction, End };

  std::string_view name;
  CheckTime checkTime = CheckTime::Moment;
  /// Returns what is wrong, or an empty string.
  std::string (*findFault)(const ObservedPlay& play) = nullptr;
};

/// The state of the manager and of the default configuration at a moment.
struct Sample {
  double timeLeft = 0;       // `launchScreenExpirationTimeLeft`
  double interval = 0;       // `expirationTimeInterval`
  bool isCounting = false;   // the manager has a valid timer
  bool isUnfocused = false;  // `appIsUnfocused`
  bool isSent = false;       // `eventWasSended`
  bool isExpired = false;    // `launchScreenExpired`
  bool skipMode = false;
};

/// The facts about a play that the invariants need.
struct History {
  /// The manager has accepted a content request while skip mode was off.
  bool hasRequestOutsideSkipMode = false;
  /// The expected value of `Sample::isUnfocused`. A required window is a window that belongs to the
  /// launch screen (see `LaunchScreenManager::isRequiredWindow`). The value becomes true when a
  /// required window stops being key, and false when a required window becomes key.
  bool shouldBeUnfocused = false;
  /// The number of recorded events.
  int recordedEventCount = 0;
  /// The time at which `eventWasSended` became true.
  std::optional<Nanoseconds> sendTime;
  /// The names of the windows that have been key, the most recent last.
  std::vector<std::string> keyOrder;
  /// The known cases of a wrong window style that have occurred. Each bit is an index into
  /// `styleExceptions()`.
  std::bitset<16> styleExceptions;

  // Each play state resets the members below.

  /// The values of `Sample::timeLeft` and `Sample::isCounting` at the last play state.
  double timeLeft = 0;
  bool wasCounting = false;
  /// The name of the step that is being performed. Empty if no step is being performed.
  std::string_view step;
  /// The step is a dismissal that the manager must refuse.
  bool mustRefuse = false;
  /// The library has called `canContentViewDisappear` of the host's view delegate.
  bool hasCalledCanDisappear = false;
  /// The library has called `contentViewDidDisappear` of the host's view delegate.
  bool hasCalledDidDisappear = false;
  /// The number of calls of the life cycle methods of the controller, such as `viewDidAppear`.
  int lifeCycleCallCount = 0;
};

/// Plays a script, checks the invariants during the play, and keeps the first violation. Only one
/// play may exist at a time. Must be used on the main thread.
class ObservedPlay final : private host::PlayListener {
 public:
  /// Both arguments must outlive the play.
  ObservedPlay(const ParsedSetting& parsedSetting, std::span<const Invariant> invariants);
  ~ObservedPlay() override;

  /// Plays one action. `action` is an index into `actions()`.
  void perform(std::uint8_t action);
  /// Deactivates the manager and lets time pass until no work is left.
  void end();

  /// The name of the first broken invariant and what was wrong. Empty while all invariants hold.
  [[nodiscard]] const std::string& violation() const { return violation_; }

  // Used by the invariants and by `stateKey` (StateKey.h).
  [[nodiscard]] const Strong<LaunchScreenManager>& manager() const { return player_.manager(); }
  [[nodiscard]] host::WindowNames& names() const { return names_; }
  [[nodiscard]] const Sample& previousSample() const { return previousSample_; }
  [[nodiscard]] const Sample& currentSample() const { return currentSample_; }
  /// The event of the trace line at which the invariants are being checked. Null if they are being
  /// checked at a play state.
  [[nodiscard]] const host::TraceEvent* traceEvent() const { return traceEvent_; }
  [[nodiscard]] const History& history() const { return history_; }
  [[nodiscard]] static Nanoseconds time() { return NSRunLoop::mainRunLoop().now(); }
  /// The host's windows in the order in which they were opened, closed windows included.
  [[nodiscard]] const std::vector<Strong<NSWindow>>& hostWindows() const { return hostWindows_; }
  [[nodiscard]] const host::HostScript& hostScript() const { return setting_.scenario.host; }
  /// The style that the host gave to one of its windows.
  [[nodiscard]] NSWindowStyleMask originalStyle(const NSWindow& window) const;
  /// The current controller and the earlier controllers of the main content, oldest first. Does not
  /// contain destroyed controllers.
  [[nodiscard]] std::vector<Strong<LaunchScreenViewController>> controllers() const;
  /// The main content's controller just before `end` deactivated the manager. Null if the
  /// controller has been destroyed.
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
  bool isRequired(const Strong<NSWindow>& window);
  /// Adds the main content's controller to `controllers_` and the manager's temporary content to
  /// `temporaryContents_`.
  void collectObjects();

  const ParsedSetting& setting_;
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
  const host::Step* step_ = nullptr;  // the step that started last
  Nanoseconds scriptTime_ = 0;        // the time of that step
  std::string violation_;
};

}  // namespace vel::exploration
