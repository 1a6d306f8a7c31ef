// Tests the layout of the marks and labels in the picture of a timeline. A mark is a dot. The label
// is beside the mark. The arguments of `place` are the x coordinate of the mark's centre, and the
// width of the label plus the distance between mark and label.
#include <gtest/gtest.h>

#include "Host/Play/Timeline/LabelLayout.h"

namespace vel::host {
namespace {

using Side = LabelPosition::Side;

constexpr double kRightEdge = 100;
constexpr double kRadius = 2;
constexpr double kGap = 5;  // the minimum distance between neighbours in a row

class LabelLayoutTest : public testing::Test {
 protected:
  LabelLayout layout_{kRightEdge, kRadius, kGap};
};

TEST_F(LabelLayoutTest, HasNoRowsWithoutAMark) { EXPECT_EQ(layout_.rowCount(), 0U); }

TEST_F(LabelLayoutTest, PutsMarksIntoOneRowIfTheyFit) {
  EXPECT_EQ(layout_.place(0, 20).row, 0U);   // the label ends at 22
  EXPECT_EQ(layout_.place(29, 20).row, 0U);  // the mark starts at 27
  EXPECT_EQ(layout_.rowCount(), 1U);
}

TEST_F(LabelLayoutTest, PutsAMarkIntoANewRowIfTheGapIsTooSmall) {
  layout_.place(0, 20);
  EXPECT_EQ(layout_.place(28.9, 20).row, 1U);
  EXPECT_EQ(layout_.rowCount(), 2U);
}

TEST_F(LabelLayoutTest, PutsMarksWithTheSameCentreIntoDifferentRows) {
  for (std::size_t row = 0; row < 4; ++row) {
    EXPECT_EQ(layout_.place(50, 10).row, row);
  }
}

TEST_F(LabelLayoutTest, UsesTheTopmostRowWithRoom) {
  layout_.place(0, 60);
  layout_.place(10, 10);
  EXPECT_EQ(layout_.place(70, 10).row, 0U);
  EXPECT_EQ(layout_.place(35, 10).row, 1U);
}

TEST_F(LabelLayoutTest, PutsALabelLeftOfItsMarkIfTheRightSideHasNoRoom) {
  EXPECT_EQ(layout_.place(48, 50).side, Side::Right);  // the label ends at 100
  EXPECT_EQ(layout_.place(48.1, 50).side, Side::Left);
}

TEST_F(LabelLayoutTest, LabelOnTheLeftDoesNotOverlapAnotherLabel) {
  layout_.place(50, 20);                     // the mark and its label cover 48 to 72
  EXPECT_EQ(layout_.place(95, 20).row, 1U);  // the label starts at 73
  EXPECT_EQ(layout_.place(95, 10).row, 0U);  // the label starts at 83
}

}  // namespace
}  // namespace vel::host
