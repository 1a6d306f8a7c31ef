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

class Stage;

/// What always holds, with its name.
struct Invariant {
  /// When it is looked at: whenever something happens and whenever all that is due has been done;
  /// after each action; after the end, when all has come to rest.
  enum class When : std::uint8_t { Moment, State, End };

  std::string_view name;
  When when = When::Moment;
  /// What is wrong; empty where nothing is.
  std::string (*fault)(const Stage& stage) = nullptr;
};

/// How the manager stands at a moment.
struct Sample {
  double timeLeft = 0;
  double interval = 0;  // the configuration's
  bool counts = false;  // it has a valid timer
  bool unfocused = false;
  bool sent = false;
  bool expired = false;
  bool skipMode = false;
};

/// What a play has shown so far, as far as an invariant asks for it.
struct History {
  /// Some request was accepted outside skip mode.
  bool plainRequest = false;
  /// A required window resigned key and none has become key since, by the key changes alone.
  bool away = false;
  int events = 0;
  /// When `eventWasSended` rose.
  std::optional<Nanoseconds> sentAt;
  /// The windows that were key, the latest last.
  std::vector<std::string> keyOrder;
  /// Which of the style exceptions have begun, by their place.
  std::bitset<16> styleExceptions;

  // Since all that was due had been done:
  double timeLeft = 0;
  bool wasCounting = false;
  std::string_view step;
  /// The step is a guarded dismissal that the manager is asked about and has to refuse.
  bool refusalDue = false;
  bool hostAsked = false;
  bool hostTold = false;
  int coverSteps = 0;
};

/// One play of a script, watched: the player of scenarios does the steps, the invariants are looked
/// at, and the first that does not hold is kept. One at a time. Main thread.
class Stage final : private host::PlayListener {
 public:
  /// Both have to outlive the stage.
  Stage(const Theatre& theatre, std::span<const Invariant> invariants);
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  Stage(Stage&&) = delete;
  Stage& operator=(Stage&&) = delete;
  ~Stage() override;

  void perform(std::uint8_t action);
  /// Deactivates the manager and lets time pass until nothing is left to come.
  void end();

  /// The name of the invariant that did not hold, and what was wrong; empty while all hold.
  [[nodiscard]] const std::string& violation() const { return violation_; }

  // For invariants and the state's key.
  [[nodiscard]] const Strong<LaunchScreenManager>& manager() const { return player_.manager(); }
  [[nodiscard]] host::WindowNames& names() const { return names_; }
  [[nodiscard]] const Sample& before() const { return before_; }
  [[nodiscard]] const Sample& now() const { return now_; }
  /// What happens at this moment; none where all that was due has been done.
  [[nodiscard]] const host::TraceEvent* event() const { return event_; }
  [[nodiscard]] const History& history() const { return history_; }
  [[nodiscard]] static Nanoseconds time() { return NSRunLoop::mainRunLoop().now(); }
  /// The host's windows, as they were opened, also closed ones.
  [[nodiscard]] const std::vector<Strong<NSWindow>>& hostWindows() const { return hostWindows_; }
  [[nodiscard]] const host::HostScript& hostScript() const { return theatre_.scenario.host; }
  /// The style that the host gave to one of its windows.
  [[nodiscard]] NSWindowStyleMask givenStyle(const NSWindow& window) const;
  /// The main content's controllers that are alive, the oldest first.
  [[nodiscard]] std::vector<Strong<LaunchScreenViewController>> controllers() const;
  /// After the end: the controller that the deactivation found, if it is still alive.
  [[nodiscard]] Strong<LaunchScreenViewController> lastController() const {
    return lastController_.lock();
  }
  [[nodiscard]] const Weak<LaunchScreenContent>& mainContent() const { return mainContent_; }

 private:
  void traceLineAdded(const host::TraceLine& line) override;
  void stateReached(const host::PlayState& state) override;
  void moment(const host::TraceEvent* event);
  void check(Invariant::When when);
  void play(const host::Step& step);
  void note(const host::trace::StepStarted& started);
  void note(const host::trace::ContentDataAnswered& answered);
  void note(const host::trace::HostCalled& called);
  void note(const host::trace::EventRecorded& recorded);
  void note(const host::trace::KeyChanged& changed);
  void note(const host::trace::CoverStep& step);
  template <class Other>
  void note(const Other& /*other*/) {}
  bool showsCover(const Strong<NSWindow>& window);
  void collect();

  const Theatre& theatre_;
  std::span<const Invariant> invariants_;
  host::Player player_;
  host::WindowNames& names_;
  std::vector<Strong<NSWindow>> hostWindows_;
  Weak<LaunchScreenContent> mainContent_;
  std::vector<Weak<LaunchScreenContent>> temporaryContents_;
  std::vector<Weak<LaunchScreenViewController>> controllers_;
  Weak<LaunchScreenViewController> lastController_;
  Sample before_;
  Sample now_;
  const host::TraceEvent* event_ = nullptr;
  History history_;
  const host::Step* step_ = nullptr;  // under way, or the last
  Nanoseconds at_ = 0;
  std::string violation_;
};

}  // namespace vel::exploration
