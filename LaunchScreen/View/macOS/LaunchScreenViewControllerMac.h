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

/// How the controller is shown. Any other value presents nothing.
using LaunchScreenPresentationMode = std::int32_t;

/// As a subview that fills the host window, whose style is taken over meanwhile.
inline constexpr LaunchScreenPresentationMode LaunchScreenPresentationEmbedded = 0;
inline constexpr LaunchScreenPresentationMode LaunchScreenPresentationModalWindow = 1;
inline constexpr LaunchScreenPresentationMode LaunchScreenPresentationSheet = 2;

/// Hears from the launch screen's controller. Each operation is sent only to a delegate that has
/// it.
class VEL_EXPORT LaunchScreenViewControllerDelegate
    : public Protocol<LaunchScreenViewControllerDelegate> {
 public:
  /// The view is about to appear.
  virtual void launchScreenControllerWillPresent(
      const Strong<LaunchScreenViewController>& /*controller*/) {}
  /// Whether the controller may dismiss now; one no is enough to keep it.
  virtual bool canLaunchScreenControllerDismiss(
      const Strong<LaunchScreenViewController>& /*controller*/) {
    return false;
  }
  /// The view has gone.
  virtual void launchScreenControllerDidDismiss(
      const Strong<LaunchScreenViewController>& /*controller*/) {}

  template <class Adopter>
  using Optional = Operations<&Adopter::launchScreenControllerWillPresent,
                              &Adopter::canLaunchScreenControllerDismiss,
                              &Adopter::launchScreenControllerDidDismiss>;
};

/// What a launch screen's controller offers, whoever makes it.
class VEL_EXPORT LaunchScreenViewControllerProtocol : public virtual NSObjectProtocol {
 public:
  virtual void addDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) = 0;
  virtual void removeDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) = 0;
  /// Forgets all delegates.
  virtual void deactivate() = 0;
};

/// What a controller needs besides to be presented by the content; a host that configures a
/// controller of its own adopts both.
class VEL_EXPORT LaunchScreenPresenter : public virtual NSObjectProtocol {
 public:
  virtual void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                                    LaunchScreenPresentationMode mode) = 0;
  virtual void dismiss() = 0;
};

/// The controller that covers the host's window: it lays a white view over it, takes the window's
/// style over and gives it back, and tells its delegates of presentation and dismissal.
///
/// It keeps its delegates alive, the content among them, which in turn keeps the controller:
/// `deactivate` breaks that circle. Main thread.
class VEL_EXPORT LaunchScreenViewController final
    : public Class<LaunchScreenViewController, "LaunchScreenViewController", NSViewController,
                   LaunchScreenViewControllerProtocol, LaunchScreenPresenter> {
 public:
  using Delegates = NSMutableArray<LaunchScreenViewControllerDelegate>;

  using Class::Class;
  ~LaunchScreenViewController() override;

  /// A new controller; none while the default configuration allows no time.
  static Strong<LaunchScreenViewController> init();

  // The delegates, told in the order in which they were added. Changing them from inside a callback
  // raises NSCollectionMutatedError.
  void addDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) override;
  void removeDelegate(const Strong<LaunchScreenViewControllerDelegate>& delegate) override;
  void deactivate() override;

  // Life on screen.
  void viewDidLoad() override;
  void viewWillAppear() override;
  void viewDidAppear() override;
  void viewWillDisappear() override;
  void viewDidDisappear() override;

  /// Covers `window`, which may be none, in the given mode.
  void presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                            LaunchScreenPresentationMode mode) override;
  /// Takes the host window's style over (embedded), or prepares the modal window.
  void setupPresentation();
  /// Gives the host window's style back (embedded).
  void restorePresentation();
  /// Takes the cover down without asking anybody.
  void dismiss() override;
  /// Dismisses if every delegate agrees; all of them are asked.
  void dismissViewController(const Strong<NSViewController>& controller) override;

  // The indicator. The library never calls these two: a host that wants one does, in this order,
  // once the view exists.
  /// Adds a new spinning indicator to the view, in place of the one in `activityIndicator`.
  void createActivityIndicator();
  /// Centres it, 32 points high. Without an indicator nothing happens.
  void createConstraintsActivityIndicator();

  [[nodiscard]] LaunchScreenPresentationMode presentationMode() const { return presentationMode_; }
  void setPresentationMode(LaunchScreenPresentationMode mode) { presentationMode_ = mode; }
  [[nodiscard]] Strong<NSProgressIndicator> activityIndicator() const {
    return activityIndicator_.load();
  }
  void setActivityIndicator(Strong<NSProgressIndicator> indicator) {
    activityIndicator_.store(std::move(indicator));
  }
  /// None until the first delegate is added.
  [[nodiscard]] Strong<Delegates> delegates() const { return delegates_; }
  void setDelegates(Strong<Delegates> delegates) { delegates_ = std::move(delegates); }
  /// The host window whose style is taken over, or is about to be.
  [[nodiscard]] Strong<NSWindow> appWindow() const { return appWindow_.load(); }
  void setAppWindow(Strong<NSWindow> window) { appWindow_.store(std::move(window)); }
  /// The host window's style as it was; all bits set when none is saved.
  [[nodiscard]] NSWindowStyleMask appWindowStyleMask() const { return appWindowStyleMask_; }
  void setAppWindowStyleMask(NSWindowStyleMask mask) { appWindowStyleMask_ = mask; }

 private:
  // Tells every delegate that has the operation, in place.
  template <auto Operation>
  void tellDelegates();

  LaunchScreenPresentationMode presentationMode_ = LaunchScreenPresentationEmbedded;
  AtomicReference<NSProgressIndicator> activityIndicator_;
  Strong<Delegates> delegates_;
  AtomicReference<NSWindow> appWindow_;
  std::atomic<NSWindowStyleMask> appWindowStyleMask_ = ~NSWindowStyleMask{0};
};

}  // namespace vel
