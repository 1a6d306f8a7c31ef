#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Host/Command.h"
#include "Host/Show/Console.h"
#include "Host/Show/EngineBroker.h"
#include "Host/Show/EventsFile.h"
#include "Host/Show/MovingSquareView.h"
#include "Host/Show/ShowOptions.h"
#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/PlatformObserver.h"

namespace vel::host {

/// How a `ShowSession` ended.
struct ShowOutcome {
  ExitStatus status = kExitSuccess;
  /// One line for the user. Empty on success. Also empty if the library has already logged why the
  /// session failed.
  std::string failure;
};

/// Shows one launch screen over the player window, which stands for the window of a game. The
/// session opens the player window, or adopts a window of another program as the player window. The
/// session then requests a launch screen from the library, presents the launch screen and reports
/// the progress to the console. The caller must start the application (`NSApplication::start`)
/// before the session and must run the main run loop. Only the main thread may use a session.
class ShowSession final : public Class<ShowSession, "ShowSession", NSObject,
                                       ContentResolverDelegate, ContentViewDelegate>,
                          private PlatformObserver {
 public:
  /// `events` may be null.
  ShowSession(ShowOptions options, std::shared_ptr<Console> console,
              std::unique_ptr<EventsFile> events);
  /// Calls `shutDown`.
  ~ShowSession() override;

  /// Opens or adopts the player window. Covers the player window if it is adopted or is already the
  /// key window. Otherwise `update` covers the player window later. After an error, `outcome` has a
  /// value.
  void start();
  /// Updates the console and the outcome. Returns true if `outcome` has a value. The caller must
  /// call this after each pass of the run loop.
  bool update();
  [[nodiscard]] const std::optional<ShowOutcome>& outcome() const { return outcome_; }

  /// Dismisses the launch screen at the user's request. Does nothing unless the mode in the
  /// options is "skip".
  void skip();
  /// Dismisses the launch screen, even in "forced" mode. Restores the style of the player window.
  /// Then closes the player window, or releases it if it is adopted. A second call does nothing.
  void shutDown();

  [[nodiscard]] const Strong<NSWindow>& playerWindow() const { return playerWindow_; }

  // ContentResolverDelegate
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& resolver,
                                                   const Strong<ContentData>& data) override;
  // ContentViewDelegate
  void contentViewDidDisappear(const Strong<ContentView>& view) override;

 private:
  // PlatformObserver
  void timerFired(NSTimer& timer, const Strong<NSObject>& target) override;
  void lifeCycleMethodCalled(NSViewController& controller, LifeCycleMethod method) override;
  void styleMaskWasSet(NSWindow& window, std::uint64_t styleMask) override;

  void openPlayerWindow();
  void adoptPlayerWindow(std::uint64_t windowId);
  // Requests a launch screen from the library and presents it.
  void sendRequest();
  void present(const Strong<ContentData>& data);
  // Called when the library has recorded the analytics event of the launch screen.
  void eventRecorded(std::string_view event);
  void displayLost(std::string_view reason);
  // `remainingControls` are the controls that the window manager still offers although the style
  // mask excludes them.
  void reportRemainingControls(const NSWindow& window, NSWindowStyleMask remainingControls);
  void takeScreenshot();
  void fail(std::string failure);

  // Returns the seconds since `sendRequest`. Before `sendRequest`, returns the seconds since
  // `start`.
  [[nodiscard]] double time() const;
  void report(std::string_view text);
  void showTimeLeft();
  // True if an open window contains the view of the launch screen, even a miniaturised window.
  [[nodiscard]] bool isCovering() const;
  // Reports once that the launch screen is on the screen.
  void reportIfCovered();
  // Reports once that the launch screen was removed.
  void reportIfUncovered();

  ShowOptions options_;
  std::shared_ptr<Console> console_;
  std::unique_ptr<EventsFile> events_;
  // The event sink and the platform observer before `start`. `shutDown` restores them.
  MetricsCenter::Sink previousSink_;
  PlatformObserver* previousObserver_ = nullptr;
  bool isStarted_ = false;
  Nanoseconds startTime_ = 0;  // the time at which `time` returns 0

  Strong<EngineBroker> broker_;
  Strong<LaunchScreenManager> manager_;
  Strong<NSWindow> playerWindow_;
  Strong<MovingSquareView> squareView_;
  Strong<CVPresentationFullScreen> presentation_;
  Strong<NSViewController> cover_;  // the view controller of the launch screen

  // The style of the player window before the launch screen.
  NSWindowStyleMask playerStyle_ = NSWindowStyleMaskBorderless;
  double totalSeconds_ = 0;  // the duration of the countdown
  CountdownState countdownState_ = CountdownState::Running;
  bool hasViewAppeared_ = false;              // `viewDidAppear` of `cover_` was called
  bool hasLaunchScreenBeenOnScreen_ = false;  // the window system has shown the launch screen
  bool areControlsExcluded_ = false;          // the style mask excludes the controls
  bool isDismissed_ = false;      // the launch screen was dismissed, but may still be on the screen
  bool isUncovered_ = false;      // the launch screen was removed
  bool isEventRecorded_ = false;  // the library has recorded the analytics event
  bool needsScreenshot_ = false;
  std::optional<ShowOutcome> outcome_;
};

}  // namespace vel::host
