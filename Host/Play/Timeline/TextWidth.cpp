#include "Host/Play/Timeline/TextWidth.h"

#include <cstdint>

namespace vel::host {

namespace {

// The unit of the character widths is a thousandth of the font size.
constexpr double kUnitsPerFontSize = 1000;
// The widths of the characters from space to tilde in the font DejaVu Sans.
constexpr std::uint16_t kAsciiWidths[] = {
    318, 401, 460, 838, 636, 950, 780, 275, 390, 390, 500, 838, 318, 361,  318, 337, 636, 636, 636,
    636, 636, 636, 636, 636, 636, 636, 337, 337, 838, 838, 838, 531, 1000, 684, 686, 698, 770, 632,
    575, 775, 752, 295, 295, 656, 557, 863, 748, 787, 603, 787, 695, 635,  611, 732, 684, 989, 685,
    611, 685, 390, 337, 390, 838, 500, 500, 613, 635, 550, 635, 615, 352,  635, 634, 278, 278, 579,
    278, 974, 634, 612, 635, 635, 411, 521, 392, 634, 592, 818, 592, 592,  525, 636, 337, 636, 838};
constexpr double kAssumedOtherCharacterWidth = 1500;
constexpr std::string_view kEllipsis = "\u2026";

bool isContinuationByte(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

double widthOf(char byte) {
  if (isContinuationByte(byte)) {
    return 0;  // the width is counted at the first byte of the character
  }
  return byte >= ' ' && byte <= '~' ? kAsciiWidths[byte - ' '] : kAssumedOtherCharacterWidth;
}

}  // namespace

double textWidth(std::string_view text, double fontSize) {
  double width = 0;
  for (const char byte : text) {
    width += widthOf(byte);
  }
  return width / kUnitsPerFontSize * fontSize;
}

std::string shorten(std::string_view text, double fontSize, double maximumWidth) {
  if (textWidth(text, fontSize) <= maximumWidth) {
    return std::string(text);
  }
  const double availableWidth = maximumWidth - textWidth(kEllipsis, fontSize);
  std::size_t end = 0;
  double usedWidth = 0;
  while (end < text.size()) {
    usedWidth += textWidth(text.substr(end, 1), fontSize);
    if (usedWidth > availableWidth) {
      break;
    }
    ++end;
  }
  // Continuation bytes have no width, so `end` is never inside a character.
  return std::string(text.substr(0, end)).append(kEllipsis);
}

}  // namespace vel::host
