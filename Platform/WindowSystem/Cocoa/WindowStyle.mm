#include "Platform/WindowSystem/Cocoa/WindowStyle.h"

#include <array>

// The free AppKit does not declare this operation.
@protocol VelStyleMaskSetter
- (void)setStyleMask:(NSUInteger)styleMask;
@end

namespace vel::cocoa {

WindowStyle::WindowStyle(NSWindow* window)
    : window_(window), ownersMask_([window styleMask]), mask_(ownersMask_) {}

NSWindowStyleMask WindowStyle::setMask(NSWindowStyleMask mask) {
  mask_ = mask;
  // A window of the free AppKit has no such operation, because its style mask cannot change.
  if ([window_ respondsToSelector:@selector(setStyleMask:)]) {
    id const window = window_;
    id<VelStyleMaskSetter> const setter = window;
    [setter setStyleMask:static_cast<NSUInteger>(mask)];
    return 0;
  }
  fixSize((ownersMask_ & ~mask & NSWindowStyleMaskResizable) != 0);
  return hideButtons();
}

// Hides the buttons of the excluded controls, and shows all others. If the window manager draws the
// title bar, AppKit has no buttons to hide. Returns the excluded close and miniaturise controls
// that have no button.
NSWindowStyleMask WindowStyle::hideButtons() {
  struct Control {
    NSWindowButton button;
    NSWindowStyleMask bit;
  };
  constexpr std::array<Control, 3> kControls{
      {{NSWindowCloseButton, NSWindowStyleMaskClosable},
       {NSWindowMiniaturizeButton, NSWindowStyleMaskMiniaturizable},
       {NSWindowZoomButton, NSWindowStyleMaskResizable}}};
  NSWindowStyleMask kept = 0;
  for (const Control& control : kControls) {
    const bool isExcluded = (ownersMask_ & ~mask_ & control.bit) != 0;
    NSButton* const button = [window_ standardWindowButton:control.button];
    [button setHidden:isExcluded ? YES : NO];
    if (button == nil && isExcluded && control.bit != NSWindowStyleMaskResizable) {
      kept |= control.bit;
    }
  }
  return kept;
}

// Without a resize control, the minimum and the maximum size are the current size.
void WindowStyle::fixSize(bool isFixed) {
  if (isFixed == isSizeFixed_) {
    return;
  }
  isSizeFixed_ = isFixed;
  if (isFixed) {
    ownersMinSize_ = [window_ minSize];
    ownersMaxSize_ = [window_ maxSize];
  }
  const NSSize size = [window_ frame].size;
  [window_ setMinSize:isFixed ? size : ownersMinSize_];
  [window_ setMaxSize:isFixed ? size : ownersMaxSize_];
}

// The owner can still resize a window that the user cannot resize. The new size is then the fixed
// size.
void WindowStyle::sizeChanged() {
  if (isSizeFixed_) {
    const NSSize size = [window_ frame].size;
    [window_ setMinSize:size];
    [window_ setMaxSize:size];
  }
}

}  // namespace vel::cocoa
