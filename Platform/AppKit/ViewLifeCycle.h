// Calls the life-cycle methods, such as `viewWillAppear`, of the view controllers in a view
// hierarchy.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSViewController.h"

namespace vel {

/// A period during which a controller is shown. The id distinguishes the periods of one controller.
struct Appearance {
  Strong<NSViewController> controller;
  std::uint64_t id = 0;
};

/// Makes the controllers of a view and its subviews appear, outer controllers first. The caller
/// first opens the view's window or adds the view to an open window. The caller then constructs
/// this object and calls `sendWillAppear` and `sendDidAppear`. A life-cycle method may end a
/// controller's appearance, for example by removing the controller's view. This object then calls
/// no further method of that controller.
class AppearanceTransition {
 public:
  /// Begins an appearance for each controller that is not shown yet.
  explicit AppearanceTransition(const Strong<NSView>& view);
  void sendWillAppear();
  void sendDidAppear();

 private:
  std::vector<Appearance> appearances_;
};

/// Makes the controllers of a view and its subviews disappear, outer controllers first. The caller
/// first calls `sendWillDisappear`, then closes the window or removes the view, then calls
/// `sendDidDisappear`. A controller that appears during `sendWillDisappear` also disappears.
class DisappearanceTransition {
 public:
  explicit DisappearanceTransition(Strong<NSView> view) : view_(std::move(view)) {}
  void sendWillDisappear();
  /// Ends the appearances of the disappearing controllers and calls their `viewDidDisappear`.
  void sendDidDisappear();

 private:
  // Adds the appearances of the controllers that are shown and are not in `appearances_` yet.
  void addShownControllers();

  Strong<NSView> view_;
  std::vector<Appearance> appearances_;
};

}  // namespace vel
