#pragma once

#include <atomic>
#include <utility>

#include "HostInterfaces/ContentBroker.h"
#include "LaunchScreen/Content/LaunchScreenContent.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSNotification.h"
#include "Platform/Foundation/NSTimer.h"

namespace vel {

/// The entry point of the library. The host creates a manager, activates it with its content broker
/// and requests content from it. The manager turns a request into a launch screen. It counts down
/// the time of the launch screen while the user can see the launch screen. It then dismisses the
/// launch screen and records one analytics event.
///
/// The manager has up to two contents. The main content is the launch screen. A temporary content
/// holds a request that arrives while a launch screen is shown.
///
/// The host owns the manager. A running countdown and delayed work also keep the manager alive.
/// Only the main thread may use this class. Exception: any thread may call
/// `contentDataForContentRequest` and `dismissLaunchScreen`.
class VEL_EXPORT LaunchScreenManager final
    : public Class<LaunchScreenManager, "LaunchScreenManager", NSObject,
                   LaunchScreenContentDelegate, LaunchScreenViewControllerDelegate,
                   ContentResolver> {
 public:
  static Strong<LaunchScreenManager> init();
  ~LaunchScreenManager() override;

  // ContentResolver
  /// The only element is "launch_screen".
  [[nodiscard]] NSArray<NSString> supportedEngines() const override;
  /// Registers this manager with the broker, which may be null. Always returns true.
  bool activate(const Strong<ContentBroker>& broker) override;
  /// Loads the request into the main content, or into a new temporary content while a launch screen
  /// is shown. Returns the content into which it loaded the request. Logs and returns null if a
  /// parameter is missing or invalid.
  Strong<ContentData> contentDataForContentRequest(const Strong<ContentRequest>& request) override;
  /// Returns the view of the main content for every argument. Releases the temporary content.
  Strong<ContentView> contentViewForContentData(const Strong<ContentData>& data) override;
  /// Deactivates and releases both contents.
  void deactivate() override;
  [[nodiscard]] Strong<NSObjectProtocol> delegate() const override { return delegate_.lock(); }
  void setDelegate(const Strong<NSObjectProtocol>& delegate) override { delegate_ = delegate; }

  /// Copies the parameters of a request to the default configuration. Logs and returns false at the
  /// first missing parameter. The parameters before the missing parameter have then already been
  /// copied.
  bool parseParameters(const Strong<NSDictionary>& parameters);

  /// Asks the view controller to dismiss itself. The view controller dismisses itself only if all
  /// its delegates agree.
  void dismissLaunchScreen();
  /// Schedules work that records the configured event half a second later. Each manager schedules
  /// this work at most once. While the application is unfocused (see `appIsUnfocused`), this
  /// function only sets `launchShouldBeClosed`.
  void sendAnalyticsEvent();

  // LaunchScreenContentDelegate
  void contentDataDidChangeState(const Strong<ContentData>& data) override;

  /// True if the countdown may run while `window` is the key window. This is true for the window
  /// that shows the launch screen; while that window is modal, also for each player window and its
  /// child windows; and for each window that holds a child controller of the class of the content's
  /// view controller.
  [[nodiscard]] bool isRequiredWindow(const Strong<NSWindow>& window) const;
  /// True if a new request must not change the main content, so it gets a temporary content. This
  /// is true while a sheet or modal window shows the main content, and while an open window holds a
  /// child controller of class LaunchScreenViewController.
  [[nodiscard]] bool tempItemRequired() const;

  /// Starts the countdown if it is not running and time is left.
  void startTimer();
  /// Performs one tick of the countdown. Dismisses the launch screen when the time is used up.
  void updateTimer();
  /// Stops the countdown and keeps the time left.
  void pauseTimer();
  /// Stops the countdown and sets the time left to 0.
  void stopTimer();

  /// Subscribes to notifications of the application and its windows. Calling it again subscribes
  /// again.
  void subscribeAppLifecycle();
  // Of these eight functions, only `windowDidResignKey` and `windowDidBecomeKey` do anything.
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
  /// Does nothing. The library never calls this operation.
  void launchScreenControllerWillDismiss(const Strong<LaunchScreenViewController>& controller);
  void launchScreenControllerDidDismiss(
      const Strong<LaunchScreenViewController>& controller) override;

  /// The main content. Null after `deactivate`.
  [[nodiscard]] Strong<LaunchScreenContent> content() const { return content_; }
  void setContent(Strong<LaunchScreenContent> content) { content_ = std::move(content); }
  /// The content of a request that arrived while `tempItemRequired` was true. Null otherwise.
  [[nodiscard]] Strong<LaunchScreenContent> tempContent() const { return tempContent_; }
  void setTempContent(Strong<LaunchScreenContent> content) { tempContent_ = std::move(content); }
  /// True after a required window (see `isRequiredWindow`) has stopped being key, until a required
  /// window is key again.
  [[nodiscard]] bool appIsUnfocused() const { return appIsUnfocused_; }
  void setAppIsUnfocused(bool isUnfocused) { appIsUnfocused_ = isUnfocused; }
  /// True after the event has been scheduled. The manager never sets it back to false.
  [[nodiscard]] bool eventWasSended() const { return eventWasSended_; }
  void setEventWasSended(bool wasSended) { eventWasSended_ = wasSended; }
  /// Null unless the countdown is running.
  [[nodiscard]] Strong<NSTimer> launchScreenExpirationTimer() const {
    return launchScreenExpirationTimer_;
  }
  void setLaunchScreenExpirationTimer(Strong<NSTimer> timer) {
    launchScreenExpirationTimer_ = std::move(timer);
  }
  /// The number of seconds for which the launch screen may still be shown.
  [[nodiscard]] double launchScreenExpirationTimeLeft() const {
    return launchScreenExpirationTimeLeft_;
  }
  void setLaunchScreenExpirationTimeLeft(double seconds) {
    launchScreenExpirationTimeLeft_ = seconds;
  }
  /// True from the start of a dismissal until `sendAnalyticsEvent` has handled the event.
  [[nodiscard]] bool launchScreenExpired() const { return launchScreenExpired_; }
  void setLaunchScreenExpired(bool isExpired) { launchScreenExpired_ = isExpired; }
  /// True if a dismissal or the event was postponed because the application was unfocused.
  [[nodiscard]] bool launchShouldBeClosed() const { return launchShouldBeClosed_; }
  void setLaunchShouldBeClosed(bool shouldBeClosed) { launchShouldBeClosed_ = shouldBeClosed; }

 private:
  // The window that currently shows the launch screen. Null while the launch screen is not shown.
  [[nodiscard]] Strong<NSWindow> launchScreenWindow() const;

  Strong<LaunchScreenContent> content_;
  Strong<LaunchScreenContent> tempContent_;
  bool appIsUnfocused_ = false;
  bool eventWasSended_ = false;
  Strong<NSTimer> launchScreenExpirationTimer_;
  double launchScreenExpirationTimeLeft_ = 0.0;
  // Atomic because `dismissLaunchScreen` sets it on any thread.
  std::atomic<bool> launchScreenExpired_ = false;
  bool launchShouldBeClosed_ = false;
  Weak<NSObjectProtocol> delegate_;
};

}  // namespace vel
