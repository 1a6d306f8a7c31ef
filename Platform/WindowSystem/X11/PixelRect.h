#pragma once

namespace vel::x11 {

/// A rectangle in whole pixels. (x, y) is its upper left corner, and y grows downwards.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelRect&) const = default;
};

}  // namespace vel::x11
