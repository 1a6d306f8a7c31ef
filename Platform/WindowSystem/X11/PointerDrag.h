#pragma once

#include <xcb/xproto.h>

#include <optional>

#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// The drag of a window by its background: the window moves with the pointer. Positions are in
/// pixels of the root window.
class PointerDrag {
 public:
  /// Starts to drag `window`. `frame` is the window's current frame. Ends a previous drag.
  void begin(xcb_window_t window, PixelRect frame, int pointerX, int pointerY);
  /// Records the new position of the pointer.
  void movePointer(int pointerX, int pointerY);
  void end();

  /// The dragged window; None if no window is dragged.
  [[nodiscard]] xcb_window_t window() const { return window_; }
  /// Returns the frame to which the dragged window must move. Returns no value if the pointer has
  /// not moved since the previous call, or if no window is dragged. `frame` is the window's current
  /// frame.
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
