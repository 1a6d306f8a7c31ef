#pragma once

#import <AppKit/AppKit.h>

#include <array>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::cocoa {

/// The style mask of a native window. If AppKit cannot change the mask, this class hides the title
/// bar's buttons and fixes the size of the window instead. The free AppKit of GNUstep applies the
/// fixed size to the owner's calls too. The window must outlive this object.
class WindowStyle final : public NonCopyable {
 public:
  /// Reads the owner's style mask.
  explicit WindowStyle(NSWindow* window);
  ~WindowStyle();

  /// The current mask: the owner's mask, or the mask that overrides it.
  [[nodiscard]] NSWindowStyleMask mask() const { return mask_; }
  /// Reads the owner's mask again if no mask overrides it. Returns true if it has changed.
  bool updateOwnersMask();
  /// Overrides the controls of the owner's mask. Returns the controls that the window still offers
  /// although `mask` excludes them.
  NSWindowStyleMask setMask(NSWindowStyleMask mask);
  /// Fixes the new size if the size was fixed, for example after the window manager has resized the
  /// window. Call this when the size of the window has changed.
  void sizeChanged();
  /// Restores the owner's mask.
  void restore() { setMask(ownersMask_); }

 private:
  struct Control {
    NSWindowButton button;
    NSWindowStyleMask bit;
    NSButton* hiddenButton = nil;  // retained; nil if this object has hidden no button
  };

  NSWindowStyleMask hideButtons();
  [[nodiscard]] NSButton* buttonOf(const Control& control) const;
  void fixSize(bool isFixed);

  NSWindow* window_;
  NSWindowStyleMask ownersMask_;
  NSWindowStyleMask mask_;
  bool isSizeFixed_ = false;
  std::array<Control, 3> controls_{{{NSWindowCloseButton, NSWindowStyleMaskClosable},
                                    {NSWindowMiniaturizeButton, NSWindowStyleMaskMiniaturizable},
                                    {NSWindowZoomButton, NSWindowStyleMaskResizable}}};
  NSSize fixedSize_ = NSZeroSize;
  NSSize ownersMinSize_ = NSZeroSize;
  NSSize ownersMaxSize_ = NSZeroSize;
};

}  // namespace vel::cocoa
