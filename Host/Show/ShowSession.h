#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Host/Command.h"
#include "Host/Show/Console.h"
#include "Host/Show/ContentRequests.h"
#include "Host/Show/EventsFile.h"
#include "Host/Show/Playground.h"
#include "Host/Show/ShowOptions.h"
#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/PlatformObserver.h"

namespace vel::host {

/// How a session ended.
struct ShowOutcome {
  ExitStatus status = kExitSuccess;
  /// One line for the user; empty where nothing failed, or where the library has said it already.
  std::string failure;
};

/// One launch screen from request to event, as a host sees to it: the session opens a player
/// window, or takes part in another program's, sends the content request, presents what it gets,
/// and tells its console what happens.
/// It works on the running application and the main run loop, in whichever time that runs; the
/// caller runs the loop. Main thread.
class ShowSession final : public Class<ShowSession, "ShowSession", NSObject,
                                       ContentResolverDelegate, ContentViewDelegate>,
                          private PlatformObserver {
 public:
  /// `events` may be none.
  ShowSession(ShowOptions options, std::shared_ptr<Console> console,
              std::unique_ptr<EventsFile> events);
  /// Gives the window back, if that has not been done.
  ~ShowSession() override;

  /// Opens the player window and, as soon as it is in front, presents the launch screen over it.
  /// What goes wrong is the outcome.
  void start();
  /// Takes notice of what a pass of the run loop has changed; to be called after each. Answers
  /// whether the session has come to its outcome.
  bool passEnded();
  [[nodiscard]] const std::optional<ShowOutcome>& outcome() const { return outcome_; }

  /// The user wants the launch screen gone; without skip mode nothing happens.
  void skip();
  /// Takes the launch screen down without asking anybody, restores the window's style and closes
  /// the window, or lets another program's go. A second time does nothing.
  void giveBack();

  [[nodiscard]] const Strong<NSWindow>& playerWindow() const { return player_; }

  // ContentResolverDelegate
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& resolver,
                                                   const Strong<ContentData>& data) override;
  // ContentViewDelegate
  void contentViewDidDisappear(const Strong<ContentView>& view) override;

 private:
  // PlatformObserver
  void timerFired(NSTimer& timer, const Strong<NSObject>& target) override;
  void lifeCycleStepBegan(NSViewController& controller, LifeCycleStep step) override;
  void styleMaskSet(NSWindow& window, std::uint64_t styleMask) override;

  void openPlayerWindow();
  void adoptPlayerWindow(std::uint64_t window);
  void request();
  void present(const Strong<ContentData>& data);
  void eventRecorded(std::string_view event);
  void displayLost(std::string_view reason);
  void controlsKept(const NSWindow& window, NSWindowStyleMask controls);
  void takeScreenshot();
  void fail(std::string failure);

  // Seconds since the start.
  [[nodiscard]] double time() const;
  void happened(std::string_view what);
  void tellTimeLeft();
  // Whether the launch screen's view is in an open window.
  [[nodiscard]] bool covers() const;
  void noticeUncovered();

  ShowOptions options_;
  std::shared_ptr<Console> console_;
  std::unique_ptr<EventsFile> events_;
  MetricsCenter::Sink sinkBefore_;
  PlatformObserver* observerBefore_ = nullptr;
  bool started_ = false;
  Nanoseconds startedAt_ = 0;

  Strong<EngineBroker> broker_;
  Strong<LaunchScreenManager> manager_;
  Strong<NSWindow> player_;
  Strong<Playground> playground_;
  Strong<CVPresentationFullScreen> presentation_;
  Strong<NSViewController> cover_;

  NSWindowStyleMask playerStyle_ = NSWindowStyleMaskBorderless;
  double timeGiven_ = 0;
  Countdown countdown_ = Countdown::Runs;
  bool covered_ = false;
  bool controlsTaken_ = false;
  bool dismissed_ = false;
  bool uncovered_ = false;
  bool recorded_ = false;
  bool screenshotDue_ = false;
  std::optional<ShowOutcome> outcome_;
};

}  // namespace vel::host
