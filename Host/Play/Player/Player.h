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
  Ended,
  /// The play broke off: a collection was changed while it was being walked.
  CollectionMutated
};

/// The host of a scenario: plays it once, on a stage of its own, and tells its listener what
/// happens. Main thread.
class Player final : private PlatformObserver {
 public:
  /// Opens the host's windows and makes the manager; nothing of that is told. The scenario and the
  /// listener have to outlive the player.
  Player(const Scenario& scenario, PlayListener& listener);
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;
  Player(Player&&) = delete;
  Player& operator=(Player&&) = delete;
  ~Player() override;

  PlayOutcome play();

  /// For whoever plays step by step, instead: runs the loop until the step's time and does it.
  void play(const Step& step);
  [[nodiscard]] const Strong<LaunchScreenManager>& manager() const { return manager_; }
  [[nodiscard]] WindowNames& names() { return names_; }

 private:
  // PlatformObserver
  void timerFired(NSTimer& timer, const Strong<NSObject>& target) override;
  void lifeCycleStepBegan(NSViewController& controller, LifeCycleStep step) override;
  void styleMaskSet(NSWindow& window, std::uint64_t styleMask) override;
  void keyChanges(NSWindow& window, KeyChange change) override;
  void windowOpened(NSWindow& window) override;
  void windowClosed(NSWindow& window) override;

  // Runs the loop until the moment has come and nothing more is due then.
  void runUntil(Nanoseconds time);
  void settled();
  void tell(TraceEvent event);

  Strong<NSWindow> open(const WindowScript& script);
  void setViewDelegate(const std::optional<ViewDelegateScript>& script);
  [[nodiscard]] Strong<LaunchScreenContent> content(ContentName name) const;
  [[nodiscard]] std::optional<ContentName> contentNameOf(const NSObjectProtocol* content) const;
  // The main content's.
  [[nodiscard]] Strong<LaunchScreenViewController> controller() const;
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
  HeadlessPlatform stage_;
  WindowNames names_;
  std::vector<Strong<NSWindow>> windows_;  // the host's own, also when closed
  Strong<HostBroker> broker_;
  Strong<NSObjectProtocol> resolverDelegate_;
  Strong<ScriptedViewDelegate> viewDelegate_;
  Strong<LaunchScreenManager> manager_;
  Weak<LaunchScreenContent> mainContent_;  // also after the manager has dropped it
  std::vector<Weak<LaunchScreenContent>> temporaryContents_;
  std::vector<Weak<LaunchScreenViewController>> covers_;  // that have been on screen
  std::vector<Strong<NSViewController>> presentedOver_;
};

}  // namespace vel::host
