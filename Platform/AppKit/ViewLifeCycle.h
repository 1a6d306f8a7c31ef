// How the controllers of a part of a window come on screen and go.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSViewController.h"

namespace vel {

/// One showing of a controller, which ends when the view leaves the screen and is not taken for a
/// later one.
struct Showing {
  Strong<NSViewController> controller;
  std::uint64_t number = 0;
};

/// The controllers of a view and its subviews coming on screen, outer before inner. Whoever brings
/// that about makes the change, then asks for the two steps. A controller that a step has taken off
/// the screen again hears no more.
class Appearance {
 public:
  /// A showing begins for each controller that is not shown yet.
  explicit Appearance(const Strong<NSView>& view);
  void willAppear();
  void didAppear();

 private:
  std::vector<Showing> showings_;
};

/// The same for going: `willDisappear` while the view is in place, then the change, then
/// `didDisappear`. Controllers that come on screen in a step of the others go with them.
class Disappearance {
 public:
  explicit Disappearance(Strong<NSView> view) : view_(std::move(view)) {}
  void willDisappear();
  /// The showings end.
  void didDisappear();

 private:
  void addNew();

  Strong<NSView> view_;
  std::vector<Showing> showings_;
};

}  // namespace vel
