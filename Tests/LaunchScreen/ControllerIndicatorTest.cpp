// `createActivityIndicator` adds a spinner, the indicator, to the cover (the view of the launch
// screen's controller). `createConstraintsActivityIndicator` pins the indicator to the centre of
// the cover.
#include "Platform/Foundation/NSProcessInfo.h"
#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

class ControllerIndicatorTest : public CoverTest {
 protected:
  ControllerIndicatorTest() { controller->view()->setFrame(CGRectMake(0, 0, 800, 600)); }

  [[nodiscard]] Strong<NSProgressIndicator> indicator() const {
    return controller->activityIndicator();
  }
  // Creates an indicator while the operating system has this version. Returns the name of the
  // indicator's appearance, or "none".
  std::string_view appearanceOn(NSOperatingSystemVersion version) {
    NSProcessInfo::setOperatingSystemVersion(version);
    controller->createActivityIndicator();
    return indicator()->appearance() != nullptr ? indicator()->appearance()->name() : "none";
  }
};

TEST_F(ControllerIndicatorTest, ANewIndicatorIsASpinnerWithoutSizeAndAnimation) {
  controller->createActivityIndicator();
  ASSERT_NE(indicator(), nullptr);
  EXPECT_EQ(indicator()->style(), NSProgressIndicatorStyleSpinning);
  EXPECT_EQ(static_cast<int>(NSProgressIndicatorStyleSpinning), 1);
  EXPECT_FALSE(indicator()->isAnimating());
  EXPECT_EQ(indicator()->frame(), CGRectZero);
}

TEST_F(ControllerIndicatorTest, ANewIndicatorHasNoConstraints) {
  controller->createActivityIndicator();
  EXPECT_FALSE(indicator()->translatesAutoresizingMaskIntoConstraints());
  EXPECT_TRUE(controller->view()->constraints().empty());
  controller->view()->setFrame(CGRectMake(0, 0, 1000, 500));
  EXPECT_EQ(indicator()->frame(), CGRectZero);
}

TEST_F(ControllerIndicatorTest, ANewIndicatorIsInFrontOfTheOtherSubviews) {
  const auto lowerView = NSView::initWithFrame(CGRectZero);
  const auto upperView = NSView::initWithFrame(CGRectZero);
  controller->view()->addSubview(lowerView);
  controller->view()->addSubview(upperView);
  controller->createActivityIndicator();
  EXPECT_EQ(controller->view()->subviews(), (NSArray<NSView>{lowerView, upperView, indicator()}));
}

TEST_F(ControllerIndicatorTest, AppearanceIsNotSetBeforeVersion10_14) {
  EXPECT_EQ(appearanceOn({10, 13, 0}), "none");
  EXPECT_EQ(appearanceOn({10, 13, 99}), "none");
}

TEST_F(ControllerIndicatorTest, AppearanceIsAquaSinceVersion10_14) {
  EXPECT_EQ(appearanceOn({10, 14, 0}), "NSAppearanceNameAqua");
  EXPECT_EQ(appearanceOn({15, 0, 0}), "NSAppearanceNameAqua");
}

TEST_F(ControllerIndicatorTest, APinnedIndicatorIsCentredAnd32PointsHigh) {
  controller->createActivityIndicator();
  controller->createConstraintsActivityIndicator();
  const CGRect frame = indicator()->frame();
  EXPECT_EQ(frame.size.height, 32);
  EXPECT_GE(frame.size.width, 32);
  EXPECT_EQ(frame.origin.x + frame.size.width / 2, 400);
  EXPECT_EQ(frame.origin.y + frame.size.height / 2, 300);
}

TEST_F(ControllerIndicatorTest, APinnedIndicatorStaysCentredWhenTheCoverIsResized) {
  controller->createActivityIndicator();
  controller->createConstraintsActivityIndicator();
  controller->view()->setFrame(CGRectMake(7, 8, 1000, 500));
  EXPECT_EQ(indicator()->frame(), CGRectMake(484, 234, 32, 32));
}

TEST_F(ControllerIndicatorTest, PinningConstrainsCentreHeightAndMinimumWidth) {
  controller->createActivityIndicator();
  controller->createConstraintsActivityIndicator();
  struct ExpectedConstraint {
    NSLayoutAttribute attribute;
    NSLayoutRelation relation;
    Strong<NSView> secondItem;
    double constant;
  };
  const std::vector<ExpectedConstraint> expectedConstraints{
      {NSLayoutAttribute::CenterX, NSLayoutRelation::Equal, controller->view(), 0},
      {NSLayoutAttribute::CenterY, NSLayoutRelation::Equal, controller->view(), 0},
      {NSLayoutAttribute::Width, NSLayoutRelation::GreaterThanOrEqual, nullptr, 32},
      {NSLayoutAttribute::Height, NSLayoutRelation::Equal, nullptr, 32}};
  const NSArray<NSLayoutConstraint>& constraints = controller->view()->constraints();
  ASSERT_EQ(constraints.size(), expectedConstraints.size());
  for (std::size_t index = 0; index < constraints.size(); ++index) {
    SCOPED_TRACE(index);
    EXPECT_EQ(constraints[index]->firstItem(), indicator());
    EXPECT_EQ(constraints[index]->attribute(), expectedConstraints[index].attribute);
    EXPECT_EQ(constraints[index]->relation(), expectedConstraints[index].relation);
    EXPECT_EQ(constraints[index]->secondItem(), expectedConstraints[index].secondItem);
    EXPECT_EQ(constraints[index]->constant(), expectedConstraints[index].constant);
  }
}

TEST_F(ControllerIndicatorTest, PinningWithoutAnIndicatorCreatesNoConstraint) {
  controller->createConstraintsActivityIndicator();
  EXPECT_TRUE(controller->view()->constraints().empty());
  EXPECT_EQ(indicator(), nullptr);
}

TEST_F(ControllerIndicatorTest, OnlyTheLastCreatedIndicatorIsPinned) {
  controller->createActivityIndicator();
  const auto firstIndicator = indicator();
  controller->createActivityIndicator();
  ASSERT_NE(indicator(), firstIndicator);
  EXPECT_EQ(controller->view()->subviews(), (NSArray<NSView>{firstIndicator, indicator()}));
  controller->createConstraintsActivityIndicator();
  EXPECT_EQ(controller->view()->constraints().size(), 4u);
  EXPECT_EQ(firstIndicator->frame(), CGRectZero);
  EXPECT_EQ(indicator()->frame(), CGRectMake(384, 284, 32, 32));
}

TEST_F(ControllerIndicatorTest, TheAnimationStartsWhenTheCoverAppears) {
  const auto window = openPlayerWindow();
  controller->createActivityIndicator();
  controller->createConstraintsActivityIndicator();
  controller->presentForWindowWithPresentationMode(window, LaunchScreenPresentationEmbedded);
  EXPECT_EQ(indicator()->frame(), CGRectMake(624, 344, 32, 32));
  const Scene& scene = platform.windowSystem().window(window->handle())->scene;
  ASSERT_EQ(scene.size(), 2u);
  EXPECT_EQ(scene[1].kind, SceneItem::Kind::Spinner);
  EXPECT_EQ(scene[1].frame, CGRectMake(624, 344, 32, 32));
  EXPECT_TRUE(scene[1].isAnimated);
}

TEST_F(ControllerIndicatorTest, TheIndicatorIsDestroyedWithTheController) {
  controller->createActivityIndicator();
  const Weak<NSProgressIndicator> weakIndicator = indicator();
  controller = nullptr;
  EXPECT_TRUE(weakIndicator.expired());
}

TEST_F(ControllerIndicatorTest, AnIndicatorThatIsNotInAViewIsNotPinned) {
  const auto detachedIndicator = NSProgressIndicator::initWithFrame(CGRectZero);
  controller->setActivityIndicator(detachedIndicator);
  controller->createConstraintsActivityIndicator();
  EXPECT_TRUE(controller->view()->constraints().empty());
  controller->setActivityIndicator(nullptr);
  EXPECT_EQ(indicator(), nullptr);
}

}  // namespace
}  // namespace vel::test
