#include "Platform/WindowSystem/Cocoa/WindowStyle.h"

// The free AppKit of GNUstep does not declare this operation.
@protocol VelStyleMaskSetter
- (void)setStyleMask:(NSUInteger)styleMask;
@end

namespace vel::cocoa {

namespace {

constexpr NSWindowStyleMask kControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;

}  // namespace

WindowStyle::WindowStyle(NSWindow* window)
    : window_(window), ownersMask_([window styleMask]), mask_(ownersMask_) {}

WindowStyle::~WindowStyle() {
  for (const Control& control : controls_) {
    [control.hiddenButton release];
  }
}

bool WindowStyle::updateOwnersMask() {
  const NSWindowStyleMask currentMask = [window_ styleMask];
  if (mask_ != ownersMask_ || currentMask == ownersMask_) {
    return false;
  }
  ownersMask_ = currentMask;
  mask_ = currentMask;
  return true;
}

NSWindowStyleMask WindowStyle::setMask(NSWindowStyleMask mask) {
  mask_ = mask;
  // A window of the free AppKit has no such operation, because its style mask cannot change.
  if ([window_ respondsToSelector:@selector(setStyleMask:)]) {
    id const window = window_;
    id<VelStyleMaskSetter> const setter = window;
    // The owner may have changed the other bits, for example by entering fullscreen.
    const NSWindowStyleMask newMask = ([window_ styleMask] & ~kControls) | (mask & kControls);
    [setter setStyleMask:static_cast<NSUInteger>(newMask)];
    return 0;
  }
  fixSize((ownersMask_ & ~mask & NSWindowStyleMaskResizable) != 0);
  return hideButtons();
}

// Hides the buttons of the excluded controls, and shows the other buttons that it has hidden.
// If the window manager draws the title bar, AppKit has no buttons to hide. Returns the excluded
// close and miniaturise controls that have no button.
NSWindowStyleMask WindowStyle::hideButtons() {
  NSWindowStyleMask remainingControls = 0;
  for (Control& control : controls_) {
    if ((ownersMask_ & ~mask_ & control.bit) == 0) {
      [control.hiddenButton setHidden:NO];
      [control.hiddenButton release];
      control.hiddenButton = nil;
      continue;
    }
    NSButton* const button = buttonOf(control);
    if (button != nil && ![button isHidden]) {
      [control.hiddenButton release];
      control.hiddenButton = [button retain];
      [button setHidden:YES];
    } else if (button == nil && control.bit != NSWindowStyleMaskResizable) {
      remainingControls |= control.bit;
    }
  }
  return remainingControls;
}

// The free AppKit finds the button by its tag, so it can find a view of the owner's content.
NSButton* WindowStyle::buttonOf(const Control& control) const {
  NSButton* const button = [window_ standardWindowButton:control.button];
  return [button isDescendantOf:[window_ contentView]] ? nil : button;
}

// Without a resize control, the minimum and the maximum size are the current size. Restores only
// the limits that the owner has not changed since.
void WindowStyle::fixSize(bool isFixed) {
  if (isFixed == isSizeFixed_) {
    return;
  }
  isSizeFixed_ = isFixed;
  if (isFixed) {
    ownersMinSize_ = [window_ minSize];
    ownersMaxSize_ = [window_ maxSize];
    sizeChanged();
    return;
  }
  if (NSEqualSizes([window_ minSize], fixedSize_)) {
    [window_ setMinSize:ownersMinSize_];
  }
  if (NSEqualSizes([window_ maxSize], fixedSize_)) {
    [window_ setMaxSize:ownersMaxSize_];
  }
}

void WindowStyle::sizeChanged() {
  if (isSizeFixed_) {
    fixedSize_ = [window_ frame].size;
    [window_ setMinSize:fixedSize_];
    [window_ setMaxSize:fixedSize_];
  }
}

}  // namespace vel::cocoa
