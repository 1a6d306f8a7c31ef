#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Tests/Support/X11/XClient.h"

namespace vel::test {

/// Records what an area of the X screen shows. The X server reports each drawing, and the recorder
/// takes a picture after each drawing in the area.
class FrameRecorder {
 public:
  /// Returns one letter for a picture of the area.
  using Classifier = std::function<char(const Picture&)>;

  FrameRecorder(const std::string& display, PixelRect area, Classifier classifier);

  /// Records until the condition is true. Returns false after `kTimeout`.
  bool recordUntil(const std::function<bool()>& condition);

  /// The letters of the pictures, in order. Consecutive equal letters appear once.
  [[nodiscard]] const std::string& letters() const { return letters_; }
  /// The rectangles that were drawn after the previous letter and before `letters()[index]`. The
  /// rectangles are relative to the area's upper left corner.
  [[nodiscard]] const std::vector<PixelRect>& drawingsBefore(std::size_t index) const {
    return drawings_.at(index);
  }

 private:
  void takePicture();
  /// Returns true if it has read an event.
  bool readEvents();

  XClient client_;
  PixelRect area_;
  Classifier classifier_;
  int damageNotifyType_ = 0;
  std::string letters_;
  std::vector<std::vector<PixelRect>> drawings_;
  std::vector<PixelRect> newDrawings_;  // since the last change of `letters_`
};

}  // namespace vel::test
