#include "Host/Play/Timeline/Svg.h"

#include <cmath>
#include <cstdio>

namespace vel::host {

namespace {

// Rounds the value to two decimals, to keep the file small.
std::string formatNumber(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.2f", value);
  std::string digits = text;
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.back() == '.') {
    digits.pop_back();
  }
  return digits;
}

// Returns false if the text starts with U+FFFE, U+FFFF or a character below U+0020. XML forbids
// these characters, except tabs and line breaks. A text in a picture is a single line.
bool startsWithAllowedCharacter(std::string_view remainingText) {
  constexpr std::string_view kNoncharacters[] = {"\xEF\xBF\xBE", "\xEF\xBF\xBF"};
  return static_cast<unsigned char>(remainingText.front()) >= ' ' &&
         !remainingText.starts_with(kNoncharacters[0]) &&
         !remainingText.starts_with(kNoncharacters[1]);
}

std::string escapeXml(std::string_view text) {
  std::string result;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const std::string_view remainingText = text.substr(index);
    if (!startsWithAllowedCharacter(remainingText)) {
      result += "\uFFFD";
      // U+FFFE and U+FFFF have three bytes: skip the second and the third.
      index += remainingText.front() == '\xEF' ? 2U : 0U;
    } else if (text[index] == '&') {
      result += "&amp;";
    } else if (text[index] == '<') {
      result += "&lt;";
    } else if (text[index] == '"') {
      result += "&quot;";
    } else if (text[index] == '>') {
      result += "&gt;";
    } else {
      result += text[index];
    }
  }
  return result;
}

std::string attribute(std::string_view name, double value) {
  return std::string(" ").append(name).append("=\"").append(formatNumber(value)).append("\"");
}

std::string openingTag(std::string_view element, std::string_view styleClass) {
  return std::string("<").append(element).append(" class=\"").append(styleClass).append("\"");
}

}  // namespace

void Svg::addRect(std::string_view styleClass, const PictureRect& rect) {
  elements_ += openingTag("rect", styleClass) + attribute("x", rect.x) + attribute("y", rect.y) +
               attribute("width", rect.width) + attribute("height", rect.height) + "/>\n";
}

void Svg::addLine(std::string_view styleClass, PicturePoint start, PicturePoint end) {
  addPath(styleClass, {start, end});
}

void Svg::addCircle(std::string_view styleClass, PicturePoint center, double radius) {
  elements_ += openingTag("circle", styleClass) + attribute("cx", center.x) +
               attribute("cy", center.y) + attribute("r", radius) + "/>\n";
}

void Svg::addPath(std::string_view styleClass, const std::vector<PicturePoint>& points) {
  elements_ += openingTag("path", styleClass) + " d=\"";
  for (const PicturePoint& point : points) {
    elements_ += &point == points.data() ? "M" : "L";
    elements_ += formatNumber(point.x) + " " + formatNumber(point.y);
  }
  elements_ += "\"/>\n";
}

void Svg::addText(std::string_view styleClass, PicturePoint position, Anchor anchor,
                  std::string_view text) {
  elements_ +=
      openingTag("text", styleClass) + attribute("x", position.x) + attribute("y", position.y);
  if (anchor != Anchor::Start) {
    elements_ += anchor == Anchor::Middle ? " text-anchor=\"middle\"" : " text-anchor=\"end\"";
  }
  elements_ += ">" + escapeXml(text) + "</text>\n";
}

std::string Svg::document(double width, double height, std::string_view name,
                          std::string_view styleSheet) const {
  std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\"";
  svg += attribute("width", width) + attribute("height", height);
  svg += " viewBox=\"0 0 " + formatNumber(width) + " " + formatNumber(height) + "\"";
  svg += R"( role="img" aria-label=")" + escapeXml(name) + "\">\n<style>\n";
  return svg.append(styleSheet).append("</style>\n").append(elements_).append("</svg>\n");
}

}  // namespace vel::host
