// Simulates a host, which is a program that uses the library.
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

/// A delegate of a content resolver. It records each reported change of state.
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
  /// The delegate that `addDelegate` has received. `deactivate` sets it to null.
  Strong<LaunchScreenViewControllerDelegate> delegate;
  /// The arguments of the last call of `presentForWindowWithPresentationMode`.
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

  /// Requests a launch screen for the event "launch_end" and loads its view. `duration` is in
  /// seconds. If `mode` is empty, the request has no mode.
  void load(double duration, std::string_view mode = "");
  /// Does the same as `load`, but a HostController replaces the library's controller.
  Strong<HostController> loadHostController(double duration, std::string_view mode = "");
  /// Presents the loaded launch screen. `hostMode` is one of the `kHostMode` constants.
  void present(const Strong<NSWindow>& window, std::int32_t hostMode);
  /// The controller of the loaded launch screen. Null if it is a HostController.
  [[nodiscard]] Strong<LaunchScreenViewController> controller() const;

  /// Adds a delegate with the name "host" to `controller()`. The delegate writes each call into the
  /// journal. The controller calls the delegates of the library first.
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
  /// Parts of the manager's state, and `pendingTaskCount()`. Tests compare these values before and
  /// after a call.
  [[nodiscard]] auto state() const {
    return std::tuple(timer(), timeLeft(), manager->appIsUnfocused(), manager->eventWasSended(),
                      manager->launchScreenExpired(), manager->launchShouldBeClosed(),
                      registrationCount(), pendingTaskCount());
  }

  Journal journal = std::make_shared<Lines>();
  Strong<LaunchScreenManager> manager = LaunchScreenManager::init();
};

/// A fixture that shows the view of a HostController in a window.
class ShownLaunchScreenTest : public LaunchScreenTest {
 protected:
  /// Loads a launch screen with a new `hostController`, adds the controller's view to the new
  /// window `window`, and starts the countdown. The window is open but not key.
  void show(double duration, std::string_view mode = "");
  /// Calls the manager's `windowDidResignKey` directly, as if `object` had resigned key.
  void notifyDidResignKey(const Strong<NSObject>& object);
  /// Calls the manager's `windowDidBecomeKey` directly, as if `object` had become key.
  void notifyDidBecomeKey(const Strong<NSObject>& object);

  Strong<HostController> hostController;
  Strong<NSWindow> window;
};

}  // namespace vel::test
