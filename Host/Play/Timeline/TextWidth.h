// Estimates the width of text in a picture.
#pragma once

#include <string>
#include <string_view>

namespace vel::host {

/// Estimates the width of UTF-8 text, in the unit of `fontSize`. Uses the character widths of the
/// font DejaVu Sans. Most other sans-serif fonts need less space. Assumes a width of 1.5 times
/// `fontSize` for each character outside printable ASCII. Does not read the installed fonts, so the
/// same text always has the same width.
[[nodiscard]] double textWidth(std::string_view text, double fontSize);

/// Returns the text unchanged if it is at most `maximumWidth` wide. Otherwise shortens the text and
/// appends an ellipsis.
[[nodiscard]] std::string shorten(std::string_view text, double fontSize, double maximumWidth);

}  // namespace vel::host
