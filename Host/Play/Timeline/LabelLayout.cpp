#include "Host/Play/Timeline/LabelLayout.h"

#include <algorithm>

namespace vel::host {

LabelPosition LabelLayout::place(double x, double width) {
  const bool fitsRight = x + markRadius_ + width <= rightEdge_;
  // The x range of the mark and its label.
  const Interval newInterval = fitsRight ? Interval{x - markRadius_, x + markRadius_ + width}
                                         : Interval{x - markRadius_ - width, x + markRadius_};
  const auto hasRoom = [&](const std::vector<Interval>& row) {
    return std::ranges::none_of(row, [&](const Interval& usedInterval) {
      return newInterval.start < usedInterval.end + gap_ &&
             usedInterval.start < newInterval.end + gap_;
    });
  };
  auto row = std::ranges::find_if(rows_, hasRoom);
  if (row == rows_.end()) {
    row = rows_.emplace(rows_.end());
  }
  row->push_back(newInterval);
  return {.row = static_cast<std::size_t>(row - rows_.begin()),
          .side = fitsRight ? LabelPosition::Side::Right : LabelPosition::Side::Left};
}

}  // namespace vel::host
