// Writing pictures as SVG.
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

/// The elements of a picture, in the order in which they are drawn. Each has a class, for the style
/// sheet to give it its looks; a text of other sources is written so that it stays a text.
class Svg {
 public:
  enum class Anchor : unsigned char { Start, Middle, End };

  void rect(std::string_view look, const PictureRect& rect);
  void line(std::string_view look, PicturePoint from, PicturePoint to);
  void dot(std::string_view look, PicturePoint middle, double radius);
  void path(std::string_view look, const std::vector<PicturePoint>& points);
  /// `at` is on the line that the text stands on.
  void text(std::string_view look, PicturePoint at, Anchor anchor, std::string_view text);

  /// All elements of another picture.
  void add(const Svg& other) { elements_ += other.elements_; }

  /// The whole picture, with a name for those who cannot see it.
  [[nodiscard]] std::string picture(double width, double height, std::string_view name,
                                    std::string_view styleSheet) const;

 private:
  std::string elements_;
};

}  // namespace vel::host
