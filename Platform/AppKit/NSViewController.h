#pragma once

#include <bitset>
#include <cstdint>
#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSArray.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/PlatformObserver.h"

namespace vel {

class NSView;
class NSWindow;

/// Runs a view: makes it when first asked, follows it on and off the screen, has child controllers,
/// and can be presented as a modal window or as a sheet. Main thread.
///
/// A controller is shown while its view is in an open window. What brings that about sends
/// `viewWillAppear` and `viewDidAppear`; what ends it, `viewWillDisappear` and `viewDidDisappear`,
/// each at most once per showing. A subclass that overrides a step runs the base class's first:
/// that is the one that counts.
class VEL_EXPORT NSViewController : public Class<NSViewController, "NSViewController"> {
 public:
  explicit NSViewController(Strong<NSBundle> bundle = nullptr) : bundle_(std::move(bundle)) {}
  ~NSViewController() override;

  /// A plain controller. Off macOS there are no interface files, so it never has a name of one.
  static Strong<NSViewController> initWithNibNameBundle(std::string_view nibName,
                                                        Strong<NSBundle> bundle);

  [[nodiscard]] Strong<NSBundle> nibBundle() const { return bundle_; }

  /// The view, made by `loadView` when there is none yet.
  [[nodiscard]] Strong<NSView> view();
  void setView(Strong<NSView> view);
  [[nodiscard]] bool isViewLoaded() const { return view_ != nullptr; }

  /// Makes the view: a plain, empty one.
  virtual void loadView();
  virtual void viewDidLoad() {}
  virtual void viewWillAppear();
  virtual void viewDidAppear();
  virtual void viewWillDisappear();
  virtual void viewDidDisappear();

  /// Adds a child, taking it from its former parent. A child already, none, or the controller
  /// itself: nothing changes. Its view is placed by whoever adds it.
  void addChildViewController(const Strong<NSViewController>& child);
  void removeFromParentViewController();
  [[nodiscard]] NSArray<NSViewController> childViewControllers() const { return children_; }
  [[nodiscard]] Strong<NSViewController> parentViewController() const { return parent_.lock(); }

  /// Shows `controller` in a window of its own, run modally, and returns at once. A controller that
  /// is presented already is left alone. A controller may present itself.
  void presentViewControllerAsModalWindow(const Strong<NSViewController>& controller);
  /// Shows `controller` in a sheet of the window that shows this controller's view; where there is
  /// no such window, nothing happens.
  void presentViewControllerAsSheet(const Strong<NSViewController>& controller);
  /// Takes down the presentation of `controller`, whoever presents it; one that is not presented is
  /// left alone.
  virtual void dismissViewController(const Strong<NSViewController>& controller);

  /// Those that this controller presents, itself left out, in the order of presentation.
  [[nodiscard]] NSArray<NSViewController> presentedViewControllers() const { return presented_; }
  /// Who presents this controller (itself, where it was asked to present itself); none otherwise.
  [[nodiscard]] Strong<NSViewController> presentingViewController() const {
    return presenting_.lock();
  }

  /// Whether a showing is under way.
  [[nodiscard]] bool isShown() const { return shown_; }
  /// Whether the step has run in this showing, or the last one.
  [[nodiscard]] bool hasRun(LifeCycleStep step) const {
    return stepsRun_.test(static_cast<std::size_t>(step));
  }

 private:
  friend class Appearance;
  friend class Disappearance;
  friend class NSWindow;

  // Answers the showing's number.
  std::uint64_t beginShowing();
  // Sends the step unless it has run in that showing, or the showing is over.
  void sendStep(LifeCycleStep step, std::uint64_t showing);
  void stepRuns(LifeCycleStep step);
  // The links of a presentation in `window`, set and cut.
  void presentIn(const Strong<NSWindow>& window, const Strong<NSViewController>& controller);
  void presentationEnded();

  Strong<NSBundle> bundle_;
  Strong<NSView> view_;
  NSArray<NSViewController> children_;
  Weak<NSViewController> parent_;
  NSArray<NSViewController> presented_;
  Weak<NSViewController> presenting_;
  Weak<NSWindow> presentationWindow_;
  bool shown_ = false;
  std::uint64_t showing_ = 0;
  std::bitset<4> stepsRun_;
};

}  // namespace vel
