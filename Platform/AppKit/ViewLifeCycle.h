// Calls `viewWillAppear` and the other life-cycle methods of the view controllers in a view
// hierarchy.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSViewController.h"

namespace vel {

/// A period during which a controller is shown. Each period of a controller has its own id.
struct Appearance {
  Strong<NSViewController> controller;
  std::uint64_t id = 0;
};

/// Calls `viewWillAppear` and `viewDidAppear` of the controllers of a view and its subviews, outer
/// controllers first. The caller opens the view's window or adds the view to an open window, then
/// creates this object, then calls `sendWillAppear` and `sendDidAppear`. A life-cycle method may
/// end a controller's appearance, for example by removing the controller's view. The controller's
/// remaining methods are then not called.
class AppearanceTransition {
 public:
  /// Begins an appearance for each controller that has no current appearance.
  explicit AppearanceTransition(const Strong<NSView>& view);
  void sendWillAppear();
  void sendDidAppear();

 private:
  std::vector<Appearance> appearances_;
};

/// Calls `viewWillDisappear` and `viewDidDisappear` of the controllers of a view and its subviews,
/// outer controllers first. The caller first calls `sendWillDisappear`, then closes the window or
/// removes the view, then calls `sendDidDisappear`.
/// `viewWillDisappear` and `viewDidDisappear` are also called for a controller that begins to
/// appear during `sendWillDisappear`.
class DisappearanceTransition {
 public:
  explicit DisappearanceTransition(Strong<NSView> view) : view_(std::move(view)) {}
  void sendWillDisappear();
  /// Ends each controller's appearance, then calls the controller's `viewDidDisappear`.
  void sendDidDisappear();

 private:
  // Adds the appearances of the controllers that are shown and are not in `appearances_` yet.
  void addShownControllers();

  Strong<NSView> view_;
  std::vector<Appearance> appearances_;
};

}  // namespace vel
