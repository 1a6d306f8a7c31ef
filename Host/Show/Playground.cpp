#include "Host/Show/Playground.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSRunLoop.h"

namespace vel::host {

namespace {

constexpr double kFramesPerSecond = 30;
constexpr double kPeriod = 4;
constexpr CGColor kBackground{0.09, 0.13, 0.24, 1};
constexpr CGColor kSquare{0.96, 0.64, 0.18, 1};

SceneItem filled(CGRect frame, CGColor color) {
  return {.kind = SceneItem::Kind::Fill, .frame = frame, .color = color};
}

}  // namespace

Strong<Playground> Playground::startIn(const Strong<NSWindow>& window) {
  auto playground = make<Playground>();
  const Strong<NSView> content = window->contentView();
  playground->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
  playground->setFrame(content->bounds());
  content->addSubview(playground);
  playground->timer_ =
      NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Playground::drawNextFrame>(
          1 / kFramesPerSecond, playground, true);
  NSRunLoop::mainRunLoop().addTimerForMode(playground->timer_, NSModalPanelRunLoopMode);
  return playground;
}

void Playground::stop() {
  send(std::exchange(timer_, nullptr), &NSTimer::invalidate);
  removeFromSuperview();
}

void Playground::drawNextFrame() { setNeedsDisplay(); }

void Playground::addOwnContents(Scene& scene, CGRect rectangle) const {
  scene.push_back(filled(rectangle, kBackground));
  const double time = secondsFromNanoseconds(NSRunLoop::mainRunLoop().now());
  const double position = std::abs(std::fmod(time / kPeriod, 1.0) * 2 - 1);
  const CGSize size = rectangle.size;
  const double side = std::min(size.width, size.height) / 3;
  scene.push_back(filled(CGRectMake(rectangle.origin.x + (size.width - side) * position,
                                    rectangle.origin.y + (size.height - side) / 2, side, side),
                         kSquare));
}

}  // namespace vel::host
