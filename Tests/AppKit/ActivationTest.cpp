// The user goes to another application and comes back.
#include "Tests/AppKit/EventRecorder.h"

namespace vel::test {
namespace {

class ActivationTest : public RecordedTest {
 protected:
  void leave() { platform.user().userDeactivatesApplication(); }
  void comeBack() { platform.user().userActivatesApplication(); }
};

TEST_F(ActivationTest, AnApplicationIsActiveAtFirst) { EXPECT_TRUE(NSApp->isActive()); }

TEST_F(ActivationTest, OnLeavingTheApplicationHearsBeforeItsKeyWindowResigns) {
  openKey("A");
  recorder.take();
  std::string during;
  recorder.onNext("application resigns", [&] { during = key(); });
  leave();
  EXPECT_EQ(recorder.take(), (Events{"application resigns", "A resigns"}));
  EXPECT_EQ(during, "A");
  EXPECT_EQ(key(), "none");
  EXPECT_FALSE(NSApp->isActive());
}

TEST_F(ActivationTest, OnLeavingWithoutAKeyWindowOnlyTheApplicationHears) {
  open("A");
  leave();
  EXPECT_EQ(recorder.take(), Events{"application resigns"});
}

TEST_F(ActivationTest, OnComingBackTheFormerKeyWindowBecomesKeyBeforeTheApplicationHears) {
  openKey("A");
  open("B");
  leave();
  recorder.take();
  comeBack();
  EXPECT_EQ(recorder.take(), (Events{"A becomes key", "application is active"}));
  EXPECT_TRUE(NSApp->isActive());
}

TEST_F(ActivationTest, OnComingBackWithoutAFormerKeyWindowNoneBecomesKey) {
  open("A");
  leave();
  recorder.take();
  comeBack();
  EXPECT_EQ(recorder.take(), Events{"application is active"});
  EXPECT_EQ(key(), "none");
}

TEST_F(ActivationTest, AFormerKeyWindowThatLeftTheScreenMeanwhileDoesNotBecomeKey) {
  open("B");
  const auto former = openKey("A");
  leave();
  former->close();
  recorder.take();
  comeBack();
  EXPECT_EQ(recorder.take(), Events{"application is active"});
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
  recorder.take();
  comeBack();
  EXPECT_EQ(recorder.take(), (Events{"B resigns", "A becomes key", "application is active"}));
}

TEST_F(ActivationTest, LeavingOrComingBackTwiceTellsNothingNew) {
  openKey("A");
  comeBack();
  EXPECT_EQ(recorder.take(), Events{"A becomes key"});
  leave();
  leave();
  EXPECT_EQ(recorder.take(), (Events{"application resigns", "A resigns"}));
  comeBack();
  comeBack();
  EXPECT_EQ(recorder.take(), (Events{"A becomes key", "application is active"}));
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
  recorder.onNext("A resigns", [&] { other->makeKeyWindow(); });
  leave();
  EXPECT_EQ(key(), "B");
}

}  // namespace
}  // namespace vel::test
