// Writes pictures as SVG.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vel::host {

struct PicturePoint {
  double x = 0;
  double y = 0;
};

struct PictureRect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

/// The elements of a picture, in drawing order. `styleClass` is the class of an element in the
/// style sheet. Special characters in text are escaped.
class Svg {
 public:
  enum class Anchor : unsigned char { Start, Middle, End };

  void addRect(std::string_view styleClass, const PictureRect& rect);
  void addLine(std::string_view styleClass, PicturePoint start, PicturePoint end);
  void addCircle(std::string_view styleClass, PicturePoint center, double radius);
  void addPath(std::string_view styleClass, const std::vector<PicturePoint>& points);
  /// `position` is a point on the baseline of the text.
  void addText(std::string_view styleClass, PicturePoint position, Anchor anchor,
               std::string_view text);

  /// Appends the elements of another picture.
  void append(const Svg& other) { elements_ += other.elements_; }

  /// Returns the picture as an SVG document. `name` is for screen readers.
  [[nodiscard]] std::string document(double width, double height, std::string_view name,
                                     std::string_view styleSheet) const;

 private:
  std::string elements_;
};

}  // namespace vel::host
