// How wide text is in a picture, before anybody has drawn it.
#pragma once

#include <string>
#include <string_view>

namespace vel::host {

/// The width of UTF-8 text in DejaVu Sans, in the unit of `fontSize`. Few sans-serif faces are
/// wider, so that other ones need no more room. What is not ASCII is taken for very wide.
[[nodiscard]] double textWidth(std::string_view text, double fontSize);

/// The text if it fits into the width, else as much of its beginning as does, and an ellipsis.
[[nodiscard]] std::string shortened(std::string_view text, double fontSize, double width);

}  // namespace vel::host
