#pragma once

#include <cstddef>
#include <vector>

namespace vel::host {

/// The position of a label: its row, counted from the top, and its side of the mark.
struct LabelPosition {
  enum class Side : unsigned char { Right, Left };
  std::size_t row = 0;
  Side side = Side::Right;
};

/// Puts marks and their labels into rows without overlaps. Each call of `place` uses the topmost
/// row that has room.
class LabelLayout {
 public:
  /// `right` is the right edge of the picture. `gap` is the minimum distance between neighbours.
  LabelLayout(double right, double markRadius, double gap)
      : rightEdge_(right), markRadius_(markRadius), gap_(gap) {}

  /// Places a mark with its centre at `x`. `width` is the width of its label, including the
  /// distance between mark and label. The label is to the right of the mark if it fits there,
  /// otherwise to the left.
  LabelPosition place(double x, double width);

  [[nodiscard]] std::size_t rowCount() const { return rows_.size(); }

 private:
  struct Interval {
    double start = 0;
    double end = 0;
  };

  double rightEdge_;
  double markRadius_;
  double gap_;
  std::vector<std::vector<Interval>> rows_;
};

}  // namespace vel::host
