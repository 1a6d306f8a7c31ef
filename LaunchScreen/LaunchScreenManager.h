#pragma once

#include <atomic>
#include <utility>

#include "HostInterfaces/ContentBroker.h"
#include "LaunchScreen/Content/LaunchScreenContent.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSNotification.h"
#include "Platform/Foundation/NSTimer.h"

namespace vel {

/// The launch screen's resolver and the library's entry: the host makes one, activates it with its
/// content broker and asks it for content. It turns a request into a launch screen, counts its time
/// down while the user can see it, dismisses it, and records the analytics event, once.
///
/// The host keeps it alive; a running countdown and delayed work do so too. Main thread, but for
/// `contentDataForContentRequest` and `dismissLaunchScreen`, which may come from any.
class VEL_EXPORT LaunchScreenManager final
    : public Class<LaunchScreenManager, "LaunchScreenManager", NSObject,
                   LaunchScreenContentDelegate, LaunchScreenViewControllerDelegate,
                   ContentResolver> {
 public:
  static Strong<LaunchScreenManager> init();
  ~LaunchScreenManager() override;

  // ContentResolver
  /// "launch_screen" alone.
  [[nodiscard]] NSArray<NSString> supportedEngines() const override;
  /// Registers with the broker. Always true, also with none.
  bool activate(const Strong<ContentBroker>& broker) override;
  /// The content for the request: the main one, or a temporary one while a launch screen is shown;
  /// none, with a log line, for a request that is refused.
  Strong<ContentData> contentDataForContentRequest(const Strong<ContentRequest>& request) override;
  /// The main content's view, whatever the argument; the temporary content is dropped.
  Strong<ContentView> contentViewForContentData(const Strong<ContentData>& data) override;
  /// Drops both contents.
  void deactivate() override;
  [[nodiscard]] Strong<NSObjectProtocol> delegate() const override { return delegate_.lock(); }
  void setDelegate(const Strong<NSObjectProtocol>& delegate) override { delegate_ = delegate; }

  /// Reads a request's parameters into the default configuration. False, with a log line, where one
  /// is missing; what was read before it stays.
  bool parseParameters(const Strong<NSDictionary>& parameters);

  /// Asks the view controller to dismiss itself, which it does if its delegates agree.
  void dismissLaunchScreen();
  /// Records the configured event half a second from now; at most once, and not while unfocused.
  void sendAnalyticsEvent();
  // LaunchScreenContentDelegate
  void contentDataDidChangeState(const Strong<ContentData>& data) override;

  /// Whether the window's focus matters: the user sees the launch screen while it is key.
  [[nodiscard]] bool isRequiredWindow(const Strong<NSWindow>& window) const;
  /// Whether a launch screen is shown already, so that a new request must not disturb it.
  [[nodiscard]] bool tempItemRequired() const;

  /// The countdown: starts unless it runs or no time is left; one tick; stops, keeping the time
  /// left; stops and leaves none.
  void startTimer();
  void updateTimer();
  void pauseTimer();
  void stopTimer();

  /// Registers for the application's and the windows' notifications; each call once more.
  void subscribeAppLifecycle();
  void applicationWillResignActive(const NSNotification& notification);
  void applicationDidBecomeActive(const NSNotification& notification);
  void windowDidResignKey(const NSNotification& notification);
  void windowDidBecomeKey(const NSNotification& notification);
  void windowDidMiniaturize(const NSNotification& notification);
  void windowDidDeminiaturize(const NSNotification& notification);
  void appWillEnterForeground();
  void appDidEnterBackground();

  // LaunchScreenViewControllerDelegate
  void launchScreenControllerWillPresent(
      const Strong<LaunchScreenViewController>& controller) override;
  bool canLaunchScreenControllerDismiss(
      const Strong<LaunchScreenViewController>& controller) override;
  /// Nothing calls it, and it does nothing.
  void launchScreenControllerWillDismiss(const Strong<LaunchScreenViewController>& controller);
  void launchScreenControllerDidDismiss(
      const Strong<LaunchScreenViewController>& controller) override;

  /// The main content; none after `deactivate`.
  [[nodiscard]] Strong<LaunchScreenContent> content() const { return content_; }
  void setContent(Strong<LaunchScreenContent> content) { content_ = std::move(content); }
  /// A content for a request that must not disturb the main one.
  [[nodiscard]] Strong<LaunchScreenContent> tempContent() const { return tempContent_; }
  void setTempContent(Strong<LaunchScreenContent> content) { tempContent_ = std::move(content); }
  /// A required window has lost key status and not regained it.
  [[nodiscard]] bool appIsUnfocused() const { return appIsUnfocused_; }
  void setAppIsUnfocused(bool unfocused) { appIsUnfocused_ = unfocused; }
  /// The event has been scheduled; never cleared.
  [[nodiscard]] bool eventWasSended() const { return eventWasSended_; }
  void setEventWasSended(bool sended) { eventWasSended_ = sended; }
  /// None unless the countdown runs.
  [[nodiscard]] Strong<NSTimer> launchScreenExpirationTimer() const {
    return launchScreenExpirationTimer_;
  }
  void setLaunchScreenExpirationTimer(Strong<NSTimer> timer) {
    launchScreenExpirationTimer_ = std::move(timer);
  }
  /// Seconds that the launch screen may still stay up.
  [[nodiscard]] double launchScreenExpirationTimeLeft() const {
    return launchScreenExpirationTimeLeft_;
  }
  void setLaunchScreenExpirationTimeLeft(double seconds) {
    launchScreenExpirationTimeLeft_ = seconds;
  }
  /// A dismissal has been started and the event not yet dealt with.
  [[nodiscard]] bool launchScreenExpired() const { return launchScreenExpired_; }
  void setLaunchScreenExpired(bool expired) { launchScreenExpired_ = expired; }
  /// Something was refused while unfocused and is owed when a required window comes back.
  [[nodiscard]] bool launchShouldBeClosed() const { return launchShouldBeClosed_; }
  void setLaunchShouldBeClosed(bool owed) { launchShouldBeClosed_ = owed; }

 private:
  // The window that shows the launch screen, read afresh at each use; none while nothing does.
  [[nodiscard]] Strong<NSWindow> launchScreenWindow() const;

  Strong<LaunchScreenContent> content_;
  Strong<LaunchScreenContent> tempContent_;
  bool appIsUnfocused_ = false;
  bool eventWasSended_ = false;
  Strong<NSTimer> launchScreenExpirationTimer_;
  double launchScreenExpirationTimeLeft_ = 0.0;
  // Written by whatever thread asks for the dismissal.
  std::atomic<bool> launchScreenExpired_ = false;
  bool launchShouldBeClosed_ = false;
  Weak<NSObjectProtocol> delegate_;
};

}  // namespace vel
