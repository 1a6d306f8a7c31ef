#include <gtest/gtest.h>

#include "Host/Play/Timeline/TextWidth.h"

namespace vel::host {
namespace {

constexpr double kSize = 10;

TEST(TextWidthTest, IsTheSumOfTheWidthsOfTheCharacters) {
  EXPECT_DOUBLE_EQ(textWidth("", kSize), 0);
  EXPECT_DOUBLE_EQ(textWidth("W", kSize), 9.89);
  EXPECT_DOUBLE_EQ(textWidth("W W", kSize), 9.89 + 3.18 + 9.89);
}

TEST(TextWidthTest, IsProportionalToTheFontSize) {
  EXPECT_DOUBLE_EQ(textWidth("present", 2 * kSize), 2 * textWidth("present", kSize));
}

TEST(TextWidthTest, IsOneAndAHalfFontSizesForANonAsciiCharacter) {
  EXPECT_DOUBLE_EQ(textWidth("\u00e9", kSize), 15);
  EXPECT_DOUBLE_EQ(textWidth("\U0001F3AE", kSize), 15);
}

TEST(ShortenedTextTest, IsTheWholeTextIfItFits) {
  EXPECT_EQ(shorten("present", kSize, textWidth("present", kSize)), "present");
}

TEST(ShortenedTextTest, FitsWithItsEllipsis) {
  const std::string text = shorten(std::string(300, 'x'), kSize, 100);
  // `textWidth` counts 15 for the ellipsis, but the ellipsis is at most 10 wide.
  EXPECT_LE(textWidth(text, kSize) - 5, 100);
  EXPECT_GT(text.size(), 10U);
  EXPECT_TRUE(text.ends_with("x\u2026"));
}

TEST(ShortenedTextTest, CutsBetweenCharacters) {
  EXPECT_EQ(shorten("\u00e9\u00e9\u00e9", kSize, 40), "\u00e9\u2026");
}

TEST(ShortenedTextTest, IsOnlyTheEllipsisIfNoCharacterFits) {
  EXPECT_EQ(shorten("present", kSize, 16), "\u2026");
}

}  // namespace
}  // namespace vel::host
