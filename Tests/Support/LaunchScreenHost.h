// What the tests of the library play towards it: a host with its delegates and a controller of its
// own, and the run from request to presentation.
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

inline constexpr std::int32_t kHostModeEmbedded = 0;
inline constexpr std::int32_t kHostModeSheet = 1;
inline constexpr std::int32_t kHostModeModalWindow = 2;

/// A content resolver delegate that notes each change of state it is told of.
class ResolverListener final
    : public Class<ResolverListener, "ResolverListener", NSObject, ContentResolverDelegate> {
 public:
  struct Change {
    Strong<ContentResolver> resolver;
    Strong<ContentData> data;
    ContentDataState state = 0;
    bool onMainThread = false;
  };

  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& resolver,
                                                   const Strong<ContentData>& data) override;

  std::vector<Change> changes;
};

/// A view controller of the host's own, as it is given to the default configuration. It notes what
/// it is asked to do, and does nothing.
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

  /// The operations sent to it, by name, in the order in which they came.
  std::vector<std::string> calls;
  /// What came with the last one of each.
  Strong<LaunchScreenViewControllerDelegate> delegate;
  Strong<NSWindow> window;
  LaunchScreenPresentationMode mode = -1;
  Weak<NSViewController> dismissed;
  /// Runs `work` inside the next operation.
  void once(std::function<void()> work) { work_ = std::move(work); }

 private:
  void note(std::string_view operation);

  std::function<void()> work_;
};

/// Runs `work` on a thread of its own and waits for its end.
void onAnotherThread(const std::function<void()>& work);

/// A manager on a fresh platform, and what a host does with it. At the end it is deactivated.
class LaunchScreenTest : public VirtualTest {
 protected:
  ~LaunchScreenTest() override;

  static LaunchScreenConfiguration& configuration() {
    return *LaunchScreenConfiguration::defaultConfiguration();
  }

  /// Requests content for the event "launch_end" and asks for its view, so that the manager hears
  /// from the controller.
  void load(double duration, std::string_view mode = "");
  /// The same with a controller of the host's own; the time left is `duration` all the same.
  Strong<HostController> loadHostController(double duration, std::string_view mode = "");
  /// Presents the main content in one of the host's modes.
  void present(const Strong<NSWindow>& window, std::int32_t hostMode);
  /// The main content's controller.
  [[nodiscard]] Strong<LaunchScreenViewController> controller() const;

  /// Adds a delegate to that controller, behind the manager. It is called "host" in the journal.
  Strong<CoverDelegate> addHostDelegate();

  /// The countdown's timer and the seconds it has left.
  [[nodiscard]] Strong<NSTimer> timer() const { return manager->launchScreenExpirationTimer(); }
  [[nodiscard]] double timeLeft() const { return manager->launchScreenExpirationTimeLeft(); }
  void setTimeLeft(double seconds) { manager->setLaunchScreenExpirationTimeLeft(seconds); }
  /// How many notifications the manager waits for.
  [[nodiscard]] std::size_t registrations() const;
  /// How much work waits on the main queue.
  [[nodiscard]] static std::size_t pendingWork();
  /// All that the manager goes by, to find whether any of it has changed.
  [[nodiscard]] auto state() const {
    return std::tuple(timer(), timeLeft(), manager->appIsUnfocused(), manager->eventWasSended(),
                      manager->launchScreenExpired(), manager->launchShouldBeClosed(),
                      registrations(), pendingWork());
  }

  Journal journal = std::make_shared<Lines>();
  Strong<LaunchScreenManager> manager = LaunchScreenManager::init();
};

/// The same with a launch screen that a controller of the host's shows, and with windows of which
/// the manager hears that they are key or not, whether they are or not.
class ShownLaunchScreenTest : public LaunchScreenTest {
 protected:
  /// Loads, shows the controller's view in an open window that is not key, and starts the
  /// countdown.
  void show(double duration, std::string_view mode = "");
  void resignKey(const Strong<NSObject>& object);
  void becomeKey(const Strong<NSObject>& object);

  Strong<HostController> shown;
  Strong<NSWindow> window;
};

}  // namespace vel::test
