// Sends life-cycle steps to the controllers of a part of a window.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSViewController.h"

namespace vel {

/// One showing of a controller. It ends when the view leaves the screen. The number distinguishes
/// it from later showings of the same controller.
struct Showing {
  Strong<NSViewController> controller;
  std::uint64_t number = 0;
};

/// The appearance of the controllers of a view and its subviews, outer before inner. The caller
/// changes the view hierarchy first and then sends the two steps. A controller that a step removes
/// from the screen receives no further step.
class Appearance {
 public:
  /// Begins a showing for each controller that is not shown yet.
  explicit Appearance(const Strong<NSView>& view);
  void willAppear();
  void didAppear();

 private:
  std::vector<Showing> showings_;
};

/// The disappearance of the controllers of a view and its subviews. The caller sends
/// `willDisappear` while the view is in place, then changes the view hierarchy, then sends
/// `didDisappear`. A controller that appears during `willDisappear` disappears too.
class Disappearance {
 public:
  explicit Disappearance(Strong<NSView> view) : view_(std::move(view)) {}
  void willDisappear();
  /// Ends the showings.
  void didDisappear();

 private:
  // Adds the showings of controllers that have appeared since the last call.
  void addNewShowings();

  Strong<NSView> view_;
  std::vector<Showing> showings_;
};

}  // namespace vel
