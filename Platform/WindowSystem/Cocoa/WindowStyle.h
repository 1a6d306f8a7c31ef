#pragma once

#import <AppKit/AppKit.h>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::cocoa {

/// The style mask of a native window. If AppKit cannot change the mask, this class hides the title
/// bar's buttons and fixes the size of the window instead. The window must outlive this object.
class WindowStyle final : public NonCopyable {
 public:
  /// Reads the owner's style mask.
  explicit WindowStyle(NSWindow* window);

  /// The current mask: the owner's mask, or the mask that overrides it.
  [[nodiscard]] NSWindowStyleMask mask() const { return mask_; }
  /// Overrides the owner's mask. Returns the controls that the window still offers although `mask`
  /// excludes them.
  NSWindowStyleMask setMask(NSWindowStyleMask mask);
  /// Fixes the new size if the size was fixed. Call this when the size of the window has changed.
  void sizeChanged();
  /// Restores the owner's mask.
  void restore() { setMask(ownersMask_); }

 private:
  NSWindowStyleMask hideButtons();
  void fixSize(bool isFixed);

  NSWindow* window_;
  NSWindowStyleMask ownersMask_;
  NSWindowStyleMask mask_;
  bool isSizeFixed_ = false;
  NSSize ownersMinSize_ = NSZeroSize;
  NSSize ownersMaxSize_ = NSZeroSize;
};

}  // namespace vel::cocoa
