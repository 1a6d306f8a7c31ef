// Views: the tree, autoresizing and constraints.
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

TEST_F(ViewTreeTest, RelativeToNoSubviewMeansInFrontOfAllOrBehindAll) {
  const auto first = view();
  const auto last = view();
  root->addSubviewPositionedRelativeTo(last, NSWindowAbove, root);
  root->addSubviewPositionedRelativeTo(first, NSWindowBelow, nullptr);
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{first, back, front, last}));
}

TEST_F(ViewTreeTest, ASubviewIsMovedAmongItsSiblings) {
  root->addSubviewPositionedRelativeTo(front, NSWindowBelow, back);
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{front, back}));
  root->addSubviewPositionedRelativeTo(front, NSWindowAbove, front);
  EXPECT_EQ(root->subviews(), (NSArray<NSView>{back, front}));
}

TEST_F(ViewTreeTest, AViewIsTakenFromItsFormerSuperview) {
  front->addSubview(back);
  EXPECT_EQ(root->subviews(), NSArray<NSView>{front});
  EXPECT_EQ(back->superview(), front);
}

TEST_F(ViewTreeTest, NoneItselfAndAViewAroundItAreRefused) {
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

TEST_F(ViewTreeTest, ASuperviewKeepsItsSubviewsAndTheyDoNotKeepIt) {
  const Weak<NSView> seen = back;
  back.reset();
  EXPECT_FALSE(seen.expired());
  const Weak<NSView> seenRoot = root;
  root.reset();
  EXPECT_TRUE(seenRoot.expired());
  EXPECT_TRUE(seen.expired());
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

TEST_F(ViewTreeTest, BoundsAreTheSizeAtTheOrigin) {
  EXPECT_EQ(view(CGRectMake(3, 4, 50, 60))->bounds(), CGRectMake(0, 0, 50, 60));
}

// Autoresizing: a superview of 100 x 100 grows to 200 x 160.
CGRect resized(NSAutoresizingMaskOptions mask, CGSize to = {200, 160}) {
  const auto outer = view(CGRectMake(0, 0, 100, 100));
  const auto inner = view(CGRectMake(10, 20, 30, 40));
  inner->setAutoresizingMask(mask);
  outer->addSubview(inner);
  outer->setFrame({{5, 5}, to});
  return inner->frame();
}

TEST(AutoresizingTest, WithoutAMaskAViewStaysAsItIs) {
  EXPECT_EQ(resized(NSViewNotSizable), CGRectMake(10, 20, 30, 40));
}

TEST(AutoresizingTest, ASizableSideTakesTheWholeChange) {
  EXPECT_EQ(resized(NSViewWidthSizable), CGRectMake(10, 20, 130, 40));
  EXPECT_EQ(resized(NSViewHeightSizable), CGRectMake(10, 20, 30, 100));
  EXPECT_EQ(resized(NSViewWidthSizable | NSViewHeightSizable), CGRectMake(10, 20, 130, 100));
}

TEST(AutoresizingTest, AMarginThatGivesMovesTheView) {
  EXPECT_EQ(resized(NSViewMinXMargin | NSViewMinYMargin), CGRectMake(110, 80, 30, 40));
  EXPECT_EQ(resized(NSViewMaxXMargin | NSViewMaxYMargin), CGRectMake(10, 20, 30, 40));
}

TEST(AutoresizingTest, SeveralPartsShareTheChange) {
  EXPECT_EQ(resized(NSViewMinXMargin | NSViewMaxXMargin), CGRectMake(60, 20, 30, 40));
  EXPECT_EQ(resized(NSViewMinYMargin | NSViewHeightSizable | NSViewMaxYMargin),
            CGRectMake(10, 40, 30, 60));
}

TEST(AutoresizingTest, AShrinkingSideEndsAtNothing) {
  EXPECT_EQ(resized(NSViewWidthSizable, {20, 100}), CGRectMake(10, 20, 0, 40));
}

TEST(AutoresizingTest, InnerViewsFollowInTheirTurn) {
  const auto outer = view(CGRectMake(0, 0, 100, 100));
  const auto middle = view(CGRectMake(0, 0, 100, 100));
  const auto inner = view(CGRectMake(0, 0, 100, 100));
  outer->addSubview(middle);
  middle->addSubview(inner);
  for (const auto& each : {middle, inner}) {
    each->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
  }
  outer->setFrame(CGRectMake(0, 0, 300, 200));
  EXPECT_EQ(inner->frame(), CGRectMake(0, 0, 300, 200));
}

TEST(AutoresizingTest, MovingASuperviewMovesNothingInIt) {
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
  // What the indicator has: in the middle, at least so wide and exactly so high.
  void activate(double width, double height) {
    NSLayoutConstraint::activateConstraints({
        inner->centerXAnchor().constraintEqualToAnchor(outer->centerXAnchor()),
        inner->centerYAnchor().constraintEqualToAnchor(outer->centerYAnchor()),
        inner->widthAnchor().constraintGreaterThanOrEqualToConstant(width),
        inner->heightAnchor().constraintEqualToConstant(height),
    });
  }

  Strong<NSView> outer = view(CGRectMake(7, 9, 400, 300));
  Strong<NSView> inner = view();
};

TEST_F(ConstraintTest, PlaceAViewInTheMiddleWithItsSize) {
  activate(32, 32);
  EXPECT_EQ(inner->frame(), CGRectMake(184, 134, 32, 32));
}

TEST_F(ConstraintTest, FollowAChangeOfTheSuperviewsSize) {
  activate(32, 40);
  outer->setFrame(CGRectMake(0, 0, 200, 100));
  EXPECT_EQ(inner->frame(), CGRectMake(84, 30, 32, 40));
}

TEST_F(ConstraintTest, AGreaterBoundCountsAmongSeveral) {
  NSLayoutConstraint::activateConstraints({
      inner->widthAnchor().constraintGreaterThanOrEqualToConstant(50),
      inner->widthAnchor().constraintGreaterThanOrEqualToConstant(20),
      inner->heightAnchor().constraintEqualToConstant(10),
  });
  EXPECT_EQ(inner->frame().size, (CGSize{50, 10}));
}

TEST_F(ConstraintTest, ASiblingsCentreIsTakenToo) {
  const auto sibling = view(CGRectMake(100, 50, 20, 10));
  outer->addSubview(sibling);
  NSLayoutConstraint::activateConstraints({
      inner->centerXAnchor().constraintEqualToAnchor(sibling->centerXAnchor()),
      inner->centerYAnchor().constraintEqualToAnchor(sibling->centerYAnchor()),
  });
  EXPECT_EQ(inner->frame().origin, (CGPoint{110, 55}));
}

TEST_F(ConstraintTest, SayWhatTheyRelate) {
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

TEST_F(ConstraintTest, BelongToTheSuperviewOfTheirFirstView) {
  activate(32, 32);
  EXPECT_EQ(outer->constraints().size(), 4u);
  EXPECT_TRUE(inner->constraints().empty());
}

TEST_F(ConstraintTest, GoWithTheViewThatIsTakenAway) {
  activate(32, 32);
  inner->removeFromSuperview();
  EXPECT_TRUE(outer->constraints().empty());
  outer->setFrame(CGRectMake(0, 0, 200, 100));
  EXPECT_EQ(inner->frame(), CGRectMake(184, 134, 32, 32));
}

TEST_F(ConstraintTest, OfAViewWithoutASuperviewAreIgnored) {
  inner->removeFromSuperview();
  activate(32, 32);
  EXPECT_TRUE(outer->constraints().empty());
  EXPECT_EQ(inner->frame(), CGRectZero);
}

TEST_F(ConstraintTest, DoNotPlaceAViewThatItsMaskPlaces) {
  inner->setTranslatesAutoresizingMaskIntoConstraints(true);
  activate(32, 32);
  EXPECT_EQ(inner->frame(), CGRectZero);
}

TEST_F(ConstraintTest, AViewThatConstraintsPlaceHeedsNoMask) {
  inner->setFrame(CGRectMake(0, 0, 10, 10));
  inner->setAutoresizingMask(NSViewWidthSizable);
  outer->setFrame(CGRectMake(0, 0, 500, 300));
  EXPECT_EQ(inner->frame(), CGRectMake(0, 0, 10, 10));
}

TEST_F(ConstraintTest, ADyingSuperviewTakesItsConstraintsAlong) {
  activate(32, 32);
  const Weak<NSView> seen = outer;
  outer.reset();
  EXPECT_TRUE(seen.expired());
}

}  // namespace
}  // namespace vel::test
