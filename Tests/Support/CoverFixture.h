// Support for the tests of the cover (the view of a launch screen) and of content views: a journal
// of events, delegates that write into the journal, and a fixture with a controller to present.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/AppKit/PlatformObserver.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {

using Lines = std::vector<std::string>;
/// A list of events, oldest first. All objects that write into a journal share ownership of the
/// journal.
using Journal = std::shared_ptr<Lines>;

/// The operations of LaunchScreenViewControllerDelegate, in the order of their declaration.
enum class CoverCall : std::uint8_t { WillPresent, CanDismiss, DidDismiss };

/// A delegate of the cover's controller. It writes "name: will present", "name: can dismiss" and
/// "name: did dismiss" into the journal.
class CoverDelegate final
    : public Class<CoverDelegate, "CoverDelegate", NSObject, LaunchScreenViewControllerDelegate> {
 public:
  CoverDelegate(std::string_view name, Journal journal)
      : name_(name), journal_(std::move(journal)) {}

  void launchScreenControllerWillPresent(
      const Strong<LaunchScreenViewController>& controller) override;
  bool canLaunchScreenControllerDismiss(
      const Strong<LaunchScreenViewController>& controller) override;
  void launchScreenControllerDidDismiss(
      const Strong<LaunchScreenViewController>& controller) override;
  [[nodiscard]] OperationSet respondingOperations() const override { return responding_; }

  /// Stops responding to this operation. If the library calls it nevertheless, the journal shows
  /// the call.
  void stopRespondingTo(CoverCall call) { responding_.reset(static_cast<std::size_t>(call)); }
  /// Runs `work` inside the next call of this operation.
  void onNext(CoverCall call, std::function<void()> work);

  /// The result of "can dismiss".
  bool agrees = true;
  /// The controller of the last call.
  Weak<LaunchScreenViewController> lastController;

 private:
  void record(CoverCall call, std::string_view text,
              const Strong<LaunchScreenViewController>& controller);

  std::string name_;
  Journal journal_;
  OperationSet responding_ = 0b111;
  CoverCall workCall_ = CoverCall::WillPresent;
  std::function<void()> work_;
};

/// The operations of ContentViewDelegate, in the order of their declaration.
enum class ContentViewCall : std::uint8_t { WillAppear, CanDisappear, DidDisappear };

/// A host's view delegate. It writes "name: will appear", "name: can disappear" and "name: did
/// disappear" into the journal.
class HostViewDelegate final
    : public Class<HostViewDelegate, "HostViewDelegate", NSObject, ContentViewDelegate> {
 public:
  HostViewDelegate(std::string_view name, Journal journal)
      : name_(name), journal_(std::move(journal)) {}

  void contentViewWillAppear(const Strong<ContentView>& view) override;
  bool canContentViewDisappear(const Strong<ContentView>& view) override;
  void contentViewDidDisappear(const Strong<ContentView>& view) override;
  [[nodiscard]] OperationSet respondingOperations() const override { return responding_; }

  /// Stops responding to this operation. If the library calls it nevertheless, the journal shows
  /// the call.
  void stopRespondingTo(ContentViewCall call) { responding_.reset(static_cast<std::size_t>(call)); }

  /// The result of "can disappear".
  bool agrees = true;
  /// The view of the last call.
  Weak<ContentView> view;

 private:
  void record(std::string_view text, const Strong<ContentView>& view);

  std::string name_;
  Journal journal_;
  OperationSet responding_ = 0b111;
};

/// Writes the platform's events into the journal: the life-cycle methods of the cover's controller,
/// "window opened", "window closed", and a line such as "style 7" when a window's style mask is
/// set.
class PlatformJournal final : public PlatformObserver {
 public:
  explicit PlatformJournal(Journal journal) : journal_(std::move(journal)) {}
  ~PlatformJournal() override { setPlatformObserver(previousObserver_); }

  void lifeCycleMethodCalled(NSViewController& controller, LifeCycleMethod method) override;
  void styleMaskWasSet(NSWindow& window, std::uint64_t styleMask) override;
  void windowOpened(NSWindow& window) override;
  void windowClosed(NSWindow& window) override;

  /// Runs `work` the next time that a style mask is set. Simulates a host that acts at that moment.
  void onNextStyleMask(std::function<void()> work) { work_ = std::move(work); }

 private:
  Journal journal_;
  std::function<void()> work_;
  PlatformObserver* previousObserver_ = setPlatformObserver(this);
};

/// The tracked cover is the embedded cover that the library keeps alive (EmbeddedCover.h). Returns
/// true if `superView` contains the tracked cover and `controller` is its controller.
bool isTrackedCover(const Strong<NSView>& superView,
                    const Strong<LaunchScreenViewController>& controller);
/// True if there is a tracked cover.
bool hasTrackedCover();

/// A fixture with a journal and a controller to present. The expiration time in the default
/// configuration is five seconds.
class CoverTest : public VirtualPlatformTest {
 protected:
  CoverTest();

  static LaunchScreenConfiguration& configuration() {
    return *LaunchScreenConfiguration::defaultConfiguration();
  }
  /// Adds a new delegate to `controller`.
  Strong<CoverDelegate> addDelegate(std::string_view name) { return addDelegate(name, controller); }
  Strong<CoverDelegate> addDelegate(
      std::string_view name, const Strong<LaunchScreenViewController>& launchScreenController);
  /// Returns the events in the journal and clears the journal.
  Lines takeEvents() { return std::exchange(*journal, {}); }

  Journal journal = std::make_shared<Lines>();
  PlatformJournal platformJournal{journal};
  /// The controller of the cover. Tests present this controller.
  Strong<LaunchScreenViewController> controller;
};

}  // namespace vel::test
