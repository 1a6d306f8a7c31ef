#include "Platform/WindowSystem/Cocoa/Cover.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

// The view of a cover. Its owner is the `Cover`, which clears `cover` before it releases the view.
@interface VelCoverView : NSView {
 @public
  vel::cocoa::Cover* cover;
  BOOL isOpaqueScene;
 @private
  NSPoint pressLocation_;  // in the window, at the start of a drag
  BOOL isDragging_;
}
@end

@implementation VelCoverView

- (void)drawRect:(NSRect)dirtyRect {
  if (cover != nullptr) {
    cover->draw([self bounds]);
  }
}

- (BOOL)isOpaque {
  return isOpaqueScene;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}

- (void)mouseDown:(NSEvent*)event {
  isDragging_ = cover != nullptr && cover->isMovableByBackground();
  pressLocation_ = [event locationInWindow];
}

- (void)mouseDragged:(NSEvent*)event {
  if (isDragging_) {
    const NSPoint location = [event locationInWindow];
    NSPoint origin = [[self window] frame].origin;
    origin.x += location.x - pressLocation_.x;
    origin.y += location.y - pressLocation_.y;
    [[self window] setFrameOrigin:origin];
  }
}

// NSView passes these events on to the views below, so the cover must implement the methods.
- (void)mouseUp:(NSEvent*)event {
}
- (void)mouseMoved:(NSEvent*)event {
}
- (void)rightMouseDown:(NSEvent*)event {
}
- (void)rightMouseDragged:(NSEvent*)event {
}
- (void)rightMouseUp:(NSEvent*)event {
}
- (void)otherMouseDown:(NSEvent*)event {
}
- (void)otherMouseDragged:(NSEvent*)event {
}
- (void)otherMouseUp:(NSEvent*)event {
}
- (void)scrollWheel:(NSEvent*)event {
}

@end

namespace vel::cocoa {

namespace {

constexpr unsigned kSpokes = 12;
// The darkest spoke goes round once per second.
constexpr Nanoseconds kFrameInterval = kNanosecondsPerSecond / kSpokes;

// The shape of a spinner, in fractions of its side. The spokes are black, and their opacity
// makes the shades.
constexpr double kOuterRadius = 0.5;
constexpr double kInnerRadius = 0.24;
constexpr double kSpokeWidth = 0.09;
constexpr double kTipWidth = 0.05;
constexpr double kTipLength = 0.02;
constexpr double kDarkest = 0.72;
constexpr double kLightest = 0.14;

void drawSpoke(CGRect frame, unsigned spoke, double opacity) {
  struct Corner {
    double radius;
    double halfWidth;
  };
  constexpr std::array<Corner, 8> kOutline{{{kInnerRadius, -kTipWidth / 2},
                                            {kInnerRadius + kTipLength, -kSpokeWidth / 2},
                                            {kOuterRadius - kTipLength, -kSpokeWidth / 2},
                                            {kOuterRadius, -kTipWidth / 2},
                                            {kOuterRadius, kTipWidth / 2},
                                            {kOuterRadius - kTipLength, kSpokeWidth / 2},
                                            {kInnerRadius + kTipLength, kSpokeWidth / 2},
                                            {kInnerRadius, kTipWidth / 2}}};
  const double angle = 2 * std::numbers::pi * spoke / kSpokes;
  const double outwardsX = std::sin(angle);
  const double outwardsY = std::cos(angle);
  const double side = std::min(frame.size.width, frame.size.height);
  const double middleX = frame.origin.x + frame.size.width / 2;
  const double middleY = frame.origin.y + frame.size.height / 2;
  NSBezierPath* const path = [NSBezierPath bezierPath];
  for (const Corner& corner : kOutline) {
    const NSPoint point =
        NSMakePoint(middleX + side * (corner.radius * outwardsX + corner.halfWidth * outwardsY),
                    middleY + side * (corner.radius * outwardsY - corner.halfWidth * outwardsX));
    if ([path isEmpty]) {
      [path moveToPoint:point];
    } else {
      [path lineToPoint:point];
    }
  }
  [path closePath];
  [[NSColor colorWithDeviceRed:0 green:0 blue:0 alpha:opacity] set];
  [path fill];
}

void drawSpinner(CGRect frame, unsigned position) {
  for (unsigned spoke = 0; spoke < kSpokes; ++spoke) {
    const unsigned shade = (position + kSpokes - spoke) % kSpokes;
    drawSpoke(frame, spoke, kDarkest + (kLightest - kDarkest) * shade / (kSpokes - 1));
  }
}

bool isFillOf(const SceneItem& item, CGSize size) {
  return item.kind == SceneItem::Kind::Fill && item.frame.origin.x <= 0 &&
         item.frame.origin.y <= 0 && item.frame.origin.x + item.frame.size.width >= size.width &&
         item.frame.origin.y + item.frame.size.height >= size.height;
}

}  // namespace

void Cover::show(const Scene& scene, CGSize size) {
  scene_ = scene;
  contentSize_ = size;
  update();
  if (view_ != nil) {
    [view_ display];
  } else {
    [[window_ contentView] displayIfNeeded];
  }
  [window_ flushWindow];
}

void Cover::setShielded(bool isShielded) {
  isShielded_ = isShielded;
  update();
}

void Cover::update() {
  if (!isNeeded()) {
    remove();
    return;
  }
  repair();
  if (view_ != nil) {
    view_->isOpaqueScene = isOpaque() ? YES : NO;
    [view_ setNeedsDisplay:YES];
  }
}

void Cover::attach(NSView* content) {
  if (content == nil) {
    return;
  }
  view_ = [[VelCoverView alloc] initWithFrame:[content bounds]];
  view_->cover = this;
  view_->isOpaqueScene = isOpaque() ? YES : NO;
  [view_ setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
  [content addSubview:view_ positioned:NSWindowAbove relativeTo:nil];
}

// The superview may not resize its subviews, and its coordinates may not be points of the window.
// The coordinates of the view are points, because scenes are in points.
void Cover::fitToSuperview() {
  NSView* const superview = [view_ superview];
  if (superview == nil) {
    return;
  }
  const NSRect frame = [superview bounds];
  if (!NSEqualRects([view_ frame], frame)) {
    [view_ setFrame:frame];
    [view_ setNeedsDisplay:YES];
  }
  const NSSize points = [superview convertRect:frame toView:nil].size;
  const NSSize size = [view_ bounds].size;
  constexpr double kTolerance = 0.5;
  if (std::abs(points.width - size.width) > kTolerance ||
      std::abs(points.height - size.height) > kTolerance) {
    [view_ setBounds:NSMakeRect(0, 0, points.width, points.height)];
    [view_ setNeedsDisplay:YES];
  }
}

void Cover::remove() {
  if (view_ == nil) {
    return;
  }
  view_->cover = nullptr;
  [[view_ superview] setNeedsDisplay:YES];
  [view_ removeFromSuperview];
  [view_ release];
  view_ = nil;
}

// A content view such as NSBox adds the view to one of its subviews.
void Cover::repair() {
  if (!isNeeded()) {
    return;
  }
  NSView* const content = [window_ contentView];
  if (view_ == nil || ![view_ isDescendantOf:content]) {
    remove();
    attach(content);
  } else if (NSView* const superview = [view_ superview];
                 [[superview subviews] lastObject] != view_) {
    [superview addSubview:view_ positioned:NSWindowAbove relativeTo:nil];
  }
  fitToSuperview();
}

bool Cover::isOpaque() const {
  return !scene_.empty() && scene_.front().color.alpha >= 1 &&
         isFillOf(scene_.front(), contentSize_);
}

bool Cover::isAnimated() const {
  return view_ != nil && std::ranges::any_of(scene_, &SceneItem::isAnimated);
}

Nanoseconds Cover::deadline() const { return isAnimated() ? nextFrameTime_ : kNever; }

void Cover::advance(Nanoseconds now) {
  if (!isAnimated() || now < nextFrameTime_) {
    return;
  }
  nextFrameTime_ = now + kFrameInterval;
  position_ = (position_ + 1) % kSpokes;
  [view_ display];
  [window_ flushWindow];
}

void Cover::draw(NSRect bounds) const {
  for (const SceneItem& item : scene_) {
    if (item.kind == SceneItem::Kind::Spinner) {
      drawSpinner(item.frame, position_);
      continue;
    }
    [[NSColor colorWithDeviceRed:item.color.red
                           green:item.color.green
                            blue:item.color.blue
                           alpha:item.color.alpha] set];
    // A scene fits the size of the content at the time of `show`. If the content has grown since, a
    // fill of the whole content also fills the new area.
    const NSRect frame = isFillOf(item, contentSize_)
                             ? bounds
                             : NSMakeRect(item.frame.origin.x, item.frame.origin.y,
                                          item.frame.size.width, item.frame.size.height);
    [NSBezierPath fillRect:frame];
  }
}

}  // namespace vel::cocoa
