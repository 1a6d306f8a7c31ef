// Positions, sizes, rectangles and colours. Lengths are in points. The y coordinate
// increases upwards.
#pragma once

namespace vel {

struct CGPoint {
  double x = 0;
  double y = 0;
  bool operator==(const CGPoint&) const = default;
};

struct CGSize {
  double width = 0;
  double height = 0;
  bool operator==(const CGSize&) const = default;
};

struct CGRect {
  CGPoint origin;
  CGSize size;
  bool operator==(const CGRect&) const = default;
};

inline constexpr CGRect CGRectZero{};

/// A colour: red, green, blue and opacity, each from 0 to 1.
struct CGColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 0;
  bool operator==(const CGColor&) const = default;
};

[[nodiscard]] constexpr CGRect CGRectMake(double x, double y, double width, double height) {
  return {{x, y}, {width, height}};
}

}  // namespace vel
