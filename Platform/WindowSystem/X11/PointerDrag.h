#pragma once

#include <xcb/xproto.h>

#include <optional>

#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// The state of a drag: while the user drags a window, the window moves with the pointer. All
/// coordinates are in pixels, relative to the root window.
class PointerDrag {
 public:
  /// Ends a previous drag and starts to drag `window`. `frame` is the window's current frame.
  void begin(xcb_window_t window, PixelRect frame, int pointerX, int pointerY);
  /// Records the new position of the pointer.
  void movePointer(int pointerX, int pointerY);
  void end();

  /// The dragged window; XCB_WINDOW_NONE if no window is dragged.
  [[nodiscard]] xcb_window_t window() const { return window_; }
  /// `frame` is the dragged window's current frame. Returns the window's new frame. Returns no
  /// value if the pointer has not moved since the previous call, or if no window is dragged.
  std::optional<PixelRect> takeMovedFrame(PixelRect frame);

 private:
  xcb_window_t window_ = XCB_WINDOW_NONE;
  int offsetX_ = 0;  // from the window's upper left corner to the pointer
  int offsetY_ = 0;
  int pointerX_ = 0;
  int pointerY_ = 0;
  bool hasPointerMoved_ = false;
};

}  // namespace vel::x11
