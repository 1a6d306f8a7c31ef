// What the tests of the cover and its content share: a journal of what happened, actors that write
// into it, and a controller to present.
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

/// What happened, in order. Several actors write into one, and whoever comes last keeps it.
using Lines = std::vector<std::string>;
using Journal = std::shared_ptr<Lines>;

/// What the cover's controller tells and asks, in the protocol's order.
enum class CoverCall : std::uint8_t { WillPresent, CanDismiss, DidDismiss };

/// A delegate of the cover's controller. It writes "name: will present", "name: can dismiss" and
/// "name: did dismiss", and answers as it is set to.
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

  /// From now on it does not respond to this operation; sent all the same, it is written down.
  void lack(CoverCall call) { responding_.reset(static_cast<std::size_t>(call)); }
  /// Runs `work` inside the next call of this kind.
  void once(CoverCall call, std::function<void()> work);

  /// Its answer whether the controller may dismiss.
  bool agrees = true;
  /// Who told or asked it last.
  Weak<LaunchScreenViewController> teller;

 private:
  void note(CoverCall call, std::string_view text,
            const Strong<LaunchScreenViewController>& controller);

  std::string name_;
  Journal journal_;
  OperationSet responding_ = 0b111;
  CoverCall workCall_ = CoverCall::WillPresent;
  std::function<void()> work_;
};

/// What the content tells and asks the host, in the protocol's order.
enum class HostCall : std::uint8_t { WillAppear, CanDisappear, DidDisappear };

/// The host's view delegate. It writes "name: will appear", "name: can disappear" and "name: did
/// disappear", and answers as it is set to.
class HostViewDelegate final
    : public Class<HostViewDelegate, "HostViewDelegate", NSObject, ContentViewDelegate> {
 public:
  HostViewDelegate(std::string_view name, Journal journal)
      : name_(name), journal_(std::move(journal)) {}

  void contentViewWillAppear(const Strong<ContentView>& view) override;
  bool canContentViewDisappear(const Strong<ContentView>& view) override;
  void contentViewDidDisappear(const Strong<ContentView>& view) override;
  [[nodiscard]] OperationSet respondingOperations() const override { return responding_; }

  /// From now on it does not respond to this operation; sent all the same, it is written down.
  void lack(HostCall call) { responding_.reset(static_cast<std::size_t>(call)); }

  /// Its answer whether the view may disappear.
  bool agrees = true;
  /// The view that it was told of or asked about last.
  Weak<ContentView> view;

 private:
  void note(std::string_view text, const Strong<ContentView>& view);

  std::string name_;
  Journal journal_;
  OperationSet responding_ = 0b111;
};

/// Writes down, while it lives, what the platform does with covers and windows: the cover's steps
/// by name, "style 7" for a style mask that is set, "window opened", "window closed".
class PlatformJournal final : public PlatformObserver {
 public:
  explicit PlatformJournal(Journal journal) : journal_(std::move(journal)) {}
  PlatformJournal(const PlatformJournal&) = delete;
  PlatformJournal& operator=(const PlatformJournal&) = delete;
  PlatformJournal(PlatformJournal&&) = delete;
  PlatformJournal& operator=(PlatformJournal&&) = delete;
  ~PlatformJournal() override { setPlatformObserver(before_); }

  void lifeCycleStepBegan(NSViewController& controller, LifeCycleStep step) override;
  void styleMaskSet(NSWindow& window, std::uint64_t styleMask) override;
  void windowOpened(NSWindow& window) override;
  void windowClosed(NSWindow& window) override;

  /// Runs `work` inside the next setting of a style mask: for what only an intruder would do.
  void atNextStyleMask(std::function<void()> work) { work_ = std::move(work); }

 private:
  Journal journal_;
  std::function<void()> work_;
  PlatformObserver* before_ = setPlatformObserver(this);
};

/// Whether the embedded cover without a parent that is tracked is exactly this one.
bool tracks(const Strong<NSView>& superView, const Strong<LaunchScreenViewController>& controller);
bool tracksNothing();

/// A configuration that allows five seconds, a controller made under it, and the journal.
class CoverTest : public VirtualTest {
 protected:
  CoverTest();

  static LaunchScreenConfiguration& configuration() {
    return *LaunchScreenConfiguration::defaultConfiguration();
  }
  Strong<CoverDelegate> addDelegate(std::string_view name) { return addDelegate(name, cover); }
  Strong<CoverDelegate> addDelegate(std::string_view name,
                                    const Strong<LaunchScreenViewController>& to);
  /// What was written down since the last call.
  Lines taken() { return std::exchange(*journal, {}); }

  Journal journal = std::make_shared<Lines>();
  PlatformJournal platformJournal{journal};
  Strong<LaunchScreenViewController> cover;
};

}  // namespace vel::test
