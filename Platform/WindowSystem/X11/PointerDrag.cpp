#include "Platform/WindowSystem/X11/PointerDrag.h"

#include <utility>

namespace vel::x11 {

void PointerDrag::begin(xcb_window_t window, PixelRect frame, int pointerX, int pointerY) {
  *this = {};
  window_ = window;
  offsetX_ = pointerX - frame.x;
  offsetY_ = pointerY - frame.y;
}

void PointerDrag::movePointer(int pointerX, int pointerY) {
  pointerX_ = pointerX;
  pointerY_ = pointerY;
  hasPointerMoved_ = true;
}

void PointerDrag::end() { *this = {}; }

std::optional<PixelRect> PointerDrag::takeMovedFrame(PixelRect frame) {
  if (!std::exchange(hasPointerMoved_, false) || window_ == XCB_WINDOW_NONE) {
    return std::nullopt;
  }
  frame.x = pointerX_ - offsetX_;
  frame.y = pointerY_ - offsetY_;
  return frame;
}

}  // namespace vel::x11
