// The creation of the launch screen's controller ("the cover"), and its delegates.
#include <limits>

#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

using Limits = std::numeric_limits<double>;

class ControllerCreationTest : public CoverTest {
 protected:
  static Strong<LaunchScreenViewController> createWithInterval(double seconds) {
    configuration().setExpirationTimeInterval(seconds);
    return LaunchScreenViewController::init();
  }
};

TEST_F(ControllerCreationTest, InitReturnsNullAndLogsNothingIfTheIntervalIsNotPositive) {
  EXPECT_EQ(createWithInterval(0), nullptr);
  EXPECT_EQ(createWithInterval(-0.0), nullptr);
  EXPECT_EQ(createWithInterval(-1), nullptr);
  EXPECT_EQ(createWithInterval(-Limits::denorm_min()), nullptr);
  EXPECT_EQ(createWithInterval(-Limits::infinity()), nullptr);
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ControllerCreationTest, InitCreatesAControllerForAnyPositiveInterval) {
  EXPECT_NE(createWithInterval(0.1), nullptr);
  EXPECT_NE(createWithInterval(Limits::denorm_min()), nullptr);
  EXPECT_NE(createWithInterval(Limits::infinity()), nullptr);
}

TEST_F(ControllerCreationTest, InitCreatesAControllerIfTheIntervalIsNaN) {
  EXPECT_NE(createWithInterval(Limits::quiet_NaN()), nullptr);
}

TEST_F(ControllerCreationTest, InitReadsTheCurrentDefaultConfiguration) {
  // The interval of a new configuration is 0, so no controller is created.
  LaunchScreenConfiguration::setDefaultConfiguration(LaunchScreenConfiguration::init());
  EXPECT_EQ(LaunchScreenViewController::init(), nullptr);
}

TEST_F(ControllerCreationTest, ANewControllerIsInEmbeddedModeAndItsOtherPropertiesAreUnset) {
  const auto controller = createWithInterval(0.1);
  EXPECT_EQ(controller->presentationMode(), 0);
  EXPECT_EQ(controller->appWindow(), nullptr);
  EXPECT_EQ(controller->appWindowStyleMask(), 0xFFFFFFFFFFFFFFFF);  // no style mask is saved
  EXPECT_EQ(controller->activityIndicator(), nullptr);
  EXPECT_EQ(controller->delegates(), nullptr);
}

TEST_F(ControllerCreationTest, TheNibBundleIsTheBundleOfTheControllersClass) {
  ASSERT_NE(cover->nibBundle(), nullptr);
  EXPECT_EQ(cover->nibBundle()->principalClass(), "LaunchScreenViewController");
}

TEST_F(ControllerCreationTest, TheControllerCreatesAnEmptyViewOnFirstUse) {
  EXPECT_FALSE(cover->isViewLoaded());
  EXPECT_EQ(cover->view()->className(), "NSView");
  EXPECT_TRUE(cover->view()->subviews().empty());
  EXPECT_FALSE(cover->view()->wantsLayer());
  EXPECT_EQ(cover->view()->viewController(), cover);
}

TEST_F(ControllerCreationTest, TheClassNameIsLaunchScreenViewController) {
  EXPECT_EQ(cover->className(), "LaunchScreenViewController");
}

/// A delegate that is equal to every delegate with the same number.
class NumberedDelegate final : public Class<NumberedDelegate, "NumberedDelegate", NSObject,
                                            LaunchScreenViewControllerDelegate> {
 public:
  explicit NumberedDelegate(int number) : number_(number) {}
  [[nodiscard]] bool isEqual(const NSObjectProtocol* other) const override {
    const auto* const otherDelegate = dynamic_cast<const NumberedDelegate*>(other);
    return otherDelegate != nullptr && otherDelegate->number_ == number_;
  }

 private:
  int number_;
};

using ControllerDelegatesTest = CoverTest;

TEST_F(ControllerDelegatesTest, AddingNullCreatesAnEmptyArray) {
  cover->addDelegate(nullptr);
  ASSERT_NE(cover->delegates(), nullptr);
  EXPECT_EQ(cover->delegates()->count(), 0u);
}

TEST_F(ControllerDelegatesTest, DelegatesAreStoredInTheOrderInWhichTheyWereAdded) {
  const auto firstDelegate = addDelegate("first");
  const auto array = cover->delegates();
  const auto secondDelegate = addDelegate("second");
  EXPECT_EQ(cover->delegates(), array);
  ASSERT_EQ(array->count(), 2u);
  EXPECT_EQ(array->objectAtIndex(0), firstDelegate);
  EXPECT_EQ(array->objectAtIndex(1), secondDelegate);
}

TEST_F(ControllerDelegatesTest, ADelegateAddedTwiceIsStoredOnce) {
  const auto delegate = addDelegate("first");
  cover->addDelegate(delegate);
  EXPECT_EQ(cover->delegates()->count(), 1u);
}

TEST_F(ControllerDelegatesTest, AnEqualDelegateIsNotAdded) {
  const auto firstDelegate = make<NumberedDelegate>(1);
  cover->addDelegate(firstDelegate);
  cover->addDelegate(make<NumberedDelegate>(1));
  cover->addDelegate(make<NumberedDelegate>(2));
  EXPECT_EQ(cover->delegates()->count(), 2u);
  EXPECT_EQ(cover->delegates()->objectAtIndex(0), firstDelegate);
}

TEST_F(ControllerDelegatesTest, RemovingADelegateRemovesAnEqualDelegate) {
  cover->addDelegate(make<NumberedDelegate>(1));
  const auto secondDelegate = make<NumberedDelegate>(2);
  cover->addDelegate(secondDelegate);
  cover->removeDelegate(make<NumberedDelegate>(1));
  ASSERT_EQ(cover->delegates()->count(), 1u);
  EXPECT_EQ(cover->delegates()->objectAtIndex(0), secondDelegate);
}

TEST_F(ControllerDelegatesTest, RemovingADelegateKeepsTheOrderOfTheOtherDelegates) {
  const auto firstDelegate = addDelegate("first");
  const auto secondDelegate = addDelegate("second");
  const auto thirdDelegate = addDelegate("third");
  cover->removeDelegate(secondDelegate);
  ASSERT_EQ(cover->delegates()->count(), 2u);
  EXPECT_EQ(cover->delegates()->objectAtIndex(0), firstDelegate);
  EXPECT_EQ(cover->delegates()->objectAtIndex(1), thirdDelegate);
}

TEST_F(ControllerDelegatesTest, RemovingAnUnknownDelegateChangesNothing) {
  const auto delegate = addDelegate("first");
  cover->removeDelegate(make<CoverDelegate>("second", journal));
  cover->removeDelegate(nullptr);
  ASSERT_EQ(cover->delegates()->count(), 1u);
  EXPECT_EQ(cover->delegates()->objectAtIndex(0), delegate);
}

TEST_F(ControllerDelegatesTest, RemoveDelegateAndDeactivateCreateNoArray) {
  cover->removeDelegate(make<CoverDelegate>("first", journal));
  cover->deactivate();
  EXPECT_EQ(cover->delegates(), nullptr);
}

TEST_F(ControllerDelegatesTest, TheControllerOwnsItsDelegatesUntilTheyAreRemoved) {
  const Weak<CoverDelegate> weakDelegate = addDelegate("first");
  EXPECT_FALSE(weakDelegate.expired());
  cover->deactivate();
  EXPECT_TRUE(weakDelegate.expired());
}

TEST_F(ControllerDelegatesTest, DeactivateRemovesAllDelegatesAndKeepsTheArray) {
  addDelegate("first");
  addDelegate("second");
  const auto array = cover->delegates();
  cover->deactivate();
  cover->deactivate();
  EXPECT_EQ(cover->delegates(), array);
  EXPECT_EQ(array->count(), 0u);
}

TEST_F(ControllerDelegatesTest, TheDestructorRemovesAllDelegates) {
  addDelegate("first");
  const auto array = cover->delegates();
  cover = nullptr;
  EXPECT_EQ(array->count(), 0u);
}

TEST_F(ControllerDelegatesTest, DelegatesAreNotifiedInTheOrderInWhichTheyWereAdded) {
  const auto firstDelegate = addDelegate("first");
  const auto secondDelegate = addDelegate("second");
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss", "second: did dismiss"}));
  EXPECT_EQ(firstDelegate->lastController.lock(), cover);
  EXPECT_EQ(secondDelegate->lastController.lock(), cover);
}

TEST_F(ControllerDelegatesTest, ADelegateThatDoesNotRespondToAnOperationIsSkipped) {
  addDelegate("first")->stopRespondingTo(CoverCall::DidDismiss);
  addDelegate("second")->stopRespondingTo(CoverCall::WillPresent);
  cover->viewWillAppear();
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present",  //
                                 "viewDidDisappear", "second: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, WithoutADelegatesArrayNoDelegateIsNotified) {
  cover->viewWillAppear();
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "viewDidDisappear"}));
}

TEST_F(ControllerDelegatesTest, AfterDeactivateOnlyNewDelegatesAreNotified) {
  const auto delegate = addDelegate("first");
  cover->deactivate();
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), Lines{"viewDidDisappear"});
  cover->addDelegate(delegate);
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, AddingADelegateDuringANotificationRaisesTheMutationError) {
  addDelegate("first")->onNext(CoverCall::DidDismiss, [this] { addDelegate("late"); });
  addDelegate("second");
  EXPECT_THROW(cover->viewDidDisappear(), NSCollectionMutatedError);
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, RemovingADelegateDuringANotificationRaisesTheMutationError) {
  const auto firstDelegate = addDelegate("first");
  addDelegate("second");
  firstDelegate->onNext(CoverCall::WillPresent, [&] { cover->removeDelegate(firstDelegate); });
  EXPECT_THROW(cover->viewWillAppear(), NSCollectionMutatedError);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present"}));
}

TEST_F(ControllerDelegatesTest,
       RemovingTheOnlyDelegateDuringItsNotificationRaisesTheMutationError) {
  const auto onlyDelegate = addDelegate("only");
  onlyDelegate->onNext(CoverCall::DidDismiss, [&] { cover->removeDelegate(onlyDelegate); });
  EXPECT_THROW(cover->viewDidDisappear(), NSCollectionMutatedError);
}

TEST_F(ControllerDelegatesTest, DeactivateDuringANotificationRaisesTheMutationError) {
  addDelegate("first")->onNext(CoverCall::DidDismiss, [this] { cover->deactivate(); });
  EXPECT_THROW(cover->viewDidDisappear(), NSCollectionMutatedError);
}

TEST_F(ControllerDelegatesTest, CallsThatDoNotChangeTheArrayAreAllowedDuringANotification) {
  const auto firstDelegate = addDelegate("first");
  addDelegate("second");
  firstDelegate->onNext(CoverCall::DidDismiss, [&] {
    cover->addDelegate(firstDelegate);
    cover->removeDelegate(make<CoverDelegate>("stranger", journal));
  });
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss", "second: did dismiss"}));
}

// Operations that a delegate does not implement

/// A delegate that implements no operation.
class SilentDelegate final
    : public Class<SilentDelegate, "SilentDelegate", NSObject, LaunchScreenViewControllerDelegate,
                   LaunchScreenContentDelegate> {};

TEST_F(ControllerDelegatesTest, AnOperationThatIsNotImplementedDoesNothingAndReturnsFalse) {
  const auto silentDelegate = make<SilentDelegate>();
  cover->addDelegate(silentDelegate);
  silentDelegate->launchScreenControllerWillPresent(cover);
  silentDelegate->launchScreenControllerDidDismiss(cover);
  silentDelegate->contentDataDidChangeState(nullptr);
  EXPECT_FALSE(silentDelegate->canLaunchScreenControllerDismiss(cover));
  EXPECT_EQ(cover->delegates()->count(), 1u);
  EXPECT_TRUE(takeEvents().empty());
}

}  // namespace
}  // namespace vel::test
