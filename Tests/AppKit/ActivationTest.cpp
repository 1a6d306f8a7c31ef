// The user goes to another application and comes back.
#include "Tests/AppKit/Stage.h"

namespace vel::test {
namespace {

class ActivationTest : public StageTest {
 protected:
  void leave() { platform.user().userDeactivatesApplication(); }
  void comeBack() { platform.user().userActivatesApplication(); }
};

TEST_F(ActivationTest, AnApplicationIsActiveAtFirst) { EXPECT_TRUE(NSApp->isActive()); }

TEST_F(ActivationTest, OnLeavingTheApplicationHearsBeforeItsKeyWindowResigns) {
  openKey("A");
  stage.take();
  std::string during;
  stage.at("application resigns", [&] { during = key(); });
  leave();
  EXPECT_EQ(stage.take(), (Story{"application resigns", "A resigns"}));
  EXPECT_EQ(during, "A");
  EXPECT_EQ(key(), "none");
  EXPECT_FALSE(NSApp->isActive());
}

TEST_F(ActivationTest, OnLeavingWithoutAKeyWindowOnlyTheApplicationHears) {
  open("A");
  leave();
  EXPECT_EQ(stage.take(), Story{"application resigns"});
}

TEST_F(ActivationTest, OnComingBackTheFormerKeyWindowBecomesKeyBeforeTheApplicationHears) {
  openKey("A");
  open("B");
  leave();
  stage.take();
  comeBack();
  EXPECT_EQ(stage.take(), (Story{"A becomes key", "application is active"}));
  EXPECT_TRUE(NSApp->isActive());
}

TEST_F(ActivationTest, OnComingBackWithoutAFormerKeyWindowNoneBecomesKey) {
  open("A");
  leave();
  stage.take();
  comeBack();
  EXPECT_EQ(stage.take(), Story{"application is active"});
  EXPECT_EQ(key(), "none");
}

TEST_F(ActivationTest, AFormerKeyWindowThatLeftTheScreenMeanwhileDoesNotBecomeKey) {
  open("B");
  const auto former = openKey("A");
  leave();
  former->close();
  stage.take();
  comeBack();
  EXPECT_EQ(stage.take(), Story{"application is active"});
}

TEST_F(ActivationTest, AFormerKeyWindowThatNobodyKeepsMeanwhileIsForgotten) {
  Strong<NSWindow> former = openKey("A");
  leave();
  former->close();
  former.reset();
  comeBack();
  EXPECT_EQ(key(), "none");
}

TEST_F(ActivationTest, TheFormerKeyWindowComesBeforeOneThatWasMadeKeyMeanwhile) {
  openKey("A");
  const auto other = open("B");
  leave();
  other->makeKeyWindow();
  stage.take();
  comeBack();
  EXPECT_EQ(stage.take(), (Story{"B resigns", "A becomes key", "application is active"}));
}

TEST_F(ActivationTest, LeavingOrComingBackTwiceTellsNothingNew) {
  openKey("A");
  comeBack();
  EXPECT_EQ(stage.take(), Story{"A becomes key"});
  leave();
  leave();
  EXPECT_EQ(stage.take(), (Story{"application resigns", "A resigns"}));
  comeBack();
  comeBack();
  EXPECT_EQ(stage.take(), (Story{"A becomes key", "application is active"}));
}

TEST_F(ActivationTest, TheKeyWindowIsTheOneAtTheDeactivationAndNotTheOneBefore) {
  openKey("A");
  openKey("B");
  leave();
  comeBack();
  EXPECT_EQ(key(), "B");
  platform.user().userMovesFocusAway();
  leave();
  comeBack();
  EXPECT_EQ(key(), "none");
}

TEST_F(ActivationTest, AHandlersWishStandsOnLeaving) {
  openKey("A");
  const auto other = open("B");
  stage.at("A resigns", [&] { other->makeKeyWindow(); });
  leave();
  EXPECT_EQ(key(), "B");
}

}  // namespace
}  // namespace vel::test
