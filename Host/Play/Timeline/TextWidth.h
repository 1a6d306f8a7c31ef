// Estimates the width of text in a picture.
#pragma once

#include <string>
#include <string_view>

namespace vel::host {

/// Returns the width of UTF-8 text in the font DejaVu Sans, in the unit of `fontSize`. Most other
/// sans-serif fonts are narrower. Counts each character outside printable ASCII as very wide. The
/// character widths are constants, so a picture does not depend on the installed fonts.
[[nodiscard]] double textWidth(std::string_view text, double fontSize);

/// Returns the text if it is at most `maximumWidth` wide. Otherwise shortens the text and appends
/// an ellipsis.
[[nodiscard]] std::string shorten(std::string_view text, double fontSize, double maximumWidth);

}  // namespace vel::host
