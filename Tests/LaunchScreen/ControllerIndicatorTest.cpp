// The spinning indicator that an outside caller can add to the cover.
#include "Platform/Foundation/NSProcessInfo.h"
#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

class ControllerIndicatorTest : public CoverTest {
 protected:
  ControllerIndicatorTest() { cover->view()->setFrame(CGRectMake(0, 0, 800, 600)); }

  [[nodiscard]] Strong<NSProgressIndicator> indicator() const { return cover->activityIndicator(); }
  // The appearance name of an indicator that is created on this version of the system.
  std::string_view appearanceOn(NSOperatingSystemVersion version) {
    NSProcessInfo::setOperatingSystemVersion(version);
    cover->createActivityIndicator();
    return indicator()->appearance() != nullptr ? indicator()->appearance()->name() : "none";
  }
};

TEST_F(ControllerIndicatorTest, StartsStoppedWithSpinningStyleAndWithoutASize) {
  cover->createActivityIndicator();
  ASSERT_NE(indicator(), nullptr);
  EXPECT_EQ(indicator()->style(), NSProgressIndicatorStyleSpinning);
  EXPECT_EQ(static_cast<int>(NSProgressIndicatorStyleSpinning), 1);
  EXPECT_FALSE(indicator()->isAnimating());
  EXPECT_EQ(indicator()->frame(), CGRectZero);
}

TEST_F(ControllerIndicatorTest, UsesConstraintsAndHasNoneAtFirst) {
  cover->createActivityIndicator();
  EXPECT_FALSE(indicator()->translatesAutoresizingMaskIntoConstraints());
  EXPECT_TRUE(cover->view()->constraints().empty());
  cover->view()->setFrame(CGRectMake(0, 0, 1000, 500));
  EXPECT_EQ(indicator()->frame(), CGRectZero);
}

TEST_F(ControllerIndicatorTest, IsInFrontOfAllSubviews) {
  const auto below = NSView::initWithFrame(CGRectZero);
  const auto above = NSView::initWithFrame(CGRectZero);
  cover->view()->addSubview(below);
  cover->view()->addSubview(above);
  cover->createActivityIndicator();
  EXPECT_EQ(cover->view()->subviews(), (NSArray<NSView>{below, above, indicator()}));
}

TEST_F(ControllerIndicatorTest, BeforeVersion10_14ItHasNoAppearance) {
  EXPECT_EQ(appearanceOn({10, 13, 0}), "none");
  EXPECT_EQ(appearanceOn({10, 13, 99}), "none");
}

TEST_F(ControllerIndicatorTest, FromVersion10_14OnItsAppearanceIsAqua) {
  EXPECT_EQ(appearanceOn({10, 14, 0}), "NSAppearanceNameAqua");
  EXPECT_EQ(appearanceOn({15, 0, 0}), "NSAppearanceNameAqua");
}

TEST_F(ControllerIndicatorTest, PinnedItIsCentredAnd32PointsHigh) {
  cover->createActivityIndicator();
  cover->createConstraintsActivityIndicator();
  const CGRect frame = indicator()->frame();
  EXPECT_EQ(frame.size.height, 32);
  EXPECT_GE(frame.size.width, 32);
  EXPECT_EQ(frame.origin.x + frame.size.width / 2, 400);
  EXPECT_EQ(frame.origin.y + frame.size.height / 2, 300);
}

TEST_F(ControllerIndicatorTest, PinnedItStaysCentredWhenTheViewIsResized) {
  cover->createActivityIndicator();
  cover->createConstraintsActivityIndicator();
  cover->view()->setFrame(CGRectMake(7, 8, 1000, 500));
  EXPECT_EQ(indicator()->frame(), CGRectMake(484, 234, 32, 32));
}

TEST_F(ControllerIndicatorTest, PinnedItHasFourConstraintsWithAMinimumWidthAndAFixedHeight) {
  cover->createActivityIndicator();
  cover->createConstraintsActivityIndicator();
  struct Expected {
    NSLayoutAttribute attribute;
    NSLayoutRelation relation;
    Strong<NSView> second;
    double constant;
  };
  const std::vector<Expected> expected{
      {NSLayoutAttribute::CenterX, NSLayoutRelation::Equal, cover->view(), 0},
      {NSLayoutAttribute::CenterY, NSLayoutRelation::Equal, cover->view(), 0},
      {NSLayoutAttribute::Width, NSLayoutRelation::GreaterThanOrEqual, nullptr, 32},
      {NSLayoutAttribute::Height, NSLayoutRelation::Equal, nullptr, 32}};
  const NSArray<NSLayoutConstraint>& made = cover->view()->constraints();
  ASSERT_EQ(made.size(), expected.size());
  for (std::size_t index = 0; index < made.size(); ++index) {
    SCOPED_TRACE(index);
    EXPECT_EQ(made[index]->firstItem(), indicator());
    EXPECT_EQ(made[index]->attribute(), expected[index].attribute);
    EXPECT_EQ(made[index]->relation(), expected[index].relation);
    EXPECT_EQ(made[index]->secondItem(), expected[index].second);
    EXPECT_EQ(made[index]->constant(), expected[index].constant);
  }
}

TEST_F(ControllerIndicatorTest, PinningWithoutAnIndicatorCreatesNoConstraint) {
  cover->createConstraintsActivityIndicator();
  EXPECT_TRUE(cover->view()->constraints().empty());
  EXPECT_EQ(indicator(), nullptr);
}

TEST_F(ControllerIndicatorTest,
       AfterASecondCreationTheFirstStaysInTheViewAndOnlyTheSecondIsPinned) {
  cover->createActivityIndicator();
  const auto first = indicator();
  cover->createActivityIndicator();
  ASSERT_NE(indicator(), first);
  EXPECT_EQ(cover->view()->subviews(), (NSArray<NSView>{first, indicator()}));
  cover->createConstraintsActivityIndicator();
  EXPECT_EQ(cover->view()->constraints().size(), 4u);
  EXPECT_EQ(first->frame(), CGRectZero);
  EXPECT_EQ(indicator()->frame(), CGRectMake(384, 284, 32, 32));
}

TEST_F(ControllerIndicatorTest, ItAppearsWithItsSuperviewAndIsAnimated) {
  const auto window = openPlayerWindow();
  cover->createActivityIndicator();
  cover->createConstraintsActivityIndicator();
  cover->presentForWindowWithPresentationMode(window, LaunchScreenPresentationEmbedded);
  EXPECT_EQ(indicator()->frame(), CGRectMake(624, 344, 32, 32));
  const Scene& scene = platform.windowSystem().window(window->handle())->scene;
  ASSERT_EQ(scene.size(), 2u);
  EXPECT_EQ(scene[1].kind, SceneItem::Kind::Spinner);
  EXPECT_EQ(scene[1].frame, CGRectMake(624, 344, 32, 32));
  EXPECT_TRUE(scene[1].isAnimated);
}

TEST_F(ControllerIndicatorTest, TheControllerOwnsIt) {
  cover->createActivityIndicator();
  const Weak<NSProgressIndicator> made = indicator();
  cover = nullptr;
  EXPECT_TRUE(made.expired());
}

TEST_F(ControllerIndicatorTest, AnIndicatorOfTheCallerCanBeSetAndPinned) {
  const auto own = NSProgressIndicator::initWithFrame(CGRectZero);
  cover->setActivityIndicator(own);
  cover->createConstraintsActivityIndicator();  // the indicator is not in a view yet
  EXPECT_TRUE(cover->view()->constraints().empty());
  cover->setActivityIndicator(nullptr);
  EXPECT_EQ(indicator(), nullptr);
}

}  // namespace
}  // namespace vel::test
