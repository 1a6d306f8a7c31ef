#pragma once

#include <cstddef>
#include <vector>

namespace vel::host {

/// Where a label stands: in which row, counted from the top, and on which side of its mark.
struct LabelPlace {
  enum class Side : unsigned char { Right, Left };
  std::size_t row = 0;
  Side side = Side::Right;
};

/// Gives marks and the labels beside them places in as few rows as it finds, so that nothing of one
/// lies on another. Marks are placed in the order in which they come, each in the uppermost row
/// that has room.
class LabelLayout {
 public:
  /// Nothing goes beyond `right`; `markRadius` is kept free on each side of a mark's middle, and
  /// `gap` between neighbours.
  LabelLayout(double right, double markRadius, double gap)
      : right_(right), markRadius_(markRadius), gap_(gap) {}

  /// The place of the mark at `x` and its label of `width`, its distance from the mark included.
  /// The label stands to the right of it where there is room, else to the left.
  LabelPlace place(double x, double width);

  [[nodiscard]] std::size_t rows() const { return rows_.size(); }

 private:
  struct Interval {
    double from = 0;
    double to = 0;
  };

  double right_;
  double markRadius_;
  double gap_;
  std::vector<std::vector<Interval>> rows_;
};

}  // namespace vel::host
