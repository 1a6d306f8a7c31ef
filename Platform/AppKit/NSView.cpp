#include "Platform/AppKit/NSView.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/ViewLifeCycle.h"
#include "Platform/Foundation/Message.h"

namespace vel {

namespace {

// The autoresizing of a view on one axis. An axis has three parts: the margin at the minimum
// coordinate, the size of the view and the margin at the maximum coordinate. When the superview
// changes size, the flexible parts share the change equally.
struct AutoresizingAxis {
  bool hasFlexibleMinMargin;
  bool hasFlexibleSize;
  bool hasFlexibleMaxMargin;

  void apply(double change, double& origin, double& length) const {
    const int parts = int{hasFlexibleMinMargin} + int{hasFlexibleSize} + int{hasFlexibleMaxMargin};
    if (parts == 0) {
      return;
    }
    const double share = change / parts;
    origin += hasFlexibleMinMargin ? share : 0;
    length = std::max(0.0, length + (hasFlexibleSize ? share : 0));
  }
};

bool containsBit(NSAutoresizingMaskOptions mask, NSAutoresizingMaskOptions bit) {
  return (mask & bit) != 0;
}

}  // namespace

void CALayer::setBackgroundColor(CGColor color) {
  backgroundColor_ = color;
  if (const Strong<NSView> view = view_.lock()) {
    view->setNeedsDisplay();
  }
}

void NSView::setFrame(CGRect frame) {
  if (frame == frame_) {
    return;
  }
  const CGSize oldSize = frame_.size;
  frame_ = frame;
  if (frame.size != oldSize) {
    resizeSubviews(oldSize);
    layOutSubviews();
  }
  setNeedsDisplay();
}

Strong<NSWindow> NSView::window() const {
  Strong<const NSView> root = std::static_pointer_cast<const NSView>(shared_from_this());
  while (const Strong<NSView> outer = root->superview()) {
    root = outer;
  }
  return root->window_.lock();
}

bool NSView::isDescendantOf(const NSView* other) const {
  Strong<const NSView> view = std::static_pointer_cast<const NSView>(shared_from_this());
  while (view != nullptr && view.get() != other) {
    view = view->superview();
  }
  return view != nullptr;
}

void NSView::addSubview(const Strong<NSView>& view) {
  addSubviewPositionedRelativeTo(view, NSWindowAbove, nullptr);
}

void NSView::addSubviewPositionedRelativeTo(const Strong<NSView>& view,
                                            NSWindowOrderingMode orderingMode,
                                            const Strong<NSView>& other) {
  if (view == nullptr || isDescendantOf(view.get())) {
    return;
  }
  const Strong<NSView> strongSelf = self();
  const Strong<NSWindow> window = this->window();
  // `removeFromSuperview` makes the controllers of `view` disappear. If `view` stays in its window,
  // its controllers must not disappear.
  if (window == nullptr || view->window() != window) {
    view->removeFromSuperview();
  }
  view->detach();
  const auto neighbour = std::ranges::find(subviews_, other);
  auto position = orderingMode == NSWindowBelow ? subviews_.begin() : subviews_.end();
  if (neighbour != subviews_.end()) {
    position = orderingMode == NSWindowBelow ? neighbour : neighbour + 1;
  }
  subviews_.insert(position, view);
  view->superview_ = strongSelf;
  if (window != nullptr && window->isVisible()) {
    AppearanceTransition appearance(view);
    {
      // The window draws `view` at the end of this block, after `viewWillAppear`.
      const NSWindow::DisplayPause pause(window);
      appearance.sendWillAppear();
    }
    appearance.sendDidAppear();
  }
}

void NSView::removeFromSuperview() {
  const Strong<NSView> strongSelf = self();
  const Strong<NSView> superview = this->superview();
  const Strong<NSWindow> window = this->window();
  if (superview == nullptr && window == nullptr) {
    return;
  }
  DisappearanceTransition disappearance(strongSelf);
  disappearance.sendWillDisappear();
  const bool hasWindowChanged = this->window() != window;
  if (this->superview() != superview || (superview == nullptr && hasWindowChanged)) {
    // `viewWillDisappear` has already removed this view, or moved it to another superview or
    // window. Do not remove this view again.
    return;
  }
  if (hasWindowChanged) {
    // `viewWillDisappear` has removed or moved an outer view. The controllers of this view may now
    // be shown in another window. The recursive call makes these controllers disappear.
    return removeFromSuperview();
  }
  detach();
  if (window != nullptr) {
    window->setNeedsDisplay();
  }
  disappearance.sendDidDisappear();
}

// Removes the view from its superview or window and calls no life-cycle method.
void NSView::detach() {
  if (const Strong<NSView> superview = this->superview()) {
    std::erase_if(superview->constraints_, [this](const Strong<NSLayoutConstraint>& constraint) {
      return constraint->firstItem().get() == this || constraint->secondItem().get() == this;
    });
    superview_.reset();
    std::erase(superview->subviews_, self());
  }
  if (const Strong<NSWindow> window = window_.lock()) {
    window_.reset();
    window->clearContentView();
  }
}

void NSView::setWantsLayer(bool needsLayer) {
  if (needsLayer != wantsLayer()) {
    layer_ = needsLayer ? make<CALayer>(self()) : nullptr;
    setNeedsDisplay();
  }
}

NSLayoutXAxisAnchor NSView::centerXAnchor() { return NSLayoutXAxisAnchor(self()); }
NSLayoutYAxisAnchor NSView::centerYAnchor() { return NSLayoutYAxisAnchor(self()); }
NSLayoutDimension NSView::widthAnchor() { return {self(), NSLayoutAttribute::Width}; }
NSLayoutDimension NSView::heightAnchor() { return {self(), NSLayoutAttribute::Height}; }

void NSView::resizeSubviews(CGSize oldSize) {
  const CGSize size = frame_.size;
  for (const Strong<NSView>& view : NSArray<NSView>(subviews_)) {
    if (!view->translatesAutoresizingMask_) {
      continue;  // constraints place this view
    }
    CGRect frame = view->frame_;
    const NSAutoresizingMaskOptions mask = view->autoresizingMask_;
    const AutoresizingAxis horizontal{containsBit(mask, NSViewMinXMargin),
                                      containsBit(mask, NSViewWidthSizable),
                                      containsBit(mask, NSViewMaxXMargin)};
    const AutoresizingAxis vertical{containsBit(mask, NSViewMinYMargin),
                                    containsBit(mask, NSViewHeightSizable),
                                    containsBit(mask, NSViewMaxYMargin)};
    horizontal.apply(size.width - oldSize.width, frame.origin.x, frame.size.width);
    vertical.apply(size.height - oldSize.height, frame.origin.y, frame.size.height);
    view->setFrame(frame);
  }
}

// Applies the width and height constraints in list order. `Equal` sets the length.
// `GreaterThanOrEqual` can only increase the length.
CGSize NSView::constrainedSize(const NSArray<NSLayoutConstraint>& constraints) {
  CGSize size;
  for (const Strong<NSLayoutConstraint>& constraint : constraints) {
    const bool isWidth = constraint->attribute() == NSLayoutAttribute::Width;
    if (!isWidth && constraint->attribute() != NSLayoutAttribute::Height) {
      continue;
    }
    double& length = isWidth ? size.width : size.height;
    length = constraint->relation() == NSLayoutRelation::Equal
                 ? constraint->constant()
                 : std::max(length, constraint->constant());
  }
  return size;
}

// Computes the size before the origin: if constraints fix the centre, the origin depends on the
// size.
void NSView::layOutSubviews() {
  for (const Strong<NSView>& view : NSArray<NSView>(subviews_)) {
    NSArray<NSLayoutConstraint> constraintsOfView;
    std::ranges::copy_if(constraints_, std::back_inserter(constraintsOfView),
                         [&view](const Strong<NSLayoutConstraint>& constraint) {
                           return constraint->firstItem() == view;
                         });
    if (view->translatesAutoresizingMask_ || constraintsOfView.empty()) {
      continue;
    }
    CGRect frame{view->frame_.origin, constrainedSize(constraintsOfView)};
    for (const Strong<NSLayoutConstraint>& constraint : constraintsOfView) {
      const Strong<NSView> other = constraint->secondItem();
      const CGRect referenceFrame = other.get() == this ? bounds() : send(other, &NSView::frame);
      if (constraint->attribute() == NSLayoutAttribute::CenterX) {
        frame.origin.x =
            referenceFrame.origin.x + (referenceFrame.size.width - frame.size.width) / 2;
      } else if (constraint->attribute() == NSLayoutAttribute::CenterY) {
        frame.origin.y =
            referenceFrame.origin.y + (referenceFrame.size.height - frame.size.height) / 2;
      }
    }
    view->setFrame(frame);
  }
}

void NSView::setNeedsDisplay() const {
  if (const Strong<NSWindow> window = this->window()) {
    window->setNeedsDisplay();
  }
}

void NSView::addToScene(Scene& scene, CGPoint origin) const {
  const CGRect rectangle{{origin.x + frame_.origin.x, origin.y + frame_.origin.y}, frame_.size};
  if (layer_ != nullptr && layer_->backgroundColor().alpha > 0) {
    scene.push_back(
        {.kind = SceneItem::Kind::Fill, .frame = rectangle, .color = layer_->backgroundColor()});
  }
  addOwnContents(scene, rectangle);
  for (const Strong<NSView>& view : subviews_) {
    view->addToScene(scene, rectangle.origin);
  }
}

}  // namespace vel
