// Estimates the width of text in a picture.
#pragma once

#include <string>
#include <string_view>

namespace vel::host {

/// Returns the width of UTF-8 text in DejaVu Sans, in the unit of `fontSize`. Most sans-serif
/// fonts are narrower. Counts each character outside printable ASCII as very wide. The widths are
/// part of the program, so a picture does not depend on the fonts of the machine.
[[nodiscard]] double textWidth(std::string_view text, double fontSize);

/// Returns the text if it fits into the width. Otherwise shortens the text and appends an ellipsis.
[[nodiscard]] std::string shorten(std::string_view text, double fontSize, double width);

}  // namespace vel::host
