#pragma once

#include <cstddef>
#include <vector>

namespace vel::host {

/// The position of a label: its row, and its side of the mark. A mark is a circle in a picture. Row
/// 0 is the topmost row.
struct LabelPosition {
  enum class Side : unsigned char { Right, Left };
  std::size_t row = 0;
  Side side = Side::Right;
};

/// Puts marks and their labels into rows without overlaps. Each call of `place` uses the topmost
/// row that has room.
class LabelLayout {
 public:
  /// No label extends beyond the x coordinate `rightEdge`. A mark and its label form a pair.
  /// `gap` is the minimum distance between two pairs in a row.
  LabelLayout(double rightEdge, double markRadius, double gap)
      : rightEdge_(rightEdge), markRadius_(markRadius), gap_(gap) {}

  /// Places a mark and its label. `x` is the centre of the mark. `width` is the width of the label,
  /// including the space between the label and the mark. The label is to the right of the mark if
  /// the label fits there, otherwise to the left.
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
