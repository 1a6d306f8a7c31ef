#pragma once

#include <xcb/xproto.h>

#include <optional>

#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// The drag of a window by its background: the window moves with the pointer. Positions are in
/// pixels of the root window.
class PointerDrag {
 public:
  /// Starts the drag of a window that has this frame. Ends a previous drag.
  void begin(xcb_window_t window, PixelRect frame, int pointerX, int pointerY);
  /// Records the new position of the pointer.
  void movePointer(int pointerX, int pointerY);
  void end();

  /// The dragged window; None if no window is dragged.
  [[nodiscard]] xcb_window_t window() const { return window_; }
  /// `frame` is the current frame of the dragged window. If the pointer has moved since the
  /// previous call, returns the frame that the window should get: it has the size of `frame` and
  /// follows the pointer. Otherwise returns no value.
  std::optional<PixelRect> takeMovedFrame(PixelRect frame);

 private:
  xcb_window_t window_ = XCB_WINDOW_NONE;
  int offsetX_ = 0;  // from the window's corner to the pointer
  int offsetY_ = 0;
  int pointerX_ = 0;
  int pointerY_ = 0;
  bool hasPointerMoved_ = false;
};

}  // namespace vel::x11
