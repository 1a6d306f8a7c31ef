#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Tests/Support/X11/XClient.h"

namespace vel::test {

/// Watches a place on the screen: the server tells of each drawing in it, and after each the place
/// is looked at.
class FrameWatch {
 public:
  /// Says in one letter what a picture of the place shows.
  using Kind = std::function<char(const Picture&)>;

  FrameWatch(const std::string& display, PixelRect place, Kind kind);

  /// Watches until the condition holds; false where it does not come to hold.
  bool watchUntil(const std::function<bool()>& condition);

  /// The kinds of what was seen, one letter for each time that it became another.
  [[nodiscard]] const std::string& kinds() const { return kinds_; }
  /// What was drawn in the place after the kind before had been seen and until that one was, each
  /// drawing as a rectangle counted from the place's corner.
  [[nodiscard]] const std::vector<PixelRect>& drawingsBefore(std::size_t kind) const {
    return drawings_.at(kind);
  }

 private:
  void look();
  bool takeEvents();

  XClient client_;
  PixelRect place_;
  Kind kind_;
  int drawn_ = 0;  // the event's number
  std::string kinds_;
  std::vector<std::vector<PixelRect>> drawings_;
  std::vector<PixelRect> latest_;
};

}  // namespace vel::test
