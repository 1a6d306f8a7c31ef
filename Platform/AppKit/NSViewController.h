#pragma once

#include <bitset>
#include <cstdint>
#include <string_view>

#include "Platform/AppKit/PlatformObserver.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSArray.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

class NSView;
class NSWindow;

/// Controls a view: creates the view on first use and is notified when the view appears and
/// disappears. A controller can have child controllers, and can be presented as a modal window or
/// as a sheet. Only the main thread may use a controller.
///
/// A controller is shown while its view is in an open window. One such period is called an
/// appearance. It begins with `viewWillAppear` and `viewDidAppear`, and ends with
/// `viewWillDisappear` and `viewDidDisappear`. The platform layer calls each of these four
/// life-cycle methods at most once per appearance. An override of a life-cycle method must first
/// call the method of the base class, which records the call.
class VEL_EXPORT NSViewController : public Class<NSViewController, "NSViewController"> {
 public:
  explicit NSViewController(Strong<NSBundle> bundle = nullptr) : bundle_(std::move(bundle)) {}
  ~NSViewController() override;

  /// Ignores `nibName`, because this platform layer cannot load nib files.
  static Strong<NSViewController> initWithNibNameBundle(std::string_view nibName,
                                                        Strong<NSBundle> bundle);

  [[nodiscard]] Strong<NSBundle> nibBundle() const { return bundle_; }

  /// The view. Calls `loadView` and then `viewDidLoad` if the controller has no view.
  [[nodiscard]] Strong<NSView> view();
  void setView(Strong<NSView> view);
  [[nodiscard]] bool isViewLoaded() const { return view_ != nullptr; }

  /// Creates an empty view and sets it with `setView`.
  virtual void loadView();
  virtual void viewDidLoad() {}
  virtual void viewWillAppear();
  virtual void viewDidAppear();
  virtual void viewWillDisappear();
  virtual void viewDidDisappear();

  /// Removes `child` from its previous parent and makes `child` a child of this controller. Does
  /// nothing if `child` is null, this controller itself or already a child of this controller. Does
  /// not change the view hierarchy.
  void addChildViewController(const Strong<NSViewController>& child);
  void removeFromParentViewController();
  [[nodiscard]] NSArray<NSViewController> childViewControllers() const { return children_; }
  [[nodiscard]] Strong<NSViewController> parentViewController() const { return parent_.lock(); }

  /// Shows `controller` in a new window, begins a modal session of that window and returns
  /// immediately. Does nothing if `controller` is null or already presented. A controller may
  /// present itself.
  void presentViewControllerAsModalWindow(const Strong<NSViewController>& controller);
  /// Shows `controller` in a sheet of the window that contains this controller's view. Does nothing
  /// if this view is not in an open window. Does nothing if `controller` is null or already
  /// presented.
  void presentViewControllerAsSheet(const Strong<NSViewController>& controller);
  /// Ends the presentation of `controller`, even if another controller presents it. Does nothing
  /// if `controller` is null or not presented.
  virtual void dismissViewController(const Strong<NSViewController>& controller);

  /// The controllers that this controller presents, except itself, in the order of presentation.
  [[nodiscard]] NSArray<NSViewController> presentedViewControllers() const {
    return presentedControllers_;
  }
  /// The controller that presents this controller. May be this controller itself. Null if this
  /// controller is not presented.
  [[nodiscard]] Strong<NSViewController> presentingViewController() const {
    return presentingController_.lock();
  }

  /// True during an appearance.
  [[nodiscard]] bool isShown() const { return isShown_; }
  /// True if `method` has been called since the most recent appearance began.
  [[nodiscard]] bool wasCalled(LifeCycleMethod method) const {
    return calledMethods_.test(static_cast<std::size_t>(method));
  }

 private:
  friend class AppearanceTransition;
  friend class DisappearanceTransition;
  friend class NSWindow;

  // Begins an appearance and returns its id.
  std::uint64_t beginAppearance();
  // Calls `method` at most once in the appearance with the id `appearanceId`. Does nothing after
  // this appearance has ended.
  void callMethodOncePerAppearance(LifeCycleMethod method, std::uint64_t appearanceId);
  // Records a call of a life-cycle method and reports the call to the platform observer.
  void recordCall(LifeCycleMethod method);
  // Makes `presentedController` the content view controller of `window`, and makes this controller
  // the presenting controller of `presentedController`.
  void presentIn(const Strong<NSWindow>& window,
                 const Strong<NSViewController>& presentedController);
  // Undoes the changes that `presentIn` has made to this controller and to its presenting
  // controller.
  void endPresentation();

  Strong<NSBundle> bundle_;
  Strong<NSView> view_;
  NSArray<NSViewController> children_;
  Weak<NSViewController> parent_;
  NSArray<NSViewController> presentedControllers_;
  Weak<NSViewController> presentingController_;
  Weak<NSWindow> presentationWindow_;  // the window in which this controller is presented
  bool isShown_ = false;
  std::uint64_t currentAppearanceId_ = 0;
  std::bitset<4> calledMethods_;
};

}  // namespace vel
