#pragma once

#include <atomic>
#include <cstdint>

#include "Platform/AppKit/NSProgressIndicator.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/AtomicReference.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSMutableArray.h"

namespace vel {

class LaunchScreenViewController;

/// How the controller is presented. A value other than the three constants below presents nothing.
using LaunchScreenPresentationMode = std::int32_t;

/// Shows the view as a subview that fills the host window, and overrides the window's style.
inline constexpr LaunchScreenPresentationMode LaunchScreenPresentationEmbedded = 0;
inline constexpr LaunchScreenPresentationMode LaunchScreenPresentationModalWindow = 1;
inline constexpr LaunchScreenPresentationMode LaunchScreenPresentationSheet = 2;

/// Receives the notifications of a launch screen's view controller. All operations are optional.
class VEL_EXPORT LaunchScreenViewControllerDelegate
    : public Protocol<LaunchScreenViewControllerDelegate> {
 public:
  /// The view is about to appear.
  virtual void launchScreenControllerWillPresent(
      const Strong<LaunchScreenViewController>& /*controller*/) {}
  /// True if the controller may be dismissed now. The controller stays if one delegate returns
  /// false.
  virtual bool canLaunchScreenControllerDismiss(
      const Strong<LaunchScreenViewController>& /*controller*/) {
    return false;
  }
  /// The view has disappeared.
  virtual void launchScreenControllerDidDismiss(
      const Strong<LaunchScreenViewController>& /*controller*/) {}

  template <class Adopter>
  using Optional = Operations<&Adopter::launchScreenControllerWillPresent,
                              &Adopter::canLaunchScreenControllerDismiss,
                              &Adopter::launchScreenControllerDidDismiss>;
};

/// The delegate list of a launch screen's view controller.
class VEL_EXPORT LaunchScreenViewControllerProtocol : public virtual NSObjectProtocol {
 public:
  virtual void addDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) = 0;
  virtual void removeDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) = 0;
  /// Removes all delegates.
  virtual void deactivate() = 0;
};

/// A view controller that LaunchScreenContent can present. A controller that a host supplies must
/// adopt this protocol and LaunchScreenViewControllerProtocol.
class VEL_EXPORT LaunchScreenPresenter : public virtual NSObjectProtocol {
 public:
  virtual void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                                    LaunchScreenPresentationMode mode) = 0;
  /// Removes the launch screen without asking the delegates.
  virtual void dismiss() = 0;
};

/// Covers the window of the host with a white view, the cover. Overrides and restores the style of
/// the window, and notifies its delegates of presentation and dismissal.
///
/// The controller owns its delegates. One delegate is the content, which owns the controller.
/// `deactivate` breaks this reference cycle. Only the main thread may use this class. Exception:
/// any thread may call the accessors of `activityIndicator`, `appWindow` and `appWindowStyleMask`.
class VEL_EXPORT LaunchScreenViewController final
    : public Class<LaunchScreenViewController, "LaunchScreenViewController", NSViewController,
                   LaunchScreenViewControllerProtocol, LaunchScreenPresenter> {
 public:
  using Delegates = vel::NSMutableArray<LaunchScreenViewControllerDelegate>;

  using Class::Class;
  ~LaunchScreenViewController() override;

  /// Creates a controller. Returns null if the `expirationTimeInterval` of the default
  /// configuration is 0 or negative.
  static Strong<LaunchScreenViewController> init();

  // LaunchScreenViewControllerProtocol. The controller notifies delegates in the order in which
  // they were added. Adding or removing a delegate during a notification raises
  // NSCollectionMutatedError.
  void addDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) override;
  void removeDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) override;
  void deactivate() override;

  // NSViewController
  void viewDidLoad() override;
  void viewWillAppear() override;
  void viewDidAppear() override;
  void viewWillDisappear() override;
  void viewDidDisappear() override;

  /// Presents the controller over `window`, which may be null.
  void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                            LaunchScreenPresentationMode mode) override;
  /// In embedded mode, overrides the style of the host window. In modal mode, sets the style of the
  /// modal window.
  void setupPresentation();
  /// In embedded mode, restores the style of the host window.
  void restorePresentation();
  /// Removes the cover without asking the delegates.
  void dismiss() override;
  /// Dismisses the controller if every delegate agrees. Asks all delegates, even after one delegate
  /// has refused.
  void dismissViewController(const Strong<NSViewController>& controller) override;

  // The activity indicator. The library never calls the next two operations. A host that wants an
  // indicator calls them in this order after the view has been loaded.
  /// Adds a new spinning indicator to the view and stores the indicator in `activityIndicator`.
  /// Does not remove a previous indicator from the view.
  void createActivityIndicator();
  /// Centres the indicator and makes it 32 points high. Does nothing if there is no indicator.
  void createConstraintsActivityIndicator();

  [[nodiscard]] LaunchScreenPresentationMode presentationMode() const { return presentationMode_; }
  void setPresentationMode(LaunchScreenPresentationMode mode) { presentationMode_ = mode; }
  [[nodiscard]] Strong<NSProgressIndicator> activityIndicator() const {
    return activityIndicator_.load();
  }
  void setActivityIndicator(Strong<NSProgressIndicator> indicator) {
    activityIndicator_.store(std::move(indicator));
  }
  /// Null until the first delegate is added.
  [[nodiscard]] Strong<Delegates> delegates() const { return delegates_; }
  void setDelegates(Strong<Delegates> delegates) { delegates_ = std::move(delegates); }
  /// The host window whose style the controller overrides in embedded mode.
  [[nodiscard]] Strong<NSWindow> appWindow() const { return appWindow_.load(); }
  void setAppWindow(Strong<NSWindow> window) { appWindow_.store(std::move(window)); }
  /// The style of the host window before the controller overrode it. All bits are set if no style
  /// has been saved.
  [[nodiscard]] NSWindowStyleMask appWindowStyleMask() const { return appWindowStyleMask_; }
  void setAppWindowStyleMask(NSWindowStyleMask mask) { appWindowStyleMask_ = mask; }

 private:
  // Calls `Operation` of every delegate that implements it.
  template <auto Operation>
  void notifyDelegates();

  LaunchScreenPresentationMode presentationMode_ = LaunchScreenPresentationEmbedded;
  AtomicReference<NSProgressIndicator> activityIndicator_;
  Strong<Delegates> delegates_;
  AtomicReference<NSWindow> appWindow_;
  std::atomic<NSWindowStyleMask> appWindowStyleMask_ = ~NSWindowStyleMask{0};
};

}  // namespace vel
