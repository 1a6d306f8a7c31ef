#pragma once

#include <functional>
#include <vector>

#include "Host/Play/Player/HeadlessPlatform.h"
#include "Host/Play/Player/HostObjects.h"
#include "Host/Play/Scenario/Scenario.h"
#include "Host/Play/Trace/PlayListener.h"
#include "Host/Play/Trace/WindowNames.h"
#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/PlatformObserver.h"

namespace vel::host {

enum class PlayOutcome : std::uint8_t {
  PlayedToEnd,
  /// An NSCollectionMutatedError ended the scenario early.
  CollectionMutated
};

/// Plays a scenario once. The player acts as the host, the program that uses the library. The
/// player uses a headless window system and virtual time. It passes each trace line and each
/// `PlayState` to a `PlayListener`. Only the main thread may use a player.
class Player final : private PlatformObserver {
 public:
  /// Opens the host's windows and creates the LaunchScreenManager. The trace does not contain these
  /// actions. The scenario and the listener must outlive the player.
  Player(const Scenario& scenario, PlayListener& listener);
  ~Player() override;

  /// Plays the whole scenario.
  PlayOutcome play();

  /// Plays one step: runs the main run loop until the step's time and then performs the step. A
  /// test that checks the state after each step calls this function instead of `play()`.
  void play(const Step& step);
  [[nodiscard]] const Strong<LaunchScreenManager>& manager() const { return manager_; }
  [[nodiscard]] WindowNames& names() { return windowNames_; }

 private:
  // PlatformObserver
  void timerFired(NSTimer& timer, const Strong<NSObject>& target) override;
  void lifeCycleMethodCalled(NSViewController& controller, LifeCycleMethod method) override;
  void styleMaskWasSet(NSWindow& window, std::uint64_t styleMask) override;
  void keyStatusChanged(NSWindow& window, KeyStatusChange change) override;
  void windowOpened(NSWindow& window) override;
  void windowClosed(NSWindow& window) override;

  // Runs the main run loop until `time`. Also does the work that is due exactly at `time`.
  void runUntil(Nanoseconds time);
  void reportState();
  void report(TraceEvent event);

  Strong<NSWindow> openWindow(const WindowScript& script);
  void setViewDelegate(const std::optional<ViewDelegateScript>& newScript);
  // Returns the manager's main or temporary content, or null. The main content is the launch
  // screen. A temporary content holds a request that arrives while a launch screen is shown.
  [[nodiscard]] Strong<LaunchScreenContent> content(ContentName name) const;
  // `content` must be a LaunchScreenContent or null. Returns `std::nullopt` for null.
  [[nodiscard]] std::optional<ContentName> contentNameOf(const NSObjectProtocol* content) const;
  // Returns the view controller of the manager's main content, or null.
  [[nodiscard]] Strong<LaunchScreenViewController> controller() const;
  // Returns true if a cover (a LaunchScreenViewController) is shown. Removes from `covers_` the
  // covers that are no longer shown.
  [[nodiscard]] bool isCovered();

  void perform(const step::Activate& action);
  void perform(const step::Request& action);
  void perform(const step::ContentView& action);
  void perform(const step::Present& action);
  void perform(const step::Dismiss& action);
  void perform(const step::Deactivate& action);
  void perform(const step::Send& action);
  void perform(const step::Configure& action);
  void perform(const step::ReplaceConfiguration& action);
  void perform(const step::ViewDelegate& action);
  void perform(const step::OpenWindow& action);
  void perform(const step::CloseWindow& action);
  void perform(const step::MakeKey& action);
  void perform(const step::Miniaturize& action);
  void perform(const step::Deminiaturize& action);
  void perform(const step::ResignKey& action);
  void perform(const step::DeactivateApp& action);
  void perform(const step::ActivateApp& action);
  void perform(const step::StopModal& action);
  void perform(const step::PresentOver& action);
  void perform(const step::DismissOver& action);
  void perform(const step::RunLoopMode& action);
  void perform(const step::Inspect& action);

  const Scenario& scenario_;
  PlayListener& listener_;
  HeadlessPlatform platform_;
  WindowNames windowNames_;
  std::vector<Strong<NSWindow>> windows_;  // the host's windows, including closed windows
  Strong<HostBroker> broker_;
  Strong<NSObjectProtocol> resolverDelegate_;  // the manager's delegate, or null
  Strong<ScriptedViewDelegate> viewDelegate_;
  Strong<LaunchScreenManager> manager_;
  // These contents can outlive the manager's references to them.
  Weak<LaunchScreenContent> mainContent_;
  std::vector<Weak<LaunchScreenContent>> temporaryContents_;
  // The covers that have started to appear.
  std::vector<Weak<LaunchScreenViewController>> covers_;
  // The controllers that `step::PresentOver` has presented as sheets over a cover, oldest first.
  std::vector<Strong<NSViewController>> controllersOverCover_;
};

}  // namespace vel::host
