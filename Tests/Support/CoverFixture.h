// Support for the tests of covers and of content views. A cover is the view of a launch screen.
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

/// The operations of LaunchScreenViewControllerDelegate. A value is the number of the operation's
/// bit in an OperationSet.
enum class CoverCall : std::uint8_t { WillPresent, CanDismiss, DidDismiss };

/// A delegate of a cover's controller. It writes "name: will present", "name: can dismiss" and
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
  CoverCall workCall_ = CoverCall::WillPresent;  // the call that runs `work_`
  std::function<void()> work_;
};

/// The operations of ContentViewDelegate. A value is the number of the operation's bit in an
/// OperationSet.
enum class ContentViewCall : std::uint8_t { WillAppear, CanDisappear, DidDisappear };

/// A host's delegate of a content view. It writes "name: will appear", "name: can disappear" and
/// "name: did disappear" into the journal.
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

/// Writes events of the platform into the journal: "viewWillAppear" and the other life-cycle
/// methods of a cover's controller, "window opened", "window closed", and "style 7" when the style
/// mask of a window is set to 7.
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

// The tracked cover is the embedded cover to which the library holds strong references
// (EmbeddedCover.h).

/// True if the tracked cover is the view of `controller` in `superView`.
bool isTrackedCover(const Strong<NSView>& superView,
                    const Strong<LaunchScreenViewController>& controller);
bool hasTrackedCover();

/// A fixture with a journal and with the controller of a cover. Sets the expiration time in the
/// default configuration to five seconds.
class CoverTest : public VirtualPlatformTest {
 protected:
  CoverTest();

  static LaunchScreenConfiguration& configuration() {
    return *LaunchScreenConfiguration::defaultConfiguration();
  }
  /// Adds a new delegate to `controller` or to `launchScreenController`.
  Strong<CoverDelegate> addDelegate(std::string_view name) { return addDelegate(name, controller); }
  Strong<CoverDelegate> addDelegate(
      std::string_view name, const Strong<LaunchScreenViewController>& launchScreenController);
  /// Returns the events in the journal and clears the journal.
  Lines takeEvents() { return std::exchange(*journal, {}); }

  Journal journal = std::make_shared<Lines>();
  PlatformJournal platformJournal{journal};
  Strong<LaunchScreenViewController> controller;
};

}  // namespace vel::test
