#include <gtest/gtest.h>

#include "Host/Play/Timeline/TextWidth.h"

namespace vel::host {
namespace {

constexpr double kFontSize = 10;

TEST(TextWidthTest, IsTheSumOfTheWidthsOfTheCharacters) {
  EXPECT_DOUBLE_EQ(textWidth("", kFontSize), 0);
  EXPECT_DOUBLE_EQ(textWidth("W", kFontSize), 9.89);
  EXPECT_DOUBLE_EQ(textWidth("W W", kFontSize), 9.89 + 3.18 + 9.89);
}

TEST(TextWidthTest, IsProportionalToTheFontSize) {
  EXPECT_DOUBLE_EQ(textWidth("present", 2 * kFontSize), 2 * textWidth("present", kFontSize));
}

TEST(TextWidthTest, IsOneAndAHalfFontSizesForANonAsciiCharacter) {
  EXPECT_DOUBLE_EQ(textWidth("\u00e9", kFontSize), 15);
  EXPECT_DOUBLE_EQ(textWidth("\U0001F3AE", kFontSize), 15);
}

TEST(ShortenedTextTest, IsTheWholeTextIfItFits) {
  EXPECT_EQ(shorten("present", kFontSize, textWidth("present", kFontSize)), "present");
}

TEST(ShortenedTextTest, FitsWithItsEllipsis) {
  const std::string text = shorten(std::string(300, 'x'), kFontSize, 100);
  // In DejaVu Sans, the ellipsis is 10 wide, but `textWidth` counts 15.
  EXPECT_LE(textWidth(text, kFontSize) - 5, 100);
  EXPECT_GT(text.size(), 10U);
  EXPECT_TRUE(text.ends_with("x\u2026"));
}

TEST(ShortenedTextTest, CutsBetweenCharacters) {
  EXPECT_EQ(shorten("\u00e9\u00e9\u00e9", kFontSize, 40), "\u00e9\u2026");
}

TEST(ShortenedTextTest, IsOnlyTheEllipsisIfNoCharacterFits) {
  EXPECT_EQ(shorten("present", kFontSize, 16), "\u2026");
}

}  // namespace
}  // namespace vel::host
