// Views: the view tree, autoresizing and constraints.
#include <ostream>
#include <string>

#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

Strong<NSView> makeView(CGRect frame = CGRectZero) { return NSView::initWithFrame(frame); }

class ViewTreeTest : public VirtualPlatformTest {
 protected:
  Strong<NSView> rootView = makeView();
  Strong<NSView> backView = makeView();
  Strong<NSView> frontView = makeView();

  ViewTreeTest() {
    rootView->addSubview(backView);
    rootView->addSubview(frontView);
  }
};

TEST_F(ViewTreeTest, ASubviewIsAddedFrontmostByDefault) {
  EXPECT_EQ(rootView->subviews(), (NSArray<NSView>{backView, frontView}));
  EXPECT_EQ(backView->superview(), rootView);
}

TEST_F(ViewTreeTest, ASubviewIsAddedDirectlyAboveOrBelowAnother) {
  const auto upperView = makeView();
  const auto lowerView = makeView();
  rootView->addSubviewPositionedRelativeTo(upperView, NSWindowAbove, backView);
  rootView->addSubviewPositionedRelativeTo(lowerView, NSWindowBelow, backView);
  EXPECT_EQ(rootView->subviews(), (NSArray<NSView>{lowerView, backView, upperView, frontView}));
}

TEST_F(ViewTreeTest, AboveANonSiblingMeansFrontmostAndBelowANonSiblingMeansBackmost) {
  const auto backmostView = makeView();
  const auto frontmostView = makeView();
  rootView->addSubviewPositionedRelativeTo(frontmostView, NSWindowAbove, rootView);
  rootView->addSubviewPositionedRelativeTo(backmostView, NSWindowBelow, nullptr);
  EXPECT_EQ(rootView->subviews(),
            (NSArray<NSView>{backmostView, backView, frontView, frontmostView}));
}

TEST_F(ViewTreeTest, ASubviewCanBeMovedAmongItsSiblings) {
  rootView->addSubviewPositionedRelativeTo(frontView, NSWindowBelow, backView);
  EXPECT_EQ(rootView->subviews(), (NSArray<NSView>{frontView, backView}));
}

TEST_F(ViewTreeTest, AViewPositionedAboveItselfBecomesFrontmost) {
  rootView->addSubviewPositionedRelativeTo(backView, NSWindowAbove, backView);
  EXPECT_EQ(rootView->subviews(), (NSArray<NSView>{frontView, backView}));
}

TEST_F(ViewTreeTest, AddingASubviewRemovesItFromItsPreviousSuperview) {
  frontView->addSubview(backView);
  EXPECT_EQ(rootView->subviews(), NSArray<NSView>{frontView});
  EXPECT_EQ(backView->superview(), frontView);
}

TEST_F(ViewTreeTest, AddSubviewIgnoresNullAndTheViewItselfAndItsAncestors) {
  rootView->addSubview(nullptr);
  rootView->addSubview(rootView);
  frontView->addSubview(rootView);
  EXPECT_EQ(rootView->superview(), nullptr);
  EXPECT_EQ(rootView->subviews(), (NSArray<NSView>{backView, frontView}));
  EXPECT_TRUE(frontView->subviews().empty());
}

TEST_F(ViewTreeTest, ARemovedViewHasNoSuperview) {
  backView->removeFromSuperview();
  EXPECT_EQ(backView->superview(), nullptr);
  EXPECT_EQ(rootView->subviews(), NSArray<NSView>{frontView});
}

TEST_F(ViewTreeTest, RemovingAViewASecondTimeDoesNothing) {
  backView->removeFromSuperview();
  backView->removeFromSuperview();
  EXPECT_EQ(backView->superview(), nullptr);
  EXPECT_EQ(rootView->subviews(), NSArray<NSView>{frontView});
}

TEST_F(ViewTreeTest, SubviewsDoNotOwnTheirSuperview) {
  const Weak<NSView> weakBack = backView;
  backView.reset();
  EXPECT_FALSE(weakBack.expired());
  const Weak<NSView> weakRoot = rootView;
  rootView.reset();
  EXPECT_TRUE(weakRoot.expired());
  EXPECT_TRUE(weakBack.expired());
  EXPECT_EQ(frontView->superview(), nullptr);
}

TEST_F(ViewTreeTest, ASubviewIsInTheWindowOfItsSuperview) {
  const auto window = openWindow("A");
  EXPECT_EQ(frontView->window(), nullptr);
  window->contentView()->addSubview(rootView);
  EXPECT_EQ(frontView->window(), window);
  rootView->removeFromSuperview();
  EXPECT_EQ(frontView->window(), nullptr);
}

TEST_F(ViewTreeTest, BoundsHaveTheSizeOfTheFrameAndOriginZero) {
  EXPECT_EQ(makeView(CGRectMake(3, 4, 50, 60))->bounds(), CGRectMake(0, 0, 50, 60));
}

// A subview has the frame (10, 20, 30, 40) and the autoresizing mask `mask`. Its superview is
// resized from 100 by 100 points to `size`. The subview then has the frame `expectedFrame`.
struct AutoresizingCase {
  const char* name;
  NSAutoresizingMaskOptions mask;
  CGSize size;
  CGRect expectedFrame;

  friend void PrintTo(const AutoresizingCase& testCase, std::ostream* out) {
    *out << testCase.name;
  }
};

class AutoresizingMaskTest : public testing::TestWithParam<AutoresizingCase> {};

TEST_P(AutoresizingMaskTest, SetsTheFrameOfASubview) {
  const auto outerView = makeView(CGRectMake(0, 0, 100, 100));
  const auto innerView = makeView(CGRectMake(10, 20, 30, 40));
  innerView->setAutoresizingMask(GetParam().mask);
  outerView->addSubview(innerView);
  outerView->setFrame({{5, 5}, GetParam().size});
  EXPECT_EQ(innerView->frame(), GetParam().expectedFrame);
}

constexpr CGSize kLargerSize{200, 160};

INSTANTIATE_TEST_SUITE_P(
    Masks, AutoresizingMaskTest,
    testing::Values(
        AutoresizingCase{"None", NSViewNotSizable, kLargerSize, CGRectMake(10, 20, 30, 40)},
        AutoresizingCase{"Width", NSViewWidthSizable, kLargerSize, CGRectMake(10, 20, 130, 40)},
        AutoresizingCase{"Height", NSViewHeightSizable, kLargerSize, CGRectMake(10, 20, 30, 100)},
        AutoresizingCase{"WidthAndHeight", NSViewWidthSizable | NSViewHeightSizable, kLargerSize,
                         CGRectMake(10, 20, 130, 100)},
        AutoresizingCase{"LeftAndBottomMargins", NSViewMinXMargin | NSViewMinYMargin, kLargerSize,
                         CGRectMake(110, 80, 30, 40)},
        AutoresizingCase{"RightAndTopMargins", NSViewMaxXMargin | NSViewMaxYMargin, kLargerSize,
                         CGRectMake(10, 20, 30, 40)},
        AutoresizingCase{"LeftAndRightMarginsChangeEqually", NSViewMinXMargin | NSViewMaxXMargin,
                         kLargerSize, CGRectMake(60, 20, 30, 40)},
        AutoresizingCase{"HeightAndTopAndBottomMarginsChangeEqually",
                         NSViewMinYMargin | NSViewHeightSizable | NSViewMaxYMargin, kLargerSize,
                         CGRectMake(10, 40, 30, 60)},
        AutoresizingCase{"AWidthIsNeverNegative", NSViewWidthSizable, CGSize{20, 100},
                         CGRectMake(10, 20, 0, 40)}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

TEST(AutoresizingTest, NestedViewsResizeTogether) {
  const auto outerView = makeView(CGRectMake(0, 0, 100, 100));
  const auto middleView = makeView(CGRectMake(0, 0, 100, 100));
  const auto innerView = makeView(CGRectMake(0, 0, 100, 100));
  outerView->addSubview(middleView);
  middleView->addSubview(innerView);
  for (const auto& view : {middleView, innerView}) {
    view->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
  }
  outerView->setFrame(CGRectMake(0, 0, 300, 200));
  EXPECT_EQ(innerView->frame(), CGRectMake(0, 0, 300, 200));
}

TEST(AutoresizingTest, MovingASuperviewDoesNotChangeTheFramesOfItsSubviews) {
  const auto outerView = makeView(CGRectMake(0, 0, 100, 100));
  const auto innerView = makeView(CGRectMake(10, 20, 30, 40));
  innerView->setAutoresizingMask(NSViewMinXMargin | NSViewWidthSizable);
  outerView->addSubview(innerView);
  outerView->setFrame(CGRectMake(50, 50, 100, 100));
  EXPECT_EQ(innerView->frame(), CGRectMake(10, 20, 30, 40));
}

class ConstraintTest : public testing::Test {
 protected:
  ConstraintTest() {
    innerView->setTranslatesAutoresizingMaskIntoConstraints(false);
    outerView->addSubview(innerView);
  }
  // Centres the inner view, with a minimum width and a fixed height.
  void activateConstraints(double minWidth, double height) {
    NSLayoutConstraint::activateConstraints({
        innerView->centerXAnchor().constraintEqualToAnchor(outerView->centerXAnchor()),
        innerView->centerYAnchor().constraintEqualToAnchor(outerView->centerYAnchor()),
        innerView->widthAnchor().constraintGreaterThanOrEqualToConstant(minWidth),
        innerView->heightAnchor().constraintEqualToConstant(height),
    });
  }

  Strong<NSView> outerView = makeView(CGRectMake(7, 9, 400, 300));
  Strong<NSView> innerView = makeView();
};

TEST_F(ConstraintTest, ConstraintsSetThePositionAndTheSizeOfAView) {
  activateConstraints(32, 32);
  EXPECT_EQ(innerView->frame(), CGRectMake(184, 134, 32, 32));
}

TEST_F(ConstraintTest, ConstraintsApplyAgainWhenTheSuperviewIsResized) {
  activateConstraints(32, 40);
  outerView->setFrame(CGRectMake(0, 0, 200, 100));
  EXPECT_EQ(innerView->frame(), CGRectMake(84, 30, 32, 40));
}

TEST_F(ConstraintTest, TheLargestMinimumWidthApplies) {
  NSLayoutConstraint::activateConstraints({
      innerView->widthAnchor().constraintGreaterThanOrEqualToConstant(50),
      innerView->widthAnchor().constraintGreaterThanOrEqualToConstant(20),
      innerView->heightAnchor().constraintEqualToConstant(10),
  });
  EXPECT_EQ(innerView->frame().size, (CGSize{50, 10}));
}

TEST_F(ConstraintTest, AViewCanBeCentredOnASibling) {
  const auto sibling = makeView(CGRectMake(100, 50, 20, 10));
  outerView->addSubview(sibling);
  NSLayoutConstraint::activateConstraints({
      innerView->centerXAnchor().constraintEqualToAnchor(sibling->centerXAnchor()),
      innerView->centerYAnchor().constraintEqualToAnchor(sibling->centerYAnchor()),
  });
  EXPECT_EQ(innerView->frame().origin, (CGPoint{110, 55}));
}

TEST_F(ConstraintTest, AnchorsSetThePropertiesOfAConstraint) {
  const auto centreConstraint =
      innerView->centerXAnchor().constraintEqualToAnchor(outerView->centerXAnchor());
  EXPECT_EQ(centreConstraint->firstItem(), innerView);
  EXPECT_EQ(centreConstraint->secondItem(), outerView);
  EXPECT_EQ(centreConstraint->attribute(), NSLayoutAttribute::CenterX);
  EXPECT_EQ(centreConstraint->relation(), NSLayoutRelation::Equal);
  const auto widthConstraint = innerView->widthAnchor().constraintGreaterThanOrEqualToConstant(32);
  EXPECT_EQ(widthConstraint->secondItem(), nullptr);
  EXPECT_EQ(widthConstraint->attribute(), NSLayoutAttribute::Width);
  EXPECT_EQ(widthConstraint->relation(), NSLayoutRelation::GreaterThanOrEqual);
  EXPECT_EQ(widthConstraint->constant(), 32);
}

TEST_F(ConstraintTest, ConstraintsBelongToTheSuperviewOfTheirFirstItem) {
  activateConstraints(32, 32);
  EXPECT_EQ(outerView->constraints().size(), 4u);
  EXPECT_TRUE(innerView->constraints().empty());
}

TEST_F(ConstraintTest, RemovingAViewRemovesItsConstraints) {
  activateConstraints(32, 32);
  innerView->removeFromSuperview();
  EXPECT_TRUE(outerView->constraints().empty());
  outerView->setFrame(CGRectMake(0, 0, 200, 100));
  EXPECT_EQ(innerView->frame(), CGRectMake(184, 134, 32, 32));
}

TEST_F(ConstraintTest, ConstraintsOfAViewWithoutASuperviewAreIgnored) {
  innerView->removeFromSuperview();
  activateConstraints(32, 32);
  EXPECT_TRUE(outerView->constraints().empty());
  EXPECT_EQ(innerView->frame(), CGRectZero);
}

TEST_F(ConstraintTest, ConstraintsDoNotApplyToAViewThatTranslatesItsAutoresizingMask) {
  innerView->setTranslatesAutoresizingMaskIntoConstraints(true);
  activateConstraints(32, 32);
  EXPECT_EQ(innerView->frame(), CGRectZero);
}

TEST_F(ConstraintTest, TheAutoresizingMaskIsIgnoredIfItIsNotTranslatedIntoConstraints) {
  innerView->setFrame(CGRectMake(0, 0, 10, 10));
  innerView->setAutoresizingMask(NSViewWidthSizable);
  outerView->setFrame(CGRectMake(0, 0, 500, 300));
  EXPECT_EQ(innerView->frame(), CGRectMake(0, 0, 10, 10));
}

TEST_F(ConstraintTest, ConstraintsDoNotKeepTheSuperviewAlive) {
  activateConstraints(32, 32);
  const Weak<NSView> weakOuter = outerView;
  outerView.reset();
  EXPECT_TRUE(weakOuter.expired());
}

}  // namespace
}  // namespace vel::test
