#include "Host/Show/MovingSquareView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSRunLoop.h"

namespace vel::host {

namespace {

constexpr double kFramesPerSecond = 30;
constexpr double kPeriod = 4;  // seconds from one side to the other and back
constexpr CGColor kBackgroundColor{0.09, 0.13, 0.24, 1};
constexpr CGColor kSquareColor{0.96, 0.64, 0.18, 1};

SceneItem fillItem(CGRect frame, CGColor color) {
  return {.kind = SceneItem::Kind::Fill, .frame = frame, .color = color};
}

}  // namespace

Strong<MovingSquareView> MovingSquareView::startIn(const Strong<NSWindow>& window) {
  auto squareView = make<MovingSquareView>();
  const Strong<NSView> content = window->contentView();
  squareView->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
  squareView->setFrame(content->bounds());
  content->addSubview(squareView);
  squareView->timer_ = NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<
      &MovingSquareView::drawNextFrame>(1 / kFramesPerSecond, squareView, true);
  // A modal launch screen runs the run loop in this mode.
  NSRunLoop::mainRunLoop().addTimerForMode(squareView->timer_, NSModalPanelRunLoopMode);
  return squareView;
}

void MovingSquareView::stop() {
  send(std::exchange(timer_, nullptr), &NSTimer::invalidate);
  removeFromSuperview();
}

void MovingSquareView::drawNextFrame() { setNeedsDisplay(); }

void MovingSquareView::addOwnContents(Scene& scene, CGRect rectangle) const {
  scene.push_back(fillItem(rectangle, kBackgroundColor));
  const double time = secondsFromNanoseconds(NSRunLoop::mainRunLoop().now());
  // 0 at the left side of the view, 1 at the right side.
  const double position = std::abs(std::fmod(time / kPeriod, 1.0) * 2 - 1);
  const CGSize size = rectangle.size;
  const double side = std::min(size.width, size.height) / 3;
  scene.push_back(fillItem(CGRectMake(rectangle.origin.x + (size.width - side) * position,
                                      rectangle.origin.y + (size.height - side) / 2, side, side),
                           kSquareColor));
}

}  // namespace vel::host
