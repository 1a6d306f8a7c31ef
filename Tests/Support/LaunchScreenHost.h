// A simulated host for the tests of the library: its delegates, its own view controller, and the
// steps from request to presentation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "Platform/Foundation/Message.h"
#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {

/// The modes that a host passes to present a launch screen. Their values differ from those of the
/// library's LaunchScreenPresentationMode.
inline constexpr std::int32_t kHostModeEmbedded = 0;
inline constexpr std::int32_t kHostModeSheet = 1;
inline constexpr std::int32_t kHostModeModalWindow = 2;

/// A content resolver delegate that records each reported change of state.
class ResolverListener final
    : public Class<ResolverListener, "ResolverListener", NSObject, ContentResolverDelegate> {
 public:
  struct Change {
    Strong<ContentResolver> resolver;
    Strong<ContentData> data;
    ContentDataState state = 0;
    bool isOnMainThread = false;
  };

  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& resolver,
                                                   const Strong<ContentData>& data) override;

  std::vector<Change> changes;
  /// Called after each change has been recorded. May be empty.
  std::function<void()> whenNotified;
};

/// A view controller that a host supplies through the default configuration. It presents
/// nothing and records the calls of its operations.
class HostController final
    : public Class<HostController, "HostController", NSViewController,
                   LaunchScreenViewControllerProtocol, LaunchScreenPresenter> {
 public:
  void addDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) override;
  void removeDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) override;
  void deactivate() override;
  void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                            LaunchScreenPresentationMode mode) override;
  void dismiss() override;
  void dismissViewController(const Strong<NSViewController>& controller) override;

  /// The names of the called operations, in the order of the calls.
  std::vector<std::string> calls;
  /// Each operation except `removeDelegate` stores its arguments here. `deactivate` sets
  /// `delegate` to null.
  Strong<LaunchScreenViewControllerDelegate> delegate;
  Strong<NSWindow> window;
  LaunchScreenPresentationMode mode = -1;
  Weak<NSViewController> dismissedController;
  /// Runs `work` inside the next call of any operation.
  void onNextCall(std::function<void()> work) { work_ = std::move(work); }

 private:
  void record(std::string_view operation);

  std::function<void()> work_;
};

/// Runs `work` on another thread and waits until it returns.
void runOnAnotherThread(const std::function<void()>& work);

/// A fixture with a launch screen manager and with functions that act as the host. The destructor
/// deactivates the manager.
class LaunchScreenTest : public VirtualPlatformTest {
 protected:
  ~LaunchScreenTest() override;

  static LaunchScreenConfiguration& configuration() {
    return *LaunchScreenConfiguration::defaultConfiguration();
  }

  /// Loads content for the event "launch_end" and then the view of the content. Loading the view
  /// makes the manager a delegate of the content's view controller. `duration` (in seconds) and
  /// `mode` are parameters of the content request. If `mode` is empty, the request has no mode.
  void load(double duration, std::string_view mode = "");
  /// Loads content as `load` does, with a HostController instead of the library's controller.
  Strong<HostController> loadHostController(double duration, std::string_view mode = "");
  /// Presents the main content, which is the manager's `content`. `hostMode` is one of the
  /// `kHostMode` constants.
  void present(const Strong<NSWindow>& window, std::int32_t hostMode);
  /// The main content's controller.
  [[nodiscard]] Strong<LaunchScreenViewController> controller() const;

  /// Adds a delegate to the controller. The controller calls the delegates of the library first.
  /// The new delegate writes each call into the journal, with the name "host".
  Strong<CoverDelegate> addHostDelegate();

  /// The timer that counts down to the expiration of the launch screen. Null if the countdown is
  /// paused or stopped.
  [[nodiscard]] Strong<NSTimer> timer() const { return manager->launchScreenExpirationTimer(); }
  /// The time until the expiration, in seconds.
  [[nodiscard]] double timeLeft() const { return manager->launchScreenExpirationTimeLeft(); }
  void setTimeLeft(double seconds) { manager->setLaunchScreenExpirationTimeLeft(seconds); }
  /// The number of notifications that the manager observes.
  [[nodiscard]] std::size_t registrationCount() const;
  /// The number of pending tasks of the main queue.
  [[nodiscard]] static std::size_t pendingTaskCount();
  /// The manager's state and `pendingTaskCount()`. Does not include the manager's content and
  /// delegate.
  [[nodiscard]] auto state() const {
    return std::tuple(timer(), timeLeft(), manager->appIsUnfocused(), manager->eventWasSended(),
                      manager->launchScreenExpired(), manager->launchShouldBeClosed(),
                      registrationCount(), pendingTaskCount());
  }

  Journal journal = std::make_shared<Lines>();
  Strong<LaunchScreenManager> manager = LaunchScreenManager::init();
};

/// A LaunchScreenTest that shows the view of a HostController in a window.
class ShownLaunchScreenTest : public LaunchScreenTest {
 protected:
  /// Loads content, shows the controller's view in an open window that is not key, and starts the
  /// countdown.
  void show(double duration, std::string_view mode = "");
  /// Calls the manager's `windowDidResignKey` directly, as if `object` had resigned key.
  void notifyDidResignKey(const Strong<NSObject>& object);
  /// Calls the manager's `windowDidBecomeKey` directly, as if `object` had become key.
  void notifyDidBecomeKey(const Strong<NSObject>& object);

  Strong<HostController> hostController;
  Strong<NSWindow> window;
};

}  // namespace vel::test
