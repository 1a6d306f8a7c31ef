// Views: the view tree, autoresizing and constraints.
#include <ostream>
#include <string>

#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

Strong<NSView> view(CGRect frame = CGRectZero) { return NSView::initWithFrame(frame); }

class ViewTreeTest : public VirtualTest {
 protected:
  Strong<NSView> root = view();
  Strong<NSView> back = view();
  Strong<NSView> front = view();

  ViewTreeTest() {
    root->addSubview(back);
    root->addSubview(front);
  }
};

TEST_F(ViewTreeTest, ASubviewIsAddedInFront) {
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{back, front}));
  EXPECT_EQ(back->superview(), root);
}

TEST_F(ViewTreeTest, ASubviewIsAddedDirectlyAboveOrBelowAnother) {
  const auto above = view();
  const auto below = view();
  root->addSubviewPositionedRelativeTo(above, NSWindowAbove, back);
  root->addSubviewPositionedRelativeTo(below, NSWindowBelow, back);
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{below, back, above, front}));
}

TEST_F(ViewTreeTest, WithoutASiblingASubviewIsAddedInFrontOfAllOrBehindAll) {
  const auto first = view();
  const auto last = view();
  root->addSubviewPositionedRelativeTo(last, NSWindowAbove, root);
  root->addSubviewPositionedRelativeTo(first, NSWindowBelow, nullptr);
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{first, back, front, last}));
}

TEST_F(ViewTreeTest, ASubviewCanBeMovedAmongItsSiblings) {
  root->addSubviewPositionedRelativeTo(front, NSWindowBelow, back);
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{front, back}));
  root->addSubviewPositionedRelativeTo(front, NSWindowAbove, front);
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{back, front}));
}

TEST_F(ViewTreeTest, AddingASubviewRemovesItFromItsPreviousSuperview) {
  front->addSubview(back);
  EXPECT_EQ(root->subviews(), NSArray<NSView>{front});
  EXPECT_EQ(back->superview(), front);
}

TEST_F(ViewTreeTest, NullTheViewItselfAndAnAncestorCannotBeSubviews) {
  root->addSubview(nullptr);
  root->addSubview(root);
  front->addSubview(root);
  EXPECT_EQ(root->superview(), nullptr);
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{back, front}));
  EXPECT_TRUE(front->subviews().empty());
}

TEST_F(ViewTreeTest, ARemovedViewHasNoSuperview) {
  back->removeFromSuperview();
  back->removeFromSuperview();
  EXPECT_EQ(back->superview(), nullptr);
  EXPECT_EQ(root->subviews(), NSArray<NSView>{front});
}

TEST_F(ViewTreeTest, ASuperviewOwnsItsSubviewsButTheyDoNotOwnIt) {
  const Weak<NSView> weakBack = back;
  back.reset();
  EXPECT_FALSE(weakBack.expired());
  const Weak<NSView> weakRoot = root;
  root.reset();
  EXPECT_TRUE(weakRoot.expired());
  EXPECT_TRUE(weakBack.expired());
  EXPECT_EQ(front->superview(), nullptr);
}

TEST_F(ViewTreeTest, AViewIsInTheWindowOfItsOutermostSuperview) {
  const auto window = openWindow("A");
  EXPECT_EQ(front->window(), nullptr);
  window->contentView()->addSubview(root);
  EXPECT_EQ(front->window(), window);
  root->removeFromSuperview();
  EXPECT_EQ(front->window(), nullptr);
}

TEST_F(ViewTreeTest, BoundsHaveTheSizeOfTheFrameAndOriginZero) {
  EXPECT_EQ(view(CGRectMake(3, 4, 50, 60))->bounds(), CGRectMake(0, 0, 50, 60));
}

// A superview of 100 by 100 points is resized to `size`. Its subview has the origin (10, 20) and
// the size 30 by 40.
struct AutoresizingCase {
  const char* name;
  NSAutoresizingMaskOptions mask;
  CGSize size;
  CGRect expectedFrame;

  friend void PrintTo(const AutoresizingCase& tested, std::ostream* out) { *out << tested.name; }
};

class AutoresizingMaskTest : public testing::TestWithParam<AutoresizingCase> {};

TEST_P(AutoresizingMaskTest, SetsTheFrameOfASubview) {
  const auto outer = view(CGRectMake(0, 0, 100, 100));
  const auto inner = view(CGRectMake(10, 20, 30, 40));
  inner->setAutoresizingMask(GetParam().mask);
  outer->addSubview(inner);
  outer->setFrame({{5, 5}, GetParam().size});
  EXPECT_EQ(inner->frame(), GetParam().expectedFrame);
}

constexpr CGSize kLarger{200, 160};

INSTANTIATE_TEST_SUITE_P(
    Masks, AutoresizingMaskTest,
    testing::Values(
        AutoresizingCase{"None", NSViewNotSizable, kLarger, CGRectMake(10, 20, 30, 40)},
        AutoresizingCase{"Width", NSViewWidthSizable, kLarger, CGRectMake(10, 20, 130, 40)},
        AutoresizingCase{"Height", NSViewHeightSizable, kLarger, CGRectMake(10, 20, 30, 100)},
        AutoresizingCase{"WidthAndHeight", NSViewWidthSizable | NSViewHeightSizable, kLarger,
                         CGRectMake(10, 20, 130, 100)},
        AutoresizingCase{"LeftAndBottomMargins", NSViewMinXMargin | NSViewMinYMargin, kLarger,
                         CGRectMake(110, 80, 30, 40)},
        AutoresizingCase{"RightAndTopMargins", NSViewMaxXMargin | NSViewMaxYMargin, kLarger,
                         CGRectMake(10, 20, 30, 40)},
        AutoresizingCase{"TwoPartsShareTheChange", NSViewMinXMargin | NSViewMaxXMargin, kLarger,
                         CGRectMake(60, 20, 30, 40)},
        AutoresizingCase{"ThreePartsShareTheChange",
                         NSViewMinYMargin | NSViewHeightSizable | NSViewMaxYMargin, kLarger,
                         CGRectMake(10, 40, 30, 60)},
        AutoresizingCase{"AWidthIsNeverNegative", NSViewWidthSizable, CGSize{20, 100},
                         CGRectMake(10, 20, 0, 40)}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(AutoresizingTest, NestedViewsResizeTogether) {
  const auto outer = view(CGRectMake(0, 0, 100, 100));
  const auto middle = view(CGRectMake(0, 0, 100, 100));
  const auto inner = view(CGRectMake(0, 0, 100, 100));
  outer->addSubview(middle);
  middle->addSubview(inner);
  for (const auto& resizable : {middle, inner}) {
    resizable->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
  }
  outer->setFrame(CGRectMake(0, 0, 300, 200));
  EXPECT_EQ(inner->frame(), CGRectMake(0, 0, 300, 200));
}

TEST(AutoresizingTest, MovingASuperviewDoesNotChangeItsSubviews) {
  const auto outer = view(CGRectMake(0, 0, 100, 100));
  const auto inner = view(CGRectMake(10, 20, 30, 40));
  inner->setAutoresizingMask(NSViewMinXMargin | NSViewWidthSizable);
  outer->addSubview(inner);
  outer->setFrame(CGRectMake(50, 50, 100, 100));
  EXPECT_EQ(inner->frame(), CGRectMake(10, 20, 30, 40));
}

class ConstraintTest : public testing::Test {
 protected:
  ConstraintTest() {
    inner->setTranslatesAutoresizingMaskIntoConstraints(false);
    outer->addSubview(inner);
  }
  // Centres the inner view, with a minimum width and a fixed height.
  void activateConstraints(double minWidth, double height) {
    NSLayoutConstraint::activateConstraints({
        inner->centerXAnchor().constraintEqualToAnchor(outer->centerXAnchor()),
        inner->centerYAnchor().constraintEqualToAnchor(outer->centerYAnchor()),
        inner->widthAnchor().constraintGreaterThanOrEqualToConstant(minWidth),
        inner->heightAnchor().constraintEqualToConstant(height),
    });
  }

  Strong<NSView> outer = view(CGRectMake(7, 9, 400, 300));
  Strong<NSView> inner = view();
};

TEST_F(ConstraintTest, CentreAViewAndSetItsSize) {
  activateConstraints(32, 32);
  EXPECT_EQ(inner->frame(), CGRectMake(184, 134, 32, 32));
}

TEST_F(ConstraintTest, ApplyAgainWhenTheSuperviewIsResized) {
  activateConstraints(32, 40);
  outer->setFrame(CGRectMake(0, 0, 200, 100));
  EXPECT_EQ(inner->frame(), CGRectMake(84, 30, 32, 40));
}

TEST_F(ConstraintTest, TheLargestOfSeveralMinimumsApplies) {
  NSLayoutConstraint::activateConstraints({
      inner->widthAnchor().constraintGreaterThanOrEqualToConstant(50),
      inner->widthAnchor().constraintGreaterThanOrEqualToConstant(20),
      inner->heightAnchor().constraintEqualToConstant(10),
  });
  EXPECT_EQ(inner->frame().size, (CGSize{50, 10}));
}

TEST_F(ConstraintTest, AViewCanBeCentredOnASibling) {
  const auto sibling = view(CGRectMake(100, 50, 20, 10));
  outer->addSubview(sibling);
  NSLayoutConstraint::activateConstraints({
      inner->centerXAnchor().constraintEqualToAnchor(sibling->centerXAnchor()),
      inner->centerYAnchor().constraintEqualToAnchor(sibling->centerYAnchor()),
  });
  EXPECT_EQ(inner->frame().origin, (CGPoint{110, 55}));
}

TEST_F(ConstraintTest, HaveItemsAnAttributeARelationAndAConstant) {
  const auto centre = inner->centerXAnchor().constraintEqualToAnchor(outer->centerXAnchor());
  EXPECT_EQ(centre->firstItem(), inner);
  EXPECT_EQ(centre->secondItem(), outer);
  EXPECT_EQ(centre->attribute(), NSLayoutAttribute::CenterX);
  EXPECT_EQ(centre->relation(), NSLayoutRelation::Equal);
  const auto width = inner->widthAnchor().constraintGreaterThanOrEqualToConstant(32);
  EXPECT_EQ(width->secondItem(), nullptr);
  EXPECT_EQ(width->attribute(), NSLayoutAttribute::Width);
  EXPECT_EQ(width->relation(), NSLayoutRelation::GreaterThanOrEqual);
  EXPECT_EQ(width->constant(), 32);
}

TEST_F(ConstraintTest, BelongToTheSuperviewOfTheirFirstItem) {
  activateConstraints(32, 32);
  EXPECT_EQ(outer->constraints().size(), 4u);
  EXPECT_TRUE(inner->constraints().empty());
}

TEST_F(ConstraintTest, AreRemovedWithTheirView) {
  activateConstraints(32, 32);
  inner->removeFromSuperview();
  EXPECT_TRUE(outer->constraints().empty());
  outer->setFrame(CGRectMake(0, 0, 200, 100));
  EXPECT_EQ(inner->frame(), CGRectMake(184, 134, 32, 32));
}

TEST_F(ConstraintTest, AreIgnoredForAViewWithoutASuperview) {
  inner->removeFromSuperview();
  activateConstraints(32, 32);
  EXPECT_TRUE(outer->constraints().empty());
  EXPECT_EQ(inner->frame(), CGRectZero);
}

TEST_F(ConstraintTest, DoNotApplyToAViewThatTranslatesItsAutoresizingMask) {
  inner->setTranslatesAutoresizingMaskIntoConstraints(true);
  activateConstraints(32, 32);
  EXPECT_EQ(inner->frame(), CGRectZero);
}

TEST_F(ConstraintTest, TheAutoresizingMaskIsIgnoredWithConstraints) {
  inner->setFrame(CGRectMake(0, 0, 10, 10));
  inner->setAutoresizingMask(NSViewWidthSizable);
  outer->setFrame(CGRectMake(0, 0, 500, 300));
  EXPECT_EQ(inner->frame(), CGRectMake(0, 0, 10, 10));
}

TEST_F(ConstraintTest, DoNotKeepTheSuperviewAlive) {
  activateConstraints(32, 32);
  const Weak<NSView> weakOuter = outer;
  outer.reset();
  EXPECT_TRUE(weakOuter.expired());
}

}  // namespace
}  // namespace vel::test
